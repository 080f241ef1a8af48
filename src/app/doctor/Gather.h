#pragma once

#include "app/doctor/Facts.h"
#include "draft/logs/LogsDir.h"
#include "names/NameMatching.h"

#include <QDateTime>
#include <QString>

#include <memory>
#include <optional>

// Looks at the machine. With the parts of the program that do the same when it runs; nothing is changed, but by
// gatherLogConfig() when it is asked to. Each may wait as long as a disk or a server lets it: whoever asks sees to a
// limit.
namespace pelloran {

class ApplicationFiles;
class HttpClient;
class TextReader;
class UserDefaults;
class WindowServer;
class WinrateStore;

namespace doctor {

// Where the game's own things are looked for.
struct Places {
    std::optional<QString> askedLogsDir;
    QString standardLogsDir;
    QString home;
    EnvironmentLookup environment;

    // Of this machine and user.
    static Places ofThisMachine(const std::optional<QString>& askedLogsDir);
};

LogsFacts gatherLogs(const Places& places, const QDateTime& now);

enum class Fix { no, yes };

// With `yes` what can be put right is put right first.
LogConfigFacts gatherLogConfig(const Places& places, Fix fix);

WindowFacts gatherWindow(WindowServer& windows, const QString& ownerHint);

ReaderFacts gatherReader(const ApplicationFiles& files);

struct DataAndNames {
    DataFacts data;
    NamesFacts names;
};

DataAndNames gatherData(const ApplicationFiles& files, NameLengths lengths, const QDateTime& now);

// What cards, classes and heroes are called, and which of it names nothing when it is read exactly as it is.
NamesFacts gatherNames(const WinrateStore& store, NameLengths lengths);

// When figures were taken, of the free text that data files have for it; absent where it is no date.
std::optional<QDateTime> timeOfFetch(const QString& text);

// One request each, or none when `offline` or where there is no address.
ServerFacts gatherConfigServer(const QString& address, bool offline, HttpClient& http, const ApplicationFiles& files);
ServerFacts gatherUpdateServer(const std::optional<QString>& asked, bool offline, const UserDefaults& defaults);

FoldersFacts gatherFolders(const ApplicationFiles& files, const UserDefaults& defaults);

} // namespace doctor

} // namespace pelloran
