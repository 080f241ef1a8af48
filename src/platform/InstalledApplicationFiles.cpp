#include "platform/ApplicationFiles.h"
#include "platform/ResourceLookup.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

namespace pelloran {

namespace {

class InstalledApplicationFiles final : public ApplicationFiles {
public:
    QString applicationSupportFolder() const override {
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
        // Qt hands on a relative $XDG_DATA_HOME, which is to be ignored: it would mean another folder at each start.
        return QDir::isAbsolutePath(folder) ? QDir::cleanPath(folder) : homeFolder() + QStringLiteral("/.local/share");
    }

    // Beside the program in a build tree; once installed, where the system keeps resources (PELLORAN_RESOURCES,
    // relative to the program's folder).
    std::optional<QString> resource(const QString& baseName, const QString& extension,
                                    const QString& subfolder) const override {
        const QString here = executableFolder();
        return findResource({here + QStringLiteral("/resources"), here + QStringLiteral("/" PELLORAN_RESOURCES)},
                            baseName, extension, subfolder);
    }

    QString executableFolder() const override { return QCoreApplication::applicationDirPath(); }

    QString homeFolder() const override { return QDir::homePath(); }
};

} // namespace

std::unique_ptr<ApplicationFiles> ApplicationFiles::create() {
    return std::make_unique<InstalledApplicationFiles>();
}

} // namespace pelloran
