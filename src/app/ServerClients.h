#pragma once

#include <QString>

#include <memory>
#include <optional>

namespace pelloran {

class ApplicationFiles;
class AppUpdateChecker;
class ConfigSync;
class HttpClient;
class SerialQueue;
class UserDefaults;

// The sync with the configuration server, the one asked for or the one of this build. Main thread.
std::unique_ptr<ConfigSync> makeConfigSync(const std::optional<QString>& asked, const ApplicationFiles& files);

// Asks the update server, the one asked for or the one of this build, with all that takes. Main thread.
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
