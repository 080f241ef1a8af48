#pragma once

#include <QString>
#include <QStringList>

#include <expected>

namespace pelloran {

// The one thing that is wrong, where there could be several.
inline std::unexpected<QStringList> problem(const QString& what) {
    return std::unexpected(QStringList{what});
}

} // namespace pelloran
