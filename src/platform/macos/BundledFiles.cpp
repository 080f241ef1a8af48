#include "platform/macos/BundledFiles.h"

#include "platform/ResourceLookup.h"

#include <QDir>

namespace pelloran::macos {

BundledFiles::BundledFiles(const NativePlaces& places)
    : programFolder(QDir::cleanPath(places.executableFolder))
    , home(QDir::cleanPath(places.home)) {
    const QString support = places.applicationSupport.value_or(QString());
    supportFolder = QDir::isAbsolutePath(support) ? QDir::cleanPath(support)
                                                  : home + QStringLiteral("/Library/Application Support");
    if (places.bundleResources && QDir::isAbsolutePath(*places.bundleResources)) {
        resourceFolders << *places.bundleResources;
    }
    resourceFolders << programFolder + QStringLiteral("/resources");
}

std::optional<QString> BundledFiles::resource(const QString& baseName, const QString& extension,
                                              const QString& subfolder) const {
    return findResource(resourceFolders, baseName, extension, subfolder);
}

} // namespace pelloran::macos
