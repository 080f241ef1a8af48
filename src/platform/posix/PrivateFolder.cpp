#include "platform/posix/PrivateFolder.h"

#include <QByteArray>
#include <QDir>
#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

namespace pelloran {

namespace {

bool isFolderOfOurOwn(const struct stat& found) {
    return S_ISDIR(found.st_mode) && found.st_uid == ::getuid() && (found.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

enum class Missing { make, leave };

QString folder(const QString& sessionFolder, const QString& temporary, Missing missing) {
    struct stat found{};
    // In a folder that users share, one user's program would keep the others' from starting.
    if (QDir::isAbsolutePath(sessionFolder) && ::stat(QFile::encodeName(sessionFolder).constData(), &found) == 0 &&
        isFolderOfOurOwn(found)) {
        return QDir::cleanPath(sessionFolder);
    }
    const QString own = QDir::cleanPath(temporary + QStringLiteral("/pelloran-%1").arg(::getuid()));
    const QByteArray path = QFile::encodeName(own);
    if (missing == Missing::make) {
        ::mkdir(path.constData(), S_IRWXU);
    }
    // It may have been there, laid by anybody.
    return ::lstat(path.constData(), &found) == 0 && isFolderOfOurOwn(found) ? own : QString();
}

} // namespace

QString privateRuntimeFolder(const QString& sessionFolder, const QString& temporary) {
    return folder(sessionFolder, temporary, Missing::make);
}

QString existingPrivateRuntimeFolder(const QString& sessionFolder, const QString& temporary) {
    return folder(sessionFolder, temporary, Missing::leave);
}

} // namespace pelloran
