#pragma once

#include "tests/soak/DataServer.h"
#include "tests/soak/Figures.h"
#include "tests/soak/Season.h"
#include "tests/soak/Verdict.h"
#include "tests/soak/WholeProgram.h"
#include "tools/stage/LogScript.h"
#include "tools/stage/SessionFolder.h"

#include <QString>

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace pelloran::soak {

// What a run breaks on purpose, to show that it would be seen.
struct Spoils {
    int leakKilobytes = 0;    // are forgotten at every tick
    bool descriptors = false; // one is left open at every hundredth tick
    bool threads = false;     // one is left waiting at every hundredth tick
    bool slowsDown = false;   // every tick takes a bit longer than the one before
};

// Plays seasons, has the program tick, and measures.
class Player {
public:
    Player(const Season& season, Screen& screen, DataServer& server, WholeProgram& program, const QString& logsDir,
           const Spoils& spoils);

    // The given number of ticks. `goOn` is asked after every season.
    void play(qint64 ticks, const std::function<bool(int seasons)>& goOn);

    // Twenty in a season, always at the same ticks.
    const std::vector<Sample>& samples() const { return taken; }

    // What was read and shown of the picks, and what a tick costs by what it finds.
    std::vector<Judged> remarks() const;

    // The first picks that were not shown as in the first season: as they were then and are now.
    const QStringList& differences() const { return toldDifferences; }

private:
    void happen(const Event& event);
    void check(const Tick& tick, std::size_t number, qint64 season);
    void spoil(qint64 tick) const;
    void write(const std::vector<stage::LogLine>& lines);

    const Draft& draft() const { return season.drafts[draftNumber]; }

    // When the tick would be, were it not played faster.
    std::chrono::system_clock::time_point now() const;

    const Season& season;
    Screen& screen;
    DataServer& server;
    WholeProgram& program;
    const QString logsDir;
    const Spoils spoils;

    qint64 ticks = 0;
    std::size_t draftNumber = 0;
    std::size_t publication = 0;
    bool windowIsNew = false;
    std::optional<stage::LogScript> script;
    std::optional<stage::SessionFolder> session;
    QStringList sessions;                               // the folders that are there
    std::map<std::size_t, OverlaySnapshot> firstSeason; // by the tick
    std::vector<Sample> taken;

    std::map<Finds, std::vector<double>> costs; // in microseconds, in the order of the ticks
    int offers = 0;
    int unread = 0;
    int wrong = 0;
    int otherThanBefore = 0;
    QStringList toldDifferences;
    int publications = 1; // that the program was to take, with that of its start
    bool logsFailed = false;
};

} // namespace pelloran::soak
