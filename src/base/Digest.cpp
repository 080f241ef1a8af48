#include "base/Digest.h"

#include <QCryptographicHash>

namespace pelloran {

QString sha256Hex(const QByteArray& bytes) {
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

} // namespace pelloran
