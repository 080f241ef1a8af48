#include "update/AppUpdateError.h"

#include "localisation/L10n.h"

namespace pelloran {

namespace {

QString describe(AppUpdateError::HttpStatus status) {
    return L10n::tr(u"update.err.http", {status.code});
}

QString describe(AppUpdateError::BadURL) {
    return L10n::tr(u"update.err.badURL");
}

QString describe(AppUpdateError::InvalidLatest) {
    return L10n::tr(u"update.err.invalidLatest");
}

} // namespace

QString AppUpdateError::localizedDescription() const {
    return std::visit([](auto what) { return describe(what); }, reason);
}

} // namespace pelloran
