#include "sync/LocalConfig.h"

#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/support/Printing.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <optional>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

class LocalConfigTest : public ::testing::Test {
protected:
    QString directory() const { return config.configDirectory(); }

    static void write(const QString& path, const QByteArray& content) {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
        ASSERT_EQ(file.write(content), content.size());
    }

    QTemporaryDir folder;
    testing::FakeApplicationFiles files{folder.path()};
    LocalConfig config{files};
};

TEST_F(LocalConfigTest, LiesInTheApplicationSupportFolder) {
    EXPECT_EQ(directory(), files.applicationSupportFolder() + u"/Pelloran/config"_s);
    EXPECT_EQ(config.localHashURL(), directory() + u"/.content_hash"_s);
    EXPECT_FALSE(QFileInfo::exists(directory())) << "asking makes nothing";
}

TEST_F(LocalConfigTest, ReadsTheHash) {
    EXPECT_EQ(config.localHash(), std::nullopt) << "no file";

    struct Case {
        const char* why;
        QByteArray content;
        std::optional<QString> expected;
    };

    const Case cases[] = {
        {"as it is written", "abc", u"abc"_s},
        {"by hand", "abc\n", u"abc"_s},
        {"white space at both ends", " \t\r\nabc\xC2\xA0\n", u"abc"_s},
        {"white space within", "a b", u"a b"_s},
        {"not ASCII", "h\xC3\xA4sh", u"häsh"_s},
        {"empty", "", std::nullopt},
        {"only white space", " \n", std::nullopt},
        {"not UTF-8", "abc\xFF", std::nullopt},
        {"cut within a character", "abc\xC3", std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        write(config.localHashURL(), c.content);
        EXPECT_EQ(config.localHash(), c.expected);
    }
}

TEST_F(LocalConfigTest, AHashThatIsNoSmallFileIsNone) {
    const QString path = config.localHashURL();
    ASSERT_TRUE(QDir().mkpath(path));
    EXPECT_EQ(config.localHash(), std::nullopt) << "a folder";
    ASSERT_TRUE(QDir().rmdir(path));
    ASSERT_EQ(::mkfifo(qPrintable(path), 0600), 0);
    EXPECT_EQ(config.localHash(), std::nullopt) << "a pipe, which nobody writes";
    ASSERT_TRUE(QFile::remove(path));
    write(path, "abc");
    ASSERT_TRUE(QFile::resize(path, qint64{1} << 33));
    EXPECT_EQ(config.localHash(), std::nullopt) << "more than there is memory";
}

TEST_F(LocalConfigTest, IsUsableWithAnyOfTheDataFiles) {
    EXPECT_FALSE(config.hasUsableLocalConfig());
    write(directory() + u"/.content_hash"_s, "abc");
    write(directory() + u"/manifest.json"_s, "{}");
    write(directory() + u"/class_winrates.json"_s, "{}");
    write(directory() + u"/winrates/ALL.json"_s, "{}");
    EXPECT_FALSE(config.hasUsableLocalConfig());
    for (const QString& name : {u"winrates/class_winrates.json"_s, u"winrates/all_classes_LAST_7_DAYS.json"_s,
                                u"winrates/MAGE_LAST_7_DAYS.json"_s, u"mage_arena_LAST_7_DAYS.json"_s}) {
        write(directory() + u'/' + name, "");
        EXPECT_TRUE(config.hasUsableLocalConfig()) << name.toStdString();
        QFile::remove(directory() + u'/' + name);
    }
    EXPECT_FALSE(config.hasUsableLocalConfig());
}

} // namespace

} // namespace pelloran
