#include "platform/UserDefaults.h"
#include "tests/support/CollectedLog.h"
#include "tests/support/FullDisk.h"
#include "tests/support/Printing.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>

namespace pelloran {

namespace {

// Qt asks for the user's folder once in a run, so all tests share one and clear it. The tests' main() keeps Qt away
// from that folder; here it is the subject.
const QString& configurationFolder() {
    static const QTemporaryDir folder;
    static const QString path = [] {
        QStandardPaths::setTestModeEnabled(false);
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder.path()));
        return folder.path();
    }();
    return path;
}

class SettingsUserDefaultsTest : public ::testing::Test {
protected:
    void SetUp() override { clear(); }

    void TearDown() override { clear(); }

    void clear() {
        QDir(programFolder).removeRecursively();
        QFile::remove(programFolder);
    }

    void writeFile(const QByteArray& contents) {
        ASSERT_TRUE(QDir().mkpath(programFolder));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
    }

    const QString programFolder = configurationFolder() + QStringLiteral("/Pelloran");
    const QString path = programFolder + QStringLiteral("/Pelloran.ini");
    const QString key = QStringLiteral("pelloran.language");
    testing::CollectedLog logged;
};

TEST_F(SettingsUserDefaultsTest, KeepsTextsInTheUsersConfigurationFolder) {
    const auto defaults = UserDefaults::create();
    EXPECT_EQ(defaults->string(key), std::nullopt);
    EXPECT_FALSE(QFileInfo::exists(path)) << "reading must not write";
    for (const QString& value : {QStringLiteral("zh"), QStringLiteral("炉石, \"a\"; b=c\n%20"), QStringLiteral("@x"),
                                 QStringLiteral("12"), QStringLiteral("true"), QStringLiteral(" ")}) {
        SCOPED_TRACE(value.toStdString());
        defaults->setString(key, value);
        EXPECT_EQ(defaults->string(key), value);
        EXPECT_EQ(UserDefaults::create()->string(key), value) << "another run must find it";
    }
    EXPECT_TRUE(QFileInfo(path).isFile());
    EXPECT_TRUE(logged.lines().isEmpty());
}

TEST_F(SettingsUserDefaultsTest, KeysDoNotMix) {
    const auto defaults = UserDefaults::create();
    defaults->setString(key, QStringLiteral("en"));
    defaults->setString(QStringLiteral("pelloran.skippedAppVersion"), QStringLiteral("1.2.3"));
    EXPECT_EQ(defaults->string(key), QStringLiteral("en"));
    EXPECT_EQ(defaults->string(QStringLiteral("pelloran.skippedAppVersion")), QStringLiteral("1.2.3"));
    EXPECT_EQ(defaults->string(QStringLiteral("language")), std::nullopt);
}

