#include "platform/ApplicationFiles.h"
#include "tests/support/Printing.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelloran {

namespace {

class InstalledApplicationFilesTest : public ::testing::Test {
protected:
    // The tests' main() keeps Qt away from the user's folders; here they are the subject.
    void SetUp() override { QStandardPaths::setTestModeEnabled(false); }

    void TearDown() override { QStandardPaths::setTestModeEnabled(true); }

    std::unique_ptr<ApplicationFiles> files = ApplicationFiles::create();
};

#ifdef Q_OS_LINUX
TEST_F(InstalledApplicationFilesTest, SupportFolderFollowsTheEnvironment) {
    const QByteArray before = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", "/somewhere/data");
    EXPECT_EQ(files->applicationSupportFolder(), QStringLiteral("/somewhere/data"));
    EXPECT_FALSE(QFileInfo::exists(QStringLiteral("/somewhere"))) << "nothing is created";
    for (const char* unusable : {"", "relative/data"}) {
        qputenv("XDG_DATA_HOME", unusable);
        EXPECT_EQ(files->applicationSupportFolder(), files->homeFolder() + QStringLiteral("/.local/share")) << unusable;
    }
    qputenv("XDG_DATA_HOME", before);
}
#endif

TEST_F(InstalledApplicationFilesTest, FoldersAreAbsoluteAndThere) {
    EXPECT_EQ(files->executableFolder(), QFileInfo(QCoreApplication::applicationFilePath()).absolutePath());
    EXPECT_TRUE(QFileInfo(files->homeFolder()).isDir());
    EXPECT_TRUE(QDir::isAbsolutePath(files->homeFolder()));
}

TEST_F(InstalledApplicationFilesTest, FindsRegularFilesBesideTheProgram) {
    const QString resources = files->executableFolder() + QStringLiteral("/resources");
    ASSERT_TRUE(QDir().mkpath(resources));
    const QTemporaryDir folder(resources + QStringLiteral("/test-XXXXXX"));
    ASSERT_TRUE(folder.isValid());
    const QString name = QFileInfo(folder.path()).fileName();
    QFile file(folder.filePath(QStringLiteral("cards.v2.json")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("folder.json")));

    const auto resource = [&](const char* baseName, const char* extension, const QString& subfolder) {
        return files->resource(QString::fromUtf8(baseName), QString::fromUtf8(extension), subfolder);
    };
    EXPECT_EQ(resource("cards.v2", "json", name), file.fileName());
    EXPECT_EQ(resource("cards.v2", "json", QString()), std::nullopt) << "another folder";
    EXPECT_EQ(resource("cards", "json", name), std::nullopt) << "another name";
    EXPECT_EQ(resource("cards.v2", "xml", name), std::nullopt) << "another extension";
    EXPECT_EQ(resource("folder", "json", name), std::nullopt) << "a folder is no file";

    QFile atTop(resources + u'/' + name + QStringLiteral(".json"));
    ASSERT_TRUE(atTop.open(QIODevice::WriteOnly));
    EXPECT_EQ(resource(name.toUtf8().constData(), "json", QString()), atTop.fileName());
    EXPECT_TRUE(atTop.remove());
}

} // namespace

} // namespace pelloran
