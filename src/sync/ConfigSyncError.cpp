#include "sync/ConfigSyncError.h"

#include "localisation/L10n.h"
#include "sync/ShortHash.h"

namespace pelloran {

namespace {

// Enough of a digest to compare by eye.
constexpr int digestCharacters = 12;

struct Description {
    QString operator()(const ConfigSyncError::HttpStatus& error) const {
        return L10n::tr(u"sync.err.http", {error.code});
    }

    QString operator()(const ConfigSyncError::HashMismatch& error) const {
        return L10n::tr(u"sync.err.hash",
                        {shortHash(error.expected, digestCharacters), shortHash(error.got, digestCharacters)});
    }

    QString operator()(const ConfigSyncError::ExtractFailed& error) const {
        return L10n::tr(u"sync.err.extract", {error.message});
    }

    QString operator()(ConfigSyncError::BadURL) const { return L10n::tr(u"sync.err.badURL"); }

    QString operator()(ConfigSyncError::InvalidManifest) const { return L10n::tr(u"sync.err.invalidManifest"); }

    QString operator()(const ConfigSyncError::Platform& error) const { return error.description; }
};

} // namespace

QString ConfigSyncError::localizedDescription() const {
    return std::visit(Description{}, reason);
}

} // namespace pelloran