TEST_F(SettingsUserDefaultsTest, ForgetsWhatIsRemovedAndNothingElse) {
    const QString other = QStringLiteral("pelloran.skippedAppVersion");
    const auto defaults = UserDefaults::create();
    defaults->remove(key);
    EXPECT_FALSE(QFileInfo::exists(path)) << "there was nothing to write";

    defaults->setString(key, QStringLiteral("zh"));
    defaults->setString(other, QStringLiteral("1.3"));
    defaults->remove(other);
    EXPECT_EQ(defaults->string(other), std::nullopt);
    EXPECT_EQ(UserDefaults::create()->string(other), std::nullopt) << "another run must not find it";
    EXPECT_EQ(UserDefaults::create()->string(key), QStringLiteral("zh"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_FALSE(file.readAll().contains("skippedAppVersion")) << "not left behind as an empty text";

    defaults->setString(other, QStringLiteral("1.4"));
    EXPECT_EQ(defaults->string(other), QStringLiteral("1.4"));
    EXPECT_TRUE(logged.lines().isEmpty());
}

TEST_F(SettingsUserDefaultsTest, RemovesWhatIsNotTextToo) {
    writeFile("[General]\npelloran.language=zh, en\n");
    UserDefaults::create()->remove(key);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_FALSE(file.readAll().contains("language"));
}

TEST_F(SettingsUserDefaultsTest, WhatIsNotTextCountsAsAbsent) {
    struct Case {
        const char* why;
        QByteArray value;
        std::optional<QString> expected;
    };

    const Case cases[] = {
        {"plain text", "zh", QStringLiteral("zh")},
        {"empty text", "", QString()},
        {"a number is written as text", "12", QStringLiteral("12")},
        {"a list", "zh, en", std::nullopt},
        {"bytes", "@ByteArray(zh)", std::nullopt},
        {"nothing", "@Invalid()", std::nullopt},
        {"a rectangle", "@Rect(1 2 3 4)", std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        clear();
        writeFile("[General]\npelloran.language=" + c.value + "\n");
        const auto found = UserDefaults::create()->string(key);
        EXPECT_EQ(found.has_value(), c.expected.has_value());
        EXPECT_EQ(found.value_or(QString()), c.expected.value_or(QString()));
    }
}

TEST_F(SettingsUserDefaultsTest, AFileThatIsNoStoreIsNoChoice) {
    for (const QByteArray& contents :
         {QByteArray(4096, '\0'), QByteArray("\xff\xfe\x00garbage", 10), QByteArray("[[[[\n====\n%%%"), QByteArray()}) {
        clear();
        writeFile(contents);
        EXPECT_EQ(UserDefaults::create()->string(key), std::nullopt);
    }
}

TEST_F(SettingsUserDefaultsTest, AFileThatIsNoStoreIsWrittenAnew) {
    writeFile("[[[[\n====\n%%%");
    const auto defaults = UserDefaults::create();
    defaults->setString(key, QStringLiteral("zh"));
    EXPECT_EQ(defaults->string(key), QStringLiteral("zh"));
    EXPECT_TRUE(logged.lines().isEmpty()) << logged.lines().join(u'\n').toStdString();
}

TEST_F(SettingsUserDefaultsTest, AStoreThatCannotBeWrittenIsLoggedAndTheValueHolds) {
    QFile inTheWay(programFolder); // a file where the folder belongs stops even the superuser
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    inTheWay.close();
    const auto defaults = UserDefaults::create();
    defaults->setString(key, QStringLiteral("zh"));
    EXPECT_EQ(defaults->string(key), QStringLiteral("zh"));
    ASSERT_EQ(logged.lines().size(), 1);
    EXPECT_TRUE(logged.lines().front().contains(key)) << logged.lines().front().toStdString();
    EXPECT_TRUE(logged.lines().front().contains(path)) << logged.lines().front().toStdString();

    ASSERT_TRUE(inTheWay.remove());
    defaults->setString(key, QStringLiteral("en"));
    EXPECT_EQ(logged.lines().size(), 1) << "an error of the past is not told again";
}

TEST_F(SettingsUserDefaultsTest, WhatWouldBeWaitedForIsNotRead) {
    struct Case {
        const char* why;
        std::function<void()> make;
        QString reason;
    };

    const Case cases[] = {
        {"a pipe, which nobody writes", [this] { ASSERT_EQ(::mkfifo(qPrintable(path), 0600), 0); },
         QStringLiteral("it is no file")},
        {"gigabytes",
         [this] {
             writeFile("[General]\npelloran.language=zh\n");
             ASSERT_TRUE(QFile::resize(path, qint64{1} << 33));
         },
         QStringLiteral("it is larger than 1 MiB")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        clear();
        ASSERT_TRUE(QDir().mkpath(programFolder));
        c.make();
        logged.clear();
        const auto defaults = UserDefaults::create();
        EXPECT_EQ(defaults->file(), path);
        EXPECT_EQ(defaults->string(key), std::nullopt);
        ASSERT_EQ(logged.lines().size(), 1);
        EXPECT_EQ(logged.lines().front(),
                  QStringLiteral("the choices stored in %1 cannot be used: %2").arg(path, c.reason));
        defaults->setString(key, QStringLiteral("en"));
        EXPECT_EQ(defaults->string(key), QStringLiteral("en"));
        ASSERT_EQ(logged.lines().size(), 2);
        EXPECT_TRUE(logged.lines().back().endsWith(QStringLiteral("it holds until the program ends")));
        defaults->remove(key);
        EXPECT_EQ(defaults->string(key), std::nullopt);

        ASSERT_TRUE(QFile::remove(path));
        defaults->setString(key, QStringLiteral("zh"));
        EXPECT_EQ(defaults->string(key), QStringLiteral("zh"));
        EXPECT_EQ(UserDefaults::create()->string(key), QStringLiteral("zh")) << "stored, now that it can be";
    }
}

TEST_F(SettingsUserDefaultsTest, AFullDiskKeepsTheChoicesOfBefore) {
    const auto defaults = UserDefaults::create();
    defaults->setString(key, QStringLiteral("zh"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray before = file.readAll();
    file.close();
    {
        const FullDisk full;
        defaults->setString(key, QStringLiteral("en"));
    }
    ASSERT_EQ(logged.lines().size(), 1);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), before);
}

TEST_F(SettingsUserDefaultsTest, ARemovalThatCannotBeWrittenIsLoggedAndHolds) {
    const auto defaults = UserDefaults::create();
    defaults->setString(key, QStringLiteral("zh"));
    {
        const FullDisk full;
        defaults->remove(key);
    }
    EXPECT_EQ(defaults->string(key), std::nullopt);
    ASSERT_EQ(logged.lines().size(), 1);
    EXPECT_TRUE(logged.lines().front().contains(key)) << logged.lines().front().toStdString();
}

} // namespace

} // namespace pelloran
