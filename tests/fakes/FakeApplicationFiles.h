#pragma once

#include "platform/ApplicationFiles.h"

#include <QDir>
#include <QFileInfo>

namespace pelloran::testing {

// All folders lie below one that the test owns.
class FakeApplicationFiles final : public ApplicationFiles {
public:
    explicit FakeApplicationFiles(const QString& folder)
        : root(folder) {}

    QString applicationSupportFolder() const override { return root + QStringLiteral("/support"); }

    QString resourceFolder() const { return root + QStringLiteral("/resources"); }

    std::optional<QString> resource(const QString& baseName, const QString& extension,
                                    const QString& subfolder) const override {
        const QString path = QDir::cleanPath(resourceFolder() + u'/' + subfolder + u'/' + baseName + u'.' + extension);
        return QFileInfo(path).isFile() ? std::optional(path) : std::nullopt;
    }

    QString executableFolder() const override { return root + QStringLiteral("/program/bin"); }

    QString homeFolder() const override { return root + QStringLiteral("/home"); }

private:
    QString root;
};

} // namespace pelloran::testing
