#include "platform/ResourceLookup.h"

#include <QDir>
#include <QFileInfo>

namespace pelloran {

std::optional<QString> findResource(const QStringList& folders, const QString& baseName, const QString& extension,
                                    const QString& subfolder) {
    const QString relative = subfolder + u'/' + baseName + u'.' + extension;
    for (const QString& folder : folders) {
        QString path = QDir::cleanPath(folder + u'/' + relative);
        if (QFileInfo(path).isFile()) {
            return path;
        }
    }
    return std::nullopt;
}

} // namespace pelloran
