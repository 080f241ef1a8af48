#include "sync/ConfigSyncResult.h"

#include "localisation/L10n.h"
#include "sync/ShortHash.h"

namespace pelloran {

namespace {

struct Message {
    QString operator()(const ConfigSyncResult::UpToDate& result) const {
        return L10n::tr(u"sync.msg.upToDate", {shortHash(result.hash)});
    }

    QString operator()(const ConfigSyncResult::Updated& result) const {
        return L10n::tr(u"sync.msg.updated", {shortHash(result.hash)});
    }

    QString operator()(const ConfigSyncResult::SkippedOffline& result) const {
        return L10n::tr(u"sync.msg.offline", {result.reason});
    }

    QString operator()(const ConfigSyncResult::Failed& result) const {
        return L10n::tr(u"sync.msg.failed", {result.message});
    }

    QString operator()(ConfigSyncResult::SkippedBusy) const { return L10n::tr(u"sync.msg.busy"); }
};

} // namespace

QString ConfigSyncResult::userMessage() const {
    return std::visit(Message{}, outcome);
}

} // namespace pelloran
