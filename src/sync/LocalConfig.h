#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace pelloran {

class ApplicationFiles;

// The data files that a sync leaves on disk, as they lie there now. From any thread.
class LocalConfig {
public:
    explicit LocalConfig(const ApplicationFiles& files);

    QString configDirectory() const { return directory; }

    // Path of the file that holds the installed content's hash.
    QString localHashURL() const;

    // Without white space around it; absent when there is no such file, or nothing readable in it.
    std::optional<QString> localHash() const;

    // Whether any of the required files is there.
    bool hasUsableLocalConfig() const;

    // Paths below the folder of data files. One of them is enough to go on with.
    static QStringList requiredFiles();

private:
    QString directory;
};

} // namespace pelloran
