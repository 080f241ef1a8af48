#include "app/commands/Commands.h"
#include "app/commands/Output.h"
#include "app/Json.h"
#include "app/ServerClients.h"
#include "platform/UserDefaults.h"
#include "update/AppReleaseFields.h"
#include "update/AppUpdateChecker.h"

#include <QStringList>
#include <QUrl>

#include <cstdlib>
#include <tuple>
#include <variant>

namespace pelloran {

namespace {

// What our lines call a field of a file: "minMacos" for "min_macos", and "baseURL" for "base_url".
QString camelCase(QLatin1StringView key) {
    const QStringList words = QString(key).split(u'_');
    QString name = words.first();
    for (const QString& word : words.sliced(1)) {
        name += word == QStringLiteral("url") ? word.toUpper() : word.first(1).toUpper() + word.sliced(1);
    }
    return name;
}

struct UpdateAnswer {
    const QString& downloadBase;

    QJsonObject operator()(const AppUpdateCheckResult::UpToDate& result) const {
        return {{QStringLiteral("result"), QStringLiteral("upToDate")},
                {QStringLiteral("local"), result.local},
                {QStringLiteral("remote"), result.remote}};
    }

    QJsonObject operator()(const AppUpdateCheckResult::Available& result) const {
        return offer(QStringLiteral("available"), result.local, result.release);
    }

    QJsonObject operator()(const AppUpdateCheckResult::SkippedVersion& result) const {
        return offer(QStringLiteral("skippedVersion"), result.local, result.release);
    }

    QJsonObject operator()(const AppUpdateCheckResult::Offline& result) const {
        return {{QStringLiteral("result"), QStringLiteral("offline")}, {QStringLiteral("reason"), result.reason}};
    }

    QJsonObject operator()(const AppUpdateCheckResult::Failed& result) const {
        return {{QStringLiteral("result"), QStringLiteral("failed")}, {QStringLiteral("message"), result.message}};
    }

private:
    QJsonObject offer(const QString& name, const QString& local, const AppReleaseInfo& release) const {
        const auto download = release.preferredDownloadURL(downloadBase);
        QJsonObject all{{QStringLiteral("download"),
                         download ? QJsonValue(download->toString(QUrl::FullyEncoded)) : QJsonValue(QJsonValue::Null)}};
        const auto insert = [&](const auto& field) {
            all.insert(camelCase(field.key), strict_json::encode(release.*field.member));
        };
        std::apply([&](const auto&... field) { (insert(field), ...); }, strict_json::fields<AppReleaseInfo>);
        return {{QStringLiteral("result"), name}, {QStringLiteral("local"), local}, {QStringLiteral("release"), all}};
    }
};

} // namespace

int run(const CheckUpdateOnce& command) {
    const auto defaults = UserDefaults::create();
    const UpdateClient client(command.updateServer, *defaults);
    const AppUpdateCheckResult result = client.checker().checkNow();
    QJsonObject answer = std::visit(UpdateAnswer{client.checker().downloadBaseURLString()}, result.outcome);
    answer.insert(QStringLiteral("hasUpdate"), result.hasUpdate());
    answer.insert(QStringLiteral("userMessage"), result.userMessage());
    print(json::line(answer));
    const bool current = std::holds_alternative<AppUpdateCheckResult::UpToDate>(result.outcome);
    return current || result.hasUpdate() ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace pelloran
