#pragma once

#include "model/OverlayModel.h"
#include "recognition/ScreenReader.h"

#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <expected>
#include <functional>

namespace pelloran {

class ApplicationFiles;

namespace recording {

struct ReplaySettings {
    QString folder;
    ScreenReader::MakeTextReader makeTextReader; // asked for one when the first line has to be read
    QJsonObject (*snapshotToJson)(const OverlaySnapshot&) = nullptr;
    const ApplicationFiles& files; // unused, but a store wants them
};

// Something that is not as it was.
struct Difference {
    enum class Kind {
        shown, // a difference in a snapshot
        read,  // other lines were read; where the same is shown in the end, nobody sees that
    };

    Kind kind = Kind::shown;
    int part = 0;
    qint64 line = 0; // in the part's events, from 1
    QString place;   // in the snapshot, such as "cards[1].name"; empty: all of it
    QJsonValue recorded;
    QJsonValue replayed; // null: nothing
};

struct Outcome {
    int parts = 0;
    qint64 ticks = 0;
    qint64 compared = 0; // ticks with a snapshot that follows from what is recorded
    qint64 different = 0;
    qint64 readOtherwise = 0;
    bool cutOff = false; // a part ends in the middle of a line

    bool isEqual() const { return different == 0; }
};

// Goes through a recording with the program's own logic: the logs' lines are followed in files, the lines on the kept
// pictures are read, the data files' rows looked up; only time does not matter, for every tick is taken when it comes.
// Two replays of a recording give the same. The error is a sentence: what the recording has that cannot be, or what is
// missing here.
//
// Sets the language, for the run.
std::expected<Outcome, QString> replay(const ReplaySettings& settings,
                                       const std::function<void(const Difference&)>& tell);

} // namespace recording
} // namespace pelloran
