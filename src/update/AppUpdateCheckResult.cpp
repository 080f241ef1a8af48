#include "update/AppUpdateCheckResult.h"

#include "localisation/L10n.h"

namespace pelloran {

namespace {

struct Message {
    QString operator()(const AppUpdateCheckResult::UpToDate& result) const {
        return L10n::tr(u"update.body.upToDate", {result.local, result.remote});
    }

    QString operator()(const AppUpdateCheckResult::Available& result) const {
        return L10n::tr(u"update.body.available", {result.local, result.release.version});
    }

    QString operator()(const AppUpdateCheckResult::SkippedVersion& result) const {
        return L10n::tr(u"update.body.skipped", {result.release.version, result.local});
    }

    QString operator()(const AppUpdateCheckResult::Offline& result) const {
        return L10n::tr(u"update.body.offline", {result.reason});
    }

    QString operator()(const AppUpdateCheckResult::Failed& result) const { return result.message; }
};

} // namespace

bool AppUpdateCheckResult::hasUpdate() const {
    return std::holds_alternative<Available>(outcome) || std::holds_alternative<SkippedVersion>(outcome);
}

QString AppUpdateCheckResult::userMessage() const {
    return std::visit(Message{}, outcome);
}

} // namespace pelloran
