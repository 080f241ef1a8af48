#pragma once

#include <QImage>
#include <QRect>
#include <QString>

namespace pelloran::testing {

enum class Letters { english, chinese };

// The words of one line of a menu or of a tool tip, without marks before and keys after them. Read by a network, so
// single letters may be wrong. `line` is a part of `picture`, as textLines tells it.
QString wordsIn(const QImage& picture, const QRect& line, Letters letters);

// All the letters in `area`, which is of one line and shows nothing else, on one background.
QString lettersIn(const QImage& picture, const QRect& area, Letters letters);

// How much of `expected` is in `read`, in its order: 1 when all of it.
double likeness(const QString& read, const QString& expected);

} // namespace pelloran::testing
