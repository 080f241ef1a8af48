#pragma once

#include "platform/ApplicationFiles.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace pelloran::macos {

// What the system says of the program's places, as it was found.
struct NativePlaces {
    std::optional<QString> applicationSupport; // absent: it names none
    std::optional<QString> bundleResources;    // absent: no bundle, or one without resources
    QString executableFolder;
    QString home;
};

// Files of a program that may be in a bundle, or beside its resources in a build tree.
class BundledFiles final : public ApplicationFiles {
public:
    explicit BundledFiles(const NativePlaces& places);

    QString applicationSupportFolder() const override { return supportFolder; }

    // In the bundle, else beside the program.
    std::optional<QString> resource(const QString& baseName, const QString& extension,
                                    const QString& subfolder) const override;

    QString executableFolder() const override { return programFolder; }

    QString homeFolder() const override { return home; }

private:
    QString supportFolder;
    QStringList resourceFolders; // the first that has a file gives it
    QString programFolder;
    QString home;
};

} // namespace pelloran::macos
