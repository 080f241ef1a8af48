#pragma once

#include "tools/stage/Catalogue.h"
#include "tools/stage/Look.h"

#include <QSize>
#include <QString>
#include <QStringList>

#include <expected>
#include <optional>

namespace pelloran::stage {

struct StageOptions {
    bool help = false;
    bool listScenarios = false;
    QString scenario = QStringLiteral("demo");
    QString logsDir; // "": no logs are written
    QSize size{1920, 1080};
    std::optional<Language> language;          // absent: the scenario's own
    std::optional<Look> look;                  // absent: the scenario's own
    std::optional<ChineseLettering> lettering; // absent: printed
    double speed = 1;
    bool loop = false;
    quint32 seed = 1;
    bool fullScreen = false;
    bool heroesByName = false; // see Production
    QString picture;           // "": a window
    int step = 0;              // of the picture
    QString paintScreens;      // folder for a series of screens; "": none
    int count = 24;            // of that series
    QString cards;             // file of cards for it; "": the sample data
    bool stepsOnStdin = false;
    bool exitAtEnd = false;

    // From the arguments after the program's name. The error is one line for people.
    static std::expected<StageOptions, QString> parse(const QStringList& arguments);

    static QString usage();
};

} // namespace pelloran::stage
