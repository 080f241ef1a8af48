#include "tools/stage/SessionFolder.h"

#include "tests/stage/Contents.h"
#include "tests/support/Printing.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelloran::stage {

namespace {

using namespace std::chrono_literals;
using std::chrono::system_clock;

// A clock that shows local time 2026-04-12 20:31:02.5 and goes on by a quarter of a microsecond at every look.
Clock steadyClock() {
    const qint64 start = QDateTime(QDate(2026, 4, 12), QTime(20, 31, 2, 500)).toMSecsSinceEpoch();
    return [now = system_clock::time_point(std::chrono::milliseconds(start))]() mutable {
        now += 1250ns;
        return now;
    };
}

} // namespace

TEST(SessionFolder, IsNamedAfterTheTimeAndHoldsTwoEmptyLogs) {
    const QTemporaryDir logs;
    const auto session = SessionFolder::create(logs.filePath(QStringLiteral("not/there/yet")), steadyClock());
    ASSERT_TRUE(session.has_value()) << session.error().toStdString();
    EXPECT_TRUE(session->path().endsWith(QStringLiteral("/not/there/yet/Hearthstone_2026_04_12_20_31_02")));
    EXPECT_EQ(QDir(session->path()).entryList(QDir::Files),
              (QStringList{QStringLiteral("Arena.log"), QStringLiteral("LoadingScreen.log")}));
    EXPECT_TRUE(contents(session->path() + QStringLiteral("/Arena.log")).isEmpty());
}

TEST(SessionFolder, WritesEveryLineAtOnceWithItsTime) {
    const QTemporaryDir logs;
    auto session = SessionFolder::create(logs.path(), steadyClock());
    ASSERT_TRUE(session.has_value()) << session.error().toStdString();
    EXPECT_TRUE(session->write({{LogFile::arena, QStringLiteral("SetDraftMode - DRAFTING")},
                                {LogFile::loadingScreen, QStringLiteral("LoadingScreen.OnSceneLoaded()")},
                                {LogFile::arena, QStringLiteral("Client chooses: 火球术 (CS2_029)")}}));
    EXPECT_EQ(contents(session->path() + QStringLiteral("/Arena.log")),
              QByteArray("D 20:31:02.5000025 SetDraftMode - DRAFTING\n"
                         "D 20:31:02.5000050 Client chooses: 火球术 (CS2_029)\n"));
    EXPECT_EQ(contents(session->path() + QStringLiteral("/LoadingScreen.log")),
              QByteArray("D 20:31:02.5000037 LoadingScreen.OnSceneLoaded()\n"));
}

TEST(SessionFolder, RefusesAFolderThatIsThereAlready) {
    const QTemporaryDir logs;
    ASSERT_TRUE(SessionFolder::create(logs.path(), steadyClock()).has_value());
    const auto second = SessionFolder::create(logs.path(), steadyClock());
    ASSERT_FALSE(second.has_value());
    EXPECT_TRUE(second.error().contains(QStringLiteral("Hearthstone_2026_04_12_20_31_02")));
}

TEST(SessionFolder, RefusesALogFolderThatIsAFile) {
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("logs")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_FALSE(SessionFolder::create(file.fileName(), steadyClock()).has_value());
}

} // namespace pelloran::stage
