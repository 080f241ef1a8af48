#include "base/StrictURL.h"

namespace pelloran {

std::optional<QUrl> strictURL(const QString& text) {
    QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.isEmpty()) {
        return std::nullopt;
    }
    return url;
}

} // namespace pelloran
