#include "draft/logs/LogConfigFile.h"

#include "tests/support/Printing.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace pelloran {
namespace {

class LogConfigFileTest : public ::testing::Test {
protected:
    QString path(const QString& name) const { return home.filePath(name); }

    void makeFolder(const QString& name) const { ASSERT_TRUE(QDir().mkpath(path(name))); }

    QString write(const QString& name, const QByteArray& bytes) const {
        QDir().mkpath(QFileInfo(path(name)).path());
        QFile file(path(name));
        EXPECT_TRUE(file.open(QFile::WriteOnly));
        file.write(bytes);
        return path(name);
    }

    static QByteArray read(const QString& file) {
        QFile opened(file);
        return opened.open(QFile::ReadOnly) ? opened.readAll() : QByteArray("none");
    }

    // Of the usual user on a machine whose only variable is $USER.
    std::optional<QString> find(const std::optional<QString>& logsDir) const {
        return logConfigPath(logsDir, home.path(), [](const QString& name) {
            return name == u"USER" ? std::optional(u"ann"_s) : std::nullopt;
        });
    }

    const QTemporaryDir home;
    const QString logs = u".wine/drive_c/Program Files (x86)/Hearthstone/Logs"_s;
    const QString settings = u"/AppData/Local/Blizzard/Hearthstone"_s;
};

TEST_F(LogConfigFileTest, LiesInThePrefixWhoseLogsAreRead) {
    makeFolder(u".wine/drive_c/users/Public"_s);
    EXPECT_EQ(find(path(logs)), path(u".wine/drive_c/users/ann"_s + settings + u"/log.config"_s))
        << "a prefix that nobody has used yet";
    makeFolder(u".wine/drive_c/users/bob"_s);
    EXPECT_EQ(find(path(logs)), path(u".wine/drive_c/users/bob"_s + settings + u"/log.config"_s))
        << "made by somebody else";
    makeFolder(u".wine/drive_c/users/steamuser"_s);
    EXPECT_EQ(find(path(logs)), path(u".wine/drive_c/users/steamuser"_s + settings + u"/log.config"_s));
    makeFolder(u".wine/drive_c/users/ann"_s);
    EXPECT_EQ(find(path(logs)), path(u".wine/drive_c/users/ann"_s + settings + u"/log.config"_s));
    makeFolder(u".wine/drive_c/users/bob"_s + settings);
    EXPECT_EQ(find(path(logs)), path(u".wine/drive_c/users/bob"_s + settings + u"/log.config"_s))
        << "who has played before anybody who has not";
    EXPECT_EQ(find(path(u"Games/x/drive_c/Program Files (x86)/Hearthstone/Logs"_s)),
              path(u"Games/x/drive_c/users/ann"_s + settings + u"/log.config"_s))
        << "each prefix has its own";
}

TEST_F(LogConfigFileTest, LiesWhereTheGameIsThatHasNeverLogged) {
    EXPECT_EQ(find(std::nullopt), std::nullopt) << "no game";
    makeFolder(u".wine/drive_c"_s);
    EXPECT_EQ(find(std::nullopt), std::nullopt) << "a prefix without the game";
    makeFolder(u"Games/hearthstone/drive_c/Program Files (x86)/Hearthstone"_s);
    EXPECT_EQ(find(std::nullopt), path(u"Games/hearthstone/drive_c/users/ann"_s + settings + u"/log.config"_s));
}

TEST_F(LogConfigFileTest, LiesAmongThePreferencesOnTheMac) {
    EXPECT_EQ(find(u"/Applications/Hearthstone/Logs"_s), std::nullopt) << "logs that are no Wine's, and no Mac";
    makeFolder(u"Library/Preferences"_s);
    const QString mac = path(u"Library/Preferences/Blizzard/Hearthstone/log.config"_s);
    EXPECT_EQ(find(u"/Applications/Hearthstone/Logs"_s), mac);
    EXPECT_EQ(find(std::nullopt), mac);
    EXPECT_NE(find(path(logs)), mac) << "the game under Wine has its own there too";
}

TEST_F(LogConfigFileTest, IsMadeWhereThereIsNone) {
    const QString file = path(u"a/b/log.config"_s);
    const auto before = readLogConfig(file);
    ASSERT_TRUE(before);
    EXPECT_EQ(before->text, std::nullopt);
    EXPECT_TRUE(before->isWritable);
    EXPECT_FALSE(QFileInfo::exists(path(u"a"_s))) << "reading makes nothing";

    const auto written = fixLogConfig(file);
    ASSERT_TRUE(written) << written.error().toStdString();
    EXPECT_EQ(written->changes.size(), 2);
    EXPECT_EQ(written->backup, QString());
    EXPECT_EQ(read(file), mergeLogConfig({})->text);
}

TEST_F(LogConfigFileTest, IsMergedWithACopyOfWhatWasThere) {
    const QByteArray first = "[Power]\r\nLogLevel=1\r\n";
    const QString file = write(u"log.config"_s, first);
    const auto written = fixLogConfig(file);
    ASSERT_TRUE(written) << written.error().toStdString();
    EXPECT_EQ(written->backup, QFileInfo(file).canonicalFilePath() + u".bak"_s);
    EXPECT_EQ(read(written->backup), first);
    EXPECT_EQ(read(file), mergeLogConfig(first)->text);

    const auto again = fixLogConfig(file);
    ASSERT_TRUE(again);
    EXPECT_TRUE(again->changes.isEmpty());
    EXPECT_EQ(again->backup, QString());

    write(u"log.config"_s, "[Arena]\n");
    const auto later = fixLogConfig(file);
    ASSERT_TRUE(later);
    EXPECT_EQ(later->backup, QFileInfo(file).canonicalFilePath() + u".bak2"_s);
    EXPECT_EQ(read(written->backup), first) << "the first copy is the most precious one";
    EXPECT_EQ(QDir(home.path()).entryList(QDir::Files).size(), 3) << "and nothing else is left";
}

TEST_F(LogConfigFileTest, IsWrittenWhereALinkLeads) {
    const QString real = write(u"dotfiles/hs.config"_s, "[Arena]\n");
    ASSERT_TRUE(QFile::link(real, path(u"log.config"_s)));
    ASSERT_TRUE(fixLogConfig(path(u"log.config"_s)));
    EXPECT_TRUE(QFileInfo(path(u"log.config"_s)).isSymLink());
    EXPECT_EQ(read(real), mergeLogConfig("[Arena]\n")->text);
}

TEST_F(LogConfigFileTest, StaysAsItIsWhereItCannotBeMerged) {
    const QString folder = path(u"folder/log.config"_s);
    makeFolder(u"folder/log.config"_s);
    const QString readOnly = write(u"read-only/log.config"_s, "[Arena]\n");
    ASSERT_TRUE(QFile::setPermissions(readOnly, QFile::ReadOwner));
    const QString wide = write(u"wide/log.config"_s, QByteArray("\xFF\xFE[\0", 4));
    const QString large = write(u"large/log.config"_s, QByteArray(2'000'000, 'x'));
    const QString dangling = path(u"dangling.config"_s);
    ASSERT_TRUE(QFile::link(path(u"nowhere"_s), dangling));

    struct Case {
        const char* why;
        QString file;
        const char* words;
    };

    const Case cases[] = {
        {"a folder of that name", folder, "is no file but a folder"},
        {"somebody protected it", readOnly, "may not be written"},
        {"16-bit characters", wide, "is not text in UTF-8"},
        {"anything but the game's", large, "is too large"},
        {"a link that leads nowhere", dangling, "leads nowhere"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto fixed = fixLogConfig(c.file);
        ASSERT_FALSE(fixed);
        EXPECT_TRUE(fixed.error().contains(QString::fromUtf8(c.words))) << fixed.error().toStdString();
        EXPECT_FALSE(QFileInfo::exists(c.file + u".bak"_s));
    }
    EXPECT_EQ(read(readOnly), "[Arena]\n");
    EXPECT_TRUE(QFileInfo(folder).isDir());
}

// A log.config under a file: neither it nor a folder for it can be had.
TEST_F(LogConfigFileTest, CannotBeMadeUnderAFile) {
    const QString file = write(u"file"_s, "") + u"/log.config"_s;
    const auto found = readLogConfig(file);
    ASSERT_TRUE(found);
    EXPECT_FALSE(found->isWritable);
    EXPECT_FALSE(fixLogConfig(file));
}

} // namespace
} // namespace pelloran
