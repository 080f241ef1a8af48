#include "draft/logs/LogsDir.h"

#include "tests/support/Printing.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

using Text = std::optional<QString>;

class LogsDir : public ::testing::Test {
protected:
    // Installs the game in a Wine prefix below the home folder and gives its log folder.
    QString install(const QString& prefix, int secondsAgo = 0) const {
        const QString path = folder.filePath(prefix) + u"/drive_c/Program Files (x86)/Hearthstone/Logs"_s;
        EXPECT_TRUE(QDir().mkpath(path));
        const auto date = std::filesystem::file_time_type::clock::from_sys(
            std::chrono::sys_days{std::chrono::year{2026} / 4 / 12} - std::chrono::seconds(secondsAgo));
        std::filesystem::last_write_time(path.toStdString(), date);
        return path;
    }

    Text find(const Text& winePrefix = {}) const {
        return gameLogsDir(folder.filePath(u"standard"_s), folder.path(),
                           [&](const QString& name) { return name == u"WINEPREFIX" ? winePrefix : Text(); });
    }

    QTemporaryDir folder;
};

} // namespace

TEST_F(LogsDir, IsAbsentWithoutTheGame) {
    EXPECT_EQ(find(), Text());
    QDir(folder.path()).mkpath(u".wine/drive_c/Program Files (x86)"_s);
    EXPECT_EQ(find(), Text()) << "a prefix without the game";
    EXPECT_EQ(find(u""_s), Text());
    EXPECT_EQ(find(folder.filePath(u"missing"_s)), Text());
}

TEST_F(LogsDir, IsTheStandardOneWhereItExists) {
    const QString wine = install(u".wine"_s);
    const QString standard = folder.filePath(u"standard"_s);
    QFile file(standard);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    EXPECT_EQ(find(), wine) << "a file is no log folder";
    QFile::remove(standard);
    QDir().mkpath(standard);
    EXPECT_EQ(find(), standard) << "however old, however many others there are";
}

TEST_F(LogsDir, IsFoundInEveryUsualPrefix) {
    for (const QString& prefix : {
             u".wine"_s,
             u"Games/hearthstone"_s,
             u"Games/游戏 2"_s,
             u".var/app/com.usebottles.bottles/data/bottles/bottles/Game"_s,
             u".local/share/bottles/bottles/Game"_s,
             u".PlayOnLinux/wineprefix/Game"_s,
             u".steam/steam/steamapps/compatdata/4711/pfx"_s,
             u".local/share/Steam/steamapps/compatdata/4711/pfx"_s,
             u".var/app/com.valvesoftware.Steam/.local/share/Steam/steamapps/compatdata/4711/pfx"_s,
         }) {
        SCOPED_TRACE(prefix.toStdString());
        const QString path = install(prefix);
        EXPECT_EQ(find(), path);
        QDir(folder.filePath(prefix)).removeRecursively();
    }
}

TEST_F(LogsDir, IsFoundInTheChosenPrefix) {
    const QString path = install(u"elsewhere"_s);
    EXPECT_EQ(find(), Text());
    EXPECT_EQ(find(folder.filePath(u"elsewhere"_s)), path);
}

TEST_F(LogsDir, IsTheMostRecentlyChangedOfSeveral) {
    install(u"chosen"_s, 5);
    install(u".wine"_s, 4);
    install(u"Games/a"_s, 3);
    const QString recent = install(u"Games/b"_s, 1);
    install(u".PlayOnLinux/wineprefix/c"_s, 2);
    EXPECT_EQ(find(folder.filePath(u"chosen"_s)), recent);
}

TEST_F(LogsDir, IsTheFirstInOrderOfEquallyRecentOnes) {
    install(u".PlayOnLinux/wineprefix/a"_s);
    install(u"Games/b"_s);
    const QString first = install(u"Games/a"_s);
    EXPECT_EQ(find(), first);
    const QString wine = install(u".wine"_s);
    EXPECT_EQ(find(), wine);
    const QString chosen = install(u"z"_s);
    EXPECT_EQ(find(folder.filePath(u"z"_s)), chosen);
}

TEST_F(LogsDir, HasTheOthersBehindIt) {
    const auto all = [&] {
        return gameLogsDirs(folder.filePath(u"standard"_s), folder.path(), [](const QString&) { return Text(); });
    };
    EXPECT_EQ(all(), QStringList());
    const QString last = install(u".wine"_s, 3);
    const QString first = install(u"Games/a"_s, 1);
    const QString second = install(u".local/share/Steam/steamapps/compatdata/4711/pfx"_s, 2);
    QDir(folder.path()).mkpath(u".steam"_s);
    ASSERT_TRUE(QFile::link(folder.filePath(u".local/share/Steam"_s), folder.filePath(u".steam/steam"_s)));
    const QStringList found = all();
    ASSERT_EQ(found.size(), 3) << "what Steam has under two names is there once";
    EXPECT_EQ(found[0], first);
    EXPECT_EQ(QFileInfo(found[1]).canonicalFilePath(), QFileInfo(second).canonicalFilePath());
    EXPECT_EQ(found[2], last);
    const QString standard = folder.filePath(u"standard"_s);
    QDir().mkpath(standard);
    EXPECT_EQ(all().first(), standard);
    EXPECT_EQ(all().size(), 4);
    ASSERT_TRUE(QDir().rmdir(standard));
    ASSERT_TRUE(QFile::link(last, standard));
    EXPECT_EQ(all(), (QStringList{standard, found[0], found[1]})) << "nor what the first one leads to";
}

TEST_F(LogsDir, IsNotWhereAFileStandsInItsWay) {
    QDir(folder.path()).mkpath(u"Games"_s);
    QFile file(folder.filePath(u"Games/notes.txt"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    EXPECT_EQ(find(), Text());
}

} // namespace pelloran
