#pragma once

#include "update/AppUpdateChecker.h"

#include <QString>

#include <memory>
#include <optional>

namespace pelloran {

class ApplicationFiles;
class ConfigSync;
class HttpClient;
class SerialQueue;
class UserDefaults;
struct BundleVersion;

// Base URLs of the servers, the ones asked for or those of this build; empty where there is none.
QString configServer(const std::optional<QString>& asked);
QString updateServer(const std::optional<QString>& asked);

// The sync with the configuration server, the one asked for or the one of this build. Main thread.
std::unique_ptr<ConfigSync> makeConfigSync(const std::optional<QString>& asked, const ApplicationFiles& files);

// What the running program says of itself: what its bundle says, else the version that it was built as.
AppUpdateChecker::LocalApplication localApplication(const BundleVersion& bundle, const QString& builtVersion);

// The folder of releases on the update server, the one asked for or the one of this build.
QString downloadBase(const std::optional<QString>& asked);

// Asks the update server, the one asked for or the one of this build, with all that takes. From one thread, which need
// not be the main one.
class UpdateClient {
public:
    UpdateClient(const std::optional<QString>& asked, UserDefaults& defaults);
    ~UpdateClient();

    const AppUpdateChecker& checker() const { return *updates; }

private:
    std::unique_ptr<HttpClient> http;
    std::unique_ptr<SerialQueue> queue; // waits for the check under way before what that uses goes
    std::unique_ptr<AppUpdateChecker> updates;
};

} // namespace pelloran
