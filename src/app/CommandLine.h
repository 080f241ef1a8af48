#pragma once

#include "localisation/AppLanguage.h"
#include "model/DraftModel.h"
#include "names/NameMatching.h"
#include "publish/ReleaseDescription.h"

#include <QString>
#include <QStringList>

#include <expected>
#include <optional>
#include <variant>
#include <vector>

// What the user asked for on the command line, as plain values: nothing here runs anything.
namespace pelloran {

// Which names can be recognised. The rules leave out what is longer than they allow; a line that is the whole of a
// known name is nothing else, so that the program goes beyond them unless asked not to.
constexpr NameLengths nameLengths(bool strict) {
    return strict ? NameLengths::limited : NameLengths::limitedUnlessExact;
}

struct RunLoop {
    std::optional<QString> logsDir; // absent: where the game usually writes
    std::optional<QString> windowOwner;
    std::optional<AppLanguage> language; // for this run only
    bool panel = true;                   // false: no display is needed and nothing is shown
    bool snapshots = false;              // every published snapshot as a JSON line on standard output
    bool reduceMotion = false;           // whatever the desktop says
    bool resetPanel = false;             // as if the panel had never been put anywhere
    bool strictLengths = false;          // lines longer than the rules allow name nothing, also when read exactly
    std::optional<QString> configServer; // absent: as built
    std::optional<QString> updateServer; // absent: as built
    std::optional<QString> record;       // folder of a recording; absent: none is made
    qint64 recordMegabytes = 50;         // at most, of all that is there
};

// Goes through a recording again.
struct ReplayRecording {
    QString folder;
};

struct PrintDraftState {
    std::optional<QString> logsDir;
};

struct PrintLogsDir {};

struct RecognizeImages {
    DraftPhase phase = DraftPhase::cardPick; // never idle
    bool ticks = false;         // images are successive ticks of one draft rather than independent of each other
    bool strictLengths = false; // as for RunLoop
    QStringList images;
};

// Recognition held against pictures whose truth is known.
struct EvaluateFolders {
    bool ticks = false;         // as for RecognizeImages; and every picture is looked at more than once
    bool json = false;          // lines for programs in place of a table for people
    bool texts = false;         // boxed texts are read as well
    bool strictLengths = false; // as for RunLoop
    QStringList folders;
};

// Always by strict lengths: it shows the rules themselves.
struct MatchTexts {
    bool classes = false;
    QStringList texts;
};

struct SyncOnce {
    std::optional<QString> configServer;
};

struct CheckUpdateOnce {
    std::optional<QString> updateServer;
};

struct PublishData {
    QString source;                   // folder of data files
    QString target;                   // root folder of a web server
    std::optional<QString> cardTable; // made into the card file first
    QStringList cardLists;            // that names and more are filled in from; see CardLists
};

// What the update server is to say of a release.
struct DescribeRelease {
    ReleaseParts parts;
    std::optional<QString> updateServer; // absent: as built
};

// Whether everything is as Pelloran needs it.
struct ExamineMachine {
    std::optional<QString> logsDir; // this and the following: as for RunLoop
    std::optional<QString> windowOwner;
    bool strictLengths = false;
    std::optional<QString> configServer;
    std::optional<QString> updateServer;
    bool offline = false; // no server is asked
    bool fix = false;     // puts the game's log.config right
    bool json = false;    // lines for programs in place of lines for people
};

// The part of it that needs a desktop.
struct ExamineDesktop {
    bool json = false;
};

// --help and --version: text for standard output.
struct PrintText {
    QString text;
};

using Command = std::variant<RunLoop, PrintDraftState, PrintLogsDir, RecognizeImages, EvaluateFolders, MatchTexts,
                             SyncOnce, CheckUpdateOnce, PublishData, DescribeRelease, ExamineMachine, ExamineDesktop,
                             ReplayRecording, PrintText>;

// What is wrong, and how the command is used; for standard error.
struct UsageError {
    QString message;
};

// What --help tells of an option, and of a command.
struct OptionHelp {
    QString name; // as it is written: "--phase PHASE", "-h, --help"
    QString description;
};

struct CommandHelp {
    QString name; // "" for the program itself
    QString usage;
    QString description;
    std::vector<OptionHelp> options;
};

// The program itself first. What --help prints and the manual page are both made of it.
std::vector<CommandHelp> commandHelp();

// `arguments` without the program's name. Needs no QCoreApplication.
std::expected<Command, UsageError> parseCommandLine(const QStringList& arguments);

} // namespace pelloran
