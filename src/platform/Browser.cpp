#include "platform/Browser.h"

#include <QString>

namespace pelloran {

bool Browser::open(const QUrl& link) {
    return isWebLink(link) && openWebLink(link);
}

bool Browser::isWebLink(const QUrl& link) {
    // Qt keeps schemes in lower case, whatever the text.
    const QString scheme = link.scheme();
    const bool web = scheme == QStringLiteral("http") || scheme == QStringLiteral("https");
    return link.isValid() && web && !link.host().isEmpty();
}

} // namespace pelloran
