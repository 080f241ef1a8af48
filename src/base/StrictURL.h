#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace pelloran {

// The URL that `text` is, relative ones included; absent for the empty text and for one with anything in it that a URL
// may not hold. Nothing is mended: a link that had to be guessed at is not one to follow.
std::optional<QUrl> strictURL(const QString& text);

} // namespace pelloran
