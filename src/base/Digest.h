#pragma once

#include <QByteArray>
#include <QString>

namespace pelloran {

// SHA-256 in lower-case hex. From any thread.
QString sha256Hex(const QByteArray& bytes);

} // namespace pelloran
