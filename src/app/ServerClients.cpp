#include "app/ServerClients.h"

#include "base/SerialQueue.h"
#include "platform/BundleVersion.h"
#include "platform/HttpClient.h"
#include "platform/UserDefaults.h"
#include "sync/ConfigSync.h"

#include <QCoreApplication>

namespace pelloran {

QString configServer(const std::optional<QString>& asked) {
    return asked.value_or(QStringLiteral(PELLORAN_CONFIG_SERVER));
}

QString updateServer(const std::optional<QString>& asked) {
    return asked.value_or(QStringLiteral(PELLORAN_UPDATE_SERVER));
}

std::unique_ptr<ConfigSync> makeConfigSync(const std::optional<QString>& asked, const ApplicationFiles& files) {
    return std::make_unique<ConfigSync>(configServer(asked), LocalConfig(files), HttpClient::create(),
                                        SerialQueue::create(ConfigSync::queueName()));
}

AppUpdateChecker::LocalApplication localApplication(const BundleVersion& bundle, const QString& builtVersion) {
    const auto says = [](const std::optional<QString>& entry) { return entry && !entry->isEmpty(); };
    if (says(bundle.version) || says(bundle.build)) {
        return {bundle.version, bundle.build};
    }
    return {builtVersion, std::nullopt};
}

QString downloadBase(const std::optional<QString>& asked) {
    return updateServer(asked) + QStringLiteral("/download");
}

UpdateClient::UpdateClient(const std::optional<QString>& asked, UserDefaults& defaults)
    : http(HttpClient::create())
    , queue(SerialQueue::create(AppUpdateChecker::workQueueLabel.toString()))
    , updates(std::make_unique<AppUpdateChecker>(
          AppUpdateChecker::Means{*http, defaults, *queue},
          localApplication(BundleVersion::ofProgram(), QCoreApplication::applicationVersion()), downloadBase(asked))) {}

UpdateClient::~UpdateClient() = default;

} // namespace pelloran
