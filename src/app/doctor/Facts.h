#pragma once

#include "draft/logs/LogConfigFile.h"
#include "draft/logs/LogFile.h"

#include <QSize>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>
#include <variant>
#include <vector>

// What is found on a machine, as plain values: gathered in one place, judged in another.
namespace pelloran::doctor {

struct LogFileFact {
    QString name;
    bool isThere = false;
    qint64 size = 0;
    std::chrono::seconds age{0};       // since it was last written
    std::optional<LogFileError> error; // of one that is there
    QString reason;                    // of an error, in the system's words; "" where it has none
};

struct SessionFact {
    QString name;
    std::optional<std::chrono::seconds> age; // since the game began it, where its name tells
    bool isFolder = true;
    LogFileFact arena;
    LogFileFact loadingScreen;
};

struct LogsFacts {
    std::optional<QString> asked;       // with --logs-dir
    std::optional<QString> folder;      // the one that is there
    QStringList others;                 // where the game is, too; unless asked
    QString obstacle;                   // why it cannot be listed; "" where it can
    std::optional<SessionFact> session; // the newest one in it
};

struct LogConfigFacts {
    std::optional<QString> path; // absent: nobody knows where it would be
    bool isThere = false;
    QStringList lacks;                   // what merging would change
    std::optional<LogConfigError> error; // why it cannot be used, or what it lacks not be added
    // Written after the session had begun that is there now: the game reads it when it starts.
    bool newerThanSession = false;
    // After --fix.
    bool fixed = false;
    QStringList changes;
    QString backup; // "" where there was nothing to keep
};

struct WindowFacts {
    struct Picture {
        QString owner;
        QString title;
        QSize size;
        std::chrono::milliseconds took{0}; // finding and capturing
        bool isPlain = false;              // one colour all over
    };

    struct None {
        QString explanation;      // as the log has it
        bool canSeeOthers = true; // windows can be listed at all, and their pictures may be taken
    };

    struct Failed {
        QString explanation;
    };

    std::variant<Picture, None, Failed> seen;
};

struct ReaderFacts {
    struct Test {
        QString expected; // what is on the test picture
        QString read;     // what was made of it
        std::chrono::milliseconds took{0};

        bool isPassed() const { return read == expected; }
    };

    QString error; // why nothing can be read; "" where it can
    Test latin;
    QString chineseError; // why no Chinese can be read
    Test chinese;         // where it can
};

struct DataFacts {
    QString error; // why there are no figures; with the file
    QString cardFile;
    bool isUsersOwn = false; // that file lies in the user's folder
    QString configurationFolder;
    std::size_t cards = 0;
    std::size_t classes = 0;
    bool isSample = false;
    QString classFile;
    bool areClassesSample = false;
    std::chrono::seconds age{0}; // of the figures
    bool isAgeOfFile = false;    // since when they were taken is not known, but since when the file is there
    QString remark;              // of a class file that was refused
};

struct NamesFacts {
    bool strictnessCosts = false; // more could be matched if long names counted, where they are read exactly
    std::size_t names = 0;        // all of them, of cards, classes and heroes
    QStringList unmatchable;      // which no reading, however good, is taken for
};

struct ServerFacts {
    enum class Kind { config, update };

    Kind kind = Kind::config;
    QString address; // "" where none is set
    bool offline = false;
    QString error;  // in its own words; "" where it answered
    QString answer; // a sentence
    bool hasNews = false;
    std::chrono::milliseconds took{0};
};

struct FolderFact {
    QString what; // what it is for
    QString path;
    QString obstacle; // why it cannot be written; "" where it can
};

struct FoldersFacts {
    std::vector<FolderFact> folders;
};

// What needs the desktop. `noDisplay` says why there is none, and then the rest is not known.
struct DesktopFacts {
    QString noDisplay;
    QString display;
    QString platform;    // Qt's plugin
    QStringList screens; // such as "1920x1080"
    bool hasChineseFont = false;
    bool composited = false;
    bool hasTray = false;
};

struct InstanceFacts {
    std::optional<qint64> process; // absent: none runs
    bool answers = false;
};

} // namespace pelloran::doctor
