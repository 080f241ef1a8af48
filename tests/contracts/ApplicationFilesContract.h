#pragma once

#include "platform/ApplicationFiles.h"
#include "tests/contracts/BackEnd.h"
#include "tests/support/Printing.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <memory>

namespace pelloran::testing {

// An installation, and a folder of its resources that the test may fill; `subfolder` is that folder's name in calls.
struct InstalledFiles {
    std::shared_ptr<void> owned; // what has to live as long
    std::unique_ptr<ApplicationFiles> files;
    QString folder;
    QString subfolder;
};

class ApplicationFilesContract : public ::testing::TestWithParam<BackEnd<InstalledFiles>> {
protected:
    void SetUp() override {
        ASSERT_TRUE(QDir().mkpath(installed.folder));
        for (const QString& name : {QStringLiteral("cards.v2.json"), QStringLiteral("炉石.json")}) {
            QFile file(installed.folder + u'/' + name);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        }
        ASSERT_TRUE(QDir(installed.folder).mkdir(QStringLiteral("folder.json")));
    }

    std::optional<QString> resource(const char* baseName, const char* extension, const QString& subfolder) const {
        return installed.files->resource(QString::fromUtf8(baseName), QString::fromUtf8(extension), subfolder);
    }

    const InstalledFiles installed = GetParam().make();
};

TEST_P(ApplicationFilesContract, FoldersAreAbsoluteAndCleanAndNotMade) {
    const ApplicationFiles& files = *installed.files;
    const bool supportIsThere = QFileInfo::exists(files.applicationSupportFolder());
    for (const QString& folder : {files.applicationSupportFolder(), files.executableFolder(), files.homeFolder()}) {
        SCOPED_TRACE(folder.toStdString());
        EXPECT_TRUE(QDir::isAbsolutePath(folder));
        EXPECT_EQ(QDir::cleanPath(folder), folder);
    }
    EXPECT_EQ(QFileInfo::exists(files.applicationSupportFolder()), supportIsThere) << "asking makes nothing";
    EXPECT_EQ(files.applicationSupportFolder(), files.applicationSupportFolder()) << "and says the same again";
}

TEST_P(ApplicationFilesContract, FindsResourcesByNameExtensionAndFolder) {
    struct Case {
        const char* why;
        const char* baseName;
        const char* extension;
        QString subfolder;
        const char* found; // a file's name; null: none
    };

    const QString& here = installed.subfolder;
    const Case cases[] = {
        {"with a point in its name", "cards.v2", "json", here, "cards.v2.json"},
        {"not in ASCII", "炉石", "json", here, "炉石.json"},
        {"a folder written otherwise", "cards.v2", "json", here + QStringLiteral("/."), "cards.v2.json"},
        {"a folder with a slash at its end", "cards.v2", "json", here + u'/', "cards.v2.json"},
        {"at the top level there is none", "cards.v2", "json", {}, nullptr},
        {"another folder", "cards.v2", "json", QStringLiteral("nowhere"), nullptr},
        {"another name", "cards", "json", here, nullptr},
        {"another extension", "cards.v2", "xml", here, nullptr},
        {"a folder is no file", "folder", "json", here, nullptr},
        {"no name", "", "", here, nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto path = resource(c.baseName, c.extension, c.subfolder);
        ASSERT_EQ(path.has_value(), c.found != nullptr) << path.value_or(QString()).toStdString();
        if (path) {
            EXPECT_TRUE(QDir::isAbsolutePath(*path));
            EXPECT_EQ(QDir::cleanPath(*path), *path);
            EXPECT_EQ(*path, QDir::cleanPath(installed.folder + u'/' + QString::fromUtf8(c.found)));
        }
    }
}

} // namespace pelloran::testing
