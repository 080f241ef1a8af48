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

// A game that runs writes into its files, which leaves the folder's own date alone.
TEST_F(LogConfigFileTest, IsOfTheUserWhoPlayedLast) {
    const QString users = u".wine/drive_c/users/"_s;
    const auto played = [&](const QString& user, const QString& name, int day) {
        QFile file(write(users + user + settings + name, "x"));
        EXPECT_TRUE(file.open(QFile::ReadWrite));
        EXPECT_TRUE(file.setFileTime(QDateTime(QDate(2100, 4, day), QTime(20, 0)), QFileDevice::FileModificationTime));
    };
    const auto configOf = [&](const QString& user) { return path(users + user + settings + u"/log.config"_s); };
    played(u"ann"_s, u"/options.txt"_s, 1);
    played(u"bob"_s, u"/options.txt"_s, 2);
    EXPECT_EQ(find(path(logs)), configOf(u"bob"_s));
    played(u"ann"_s, u"/options.txt"_s, 3);
    EXPECT_EQ(find(path(logs)), configOf(u"ann"_s));
    played(u"bob"_s, u"/.hidden"_s, 4);
    EXPECT_EQ(find(path(logs)), configOf(u"bob"_s));
}

TEST_F(LogConfigFileTest, IsFoundByWayOfALinkToTheLogs) {
    makeFolder(logs);
    const QString config = path(u".wine/drive_c/users/ann"_s + settings + u"/log.config"_s);
    ASSERT_TRUE(QFile::link(path(logs), path(u"hs-logs"_s)));
    EXPECT_EQ(find(path(u"hs-logs"_s)),
              QFileInfo(path(u".wine"_s)).canonicalFilePath() + config.mid(path(u".wine"_s).size()))
        << "named from outside of the prefix";
    makeFolder(u"disk/Hearthstone/Logs"_s);
    makeFolder(u"other/drive_c/Program Files (x86)"_s);
    ASSERT_TRUE(QFile::link(path(u"disk/Hearthstone"_s), path(u"other/drive_c/Program Files (x86)/Hearthstone"_s)));
    EXPECT_EQ(find(path(u"other/drive_c/Program Files (x86)/Hearthstone/Logs"_s)),
              path(u"other/drive_c/users/ann"_s + settings + u"/log.config"_s))
        << "the game itself lies elsewhere";
}

// Such as on Wine's drive D.
TEST_F(LogConfigFileTest, IsInTheChosenPrefixWhereTheLogsAreInNone) {
    makeFolder(u"disk/Hearthstone/Logs"_s);
    makeFolder(u"chosen/drive_c/users/ann"_s);
    const auto findWith = [&](const char* prefix) {
        return logConfigPath(path(u"disk/Hearthstone/Logs"_s), home.path(), [&](const QString& name) {
            return name == u"WINEPREFIX" ? std::optional(path(QString::fromUtf8(prefix))) : std::nullopt;
        });
    };
    EXPECT_EQ(find(path(u"disk/Hearthstone/Logs"_s)), std::nullopt) << "none is chosen";
    EXPECT_EQ(findWith("disk"), std::nullopt) << "no prefix";
    EXPECT_EQ(findWith("chosen"), path(u"chosen/drive_c/users/ann"_s + settings + u"/log.config"_s));
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
    EXPECT_EQ(before->toWriting, std::nullopt);
    EXPECT_FALSE(QFileInfo::exists(path(u"a"_s))) << "reading makes nothing";

    const auto written = fixLogConfig(file);
    ASSERT_TRUE(written) << written.error().description.toStdString();
    EXPECT_EQ(written->changes.size(), 2);
    EXPECT_EQ(written->backup, QString());
    EXPECT_EQ(read(file), mergeLogConfig({})->text);
}

TEST_F(LogConfigFileTest, IsMergedWithACopyOfWhatWasThere) {
    const QByteArray first = "[Power]\r\nLogLevel=1\r\n";
    const QString file = write(u"log.config"_s, first);
    const auto written = fixLogConfig(file);
    ASSERT_TRUE(written) << written.error().description.toStdString();
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

TEST_F(LogConfigFileTest, KeepsItsPermissions) {
    struct Case {
        const char* why;
        QFile::Permissions permissions;
    };

    const auto own = QFile::ReadOwner | QFile::WriteOwner;
    const Case cases[] = {
        {"nobody else's business", own},
        {"as Wine makes it", own | QFile::ReadGroup | QFile::ReadOther},
        {"everybody's", own | QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther},
        {"a program, of all things", own | QFile::ExeOwner},
    };
    // Who asks in the name of the user sees the owner's rights once more.
    const auto permissionsOf = [](const QString& file) { return QFile::permissions(file).toInt() & ~0x0700; };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const QString file = write(u"%1/log.config"_s.arg(c.permissions.toInt()), "[Arena]\n");
        ASSERT_TRUE(QFile::setPermissions(file, c.permissions));
        const auto written = fixLogConfig(file);
        ASSERT_TRUE(written) << written.error().description.toStdString();
        EXPECT_EQ(permissionsOf(file), c.permissions.toInt());
        EXPECT_EQ(permissionsOf(written->backup), c.permissions.toInt());
    }
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

    using Kind = LogConfigError::Kind;

    struct Case {
        const char* why;
        QString file;
        Kind kind;
        const char* words;
    };

    const Case cases[] = {
        {"a folder of that name", folder, Kind::noFile, "is no file but a folder"},
        {"somebody protected it", readOnly, Kind::isProtected, "may not be written"},
        {"16-bit characters", wide, Kind::notPlainText, "is not text in UTF-8"},
        {"anything but the game's", large, Kind::tooLarge, "is too large"},
        {"a link that leads nowhere", dangling, Kind::leadsNowhere, "leads nowhere"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto fixed = fixLogConfig(c.file);
        ASSERT_FALSE(fixed);
        EXPECT_EQ(fixed.error().kind, c.kind);
        EXPECT_TRUE(fixed.error().description.contains(QString::fromUtf8(c.words)))
            << fixed.error().description.toStdString();
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
    ASSERT_TRUE(found->toWriting);
    EXPECT_EQ(found->toWriting->kind, LogConfigError::Kind::unwritable);
    EXPECT_FALSE(fixLogConfig(file));
}

} // namespace
} // namespace pelloran
