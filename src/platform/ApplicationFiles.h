#pragma once

#include <QString>

#include <memory>
#include <optional>

namespace pelloran {

// Where this program's files lie. Paths are absolute and clean; nothing is created. Safe from any thread.
class ApplicationFiles {
public:
    static std::unique_ptr<ApplicationFiles> create();

    virtual ~ApplicationFiles() = default;

    // Folder for the user's data of all applications: $XDG_DATA_HOME on Linux, ~/Library/Application Support on macOS.
    virtual QString applicationSupportFolder() const = 0;

    // Folder of this program's data files that are the user's: their own, or the ones that a sync brought.
    QString configurationFolder() const { return applicationSupportFolder() + QStringLiteral("/Pelloran/config"); }

    // Path of `baseName`.`extension` in `subfolder` of the resources that came with the program ("" is their top
    // level); absent when there is no such regular file.
    virtual std::optional<QString> resource(const QString& baseName, const QString& extension,
                                            const QString& subfolder) const = 0;

    // Folder that holds the running program.
    virtual QString executableFolder() const = 0;

    // The user's home folder.
    virtual QString homeFolder() const = 0;
};

} // namespace pelloran
