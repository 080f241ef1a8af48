#include "draft/logs/LogWatcher.h"

#include "tests/support/CollectedLog.h"
#include "tests/support/NoDescriptors.h"
#include "tests/support/Printing.h"
#include "tests/support/SharedData.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScopeGuard>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

using Text = std::optional<QString>;

class LogWatching : public ::testing::Test {
protected:
    // Makes an entry of the log folder; `age` in nanoseconds before a fixed date.
    QString session(const QString& name, long age = 0) const {
        const QString path = folder.filePath(name);
        EXPECT_TRUE(QDir().mkpath(path));
        setAge(path, age);
        return path;
    }

    static void setAge(const QString& path, long age) {
        const std::chrono::sys_time<std::chrono::nanoseconds> day =
            std::chrono::sys_days{std::chrono::year{2026} / 4 / 12};
        const auto date = std::filesystem::file_time_type::clock::from_sys(day - std::chrono::nanoseconds(age));
        std::filesystem::last_write_time(path.toStdString(), date);
    }

    static void write(const QString& path, const QByteArray& bytes) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    DraftState poll() const { return LogWatcher(folder.path()).poll(); }

    QTemporaryDir folder;
};

const QByteArray drafting = "D 1 SetDraftMode - DRAFTING\n";

} // namespace

TEST_F(LogWatching, TakesTheNewestSession) {
    const LogWatcher watcher(folder.path());
    EXPECT_EQ(watcher.latestSessionDir(), Text()) << "an empty folder";

    session(u"Other_9"_s, -5);
    session(u"hearthstone_9"_s, -5);
    session(u".Hearthstone_9"_s, -5);
    EXPECT_EQ(watcher.latestSessionDir(), Text()) << "no name begins as a session's does";

    const QString old = session(u"Hearthstone_2"_s, 1'000'000'000);
    EXPECT_EQ(watcher.latestSessionDir(), old) << "newer entries of other names do not count";

    const QString newer = session(u"Hearthstone_1"_s, 1);
    EXPECT_EQ(watcher.latestSessionDir(), newer) << "the date counts, not the name";

    const QString newest = session(u"Hearthstone_3"_s, 0);
    EXPECT_EQ(watcher.latestSessionDir(), newest) << "a nanosecond decides";
}

TEST_F(LogWatching, TakesTheFirstNameOfEquallyNewSessions) {
    for (const QString& name : {u"Hearthstone_b"_s, u"Hearthstone_a"_s, u"Hearthstone_c"_s, u"Hearthstone_B"_s}) {
        session(name);
    }
    EXPECT_EQ(LogWatcher(folder.path()).latestSessionDir(), folder.filePath(u"Hearthstone_B"_s));
}

TEST_F(LogWatching, DoesNotAskWhetherTheNewestIsAFolder) {
    session(u"Hearthstone_1"_s, 1);
    const QString file = folder.filePath(u"Hearthstone_2"_s);
    write(file, {});
    setAge(file, 0);
    EXPECT_EQ(LogWatcher(folder.path()).latestSessionDir(), file);
    EXPECT_EQ(poll().scene, u"UNKNOWN"_s);
}

TEST_F(LogWatching, CountsAnUnknownDateAsTheMostDistantPast) {
    std::filesystem::create_symlink("nowhere", folder.filePath(u"Hearthstone_0"_s).toStdString());
    const LogWatcher watcher(folder.path());
    EXPECT_EQ(watcher.latestSessionDir(), folder.filePath(u"Hearthstone_0"_s)) << "better than none";
    const QString known = session(u"Hearthstone_1"_s, 1'000'000'000'000'000'000);
    EXPECT_EQ(watcher.latestSessionDir(), known);
}

TEST_F(LogWatching, NamesTheSessionByTheFolderAsGiven) {
    const QString path = session(u"Hearthstone_1"_s);
    std::filesystem::create_directory_symlink(folder.path().toStdString(), folder.filePath(u"link"_s).toStdString());

    const struct {
        const char* why;
        QString logsDir;
        Text expected;
    } rows[] = {
        {"links are not resolved", folder.filePath(u"link"_s), folder.filePath(u"link/Hearthstone_1"_s)},
        {"a final slash stays", folder.path() + u"/"_s, folder.path() + u"//Hearthstone_1"_s},
        {"a relative path stays one", QDir::current().relativeFilePath(folder.path()),
         QDir::current().relativeFilePath(path)},
        {"a tilde is a name", u"~"_s, {}},
        {"an empty path", u""_s, {}},
        {"a missing folder", folder.filePath(u"missing"_s), {}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(LogWatcher(row.logsDir).latestSessionDir(), row.expected);
    }
}

TEST_F(LogWatching, SaysNoSessionWhereThereIsNone) {
    DraftState expected;
    expected.scene = u"NO_SESSION"_s;
    EXPECT_EQ(poll(), expected) << "empty folder";
    EXPECT_EQ(LogWatcher(folder.filePath(u"missing"_s)).poll(), expected);
    write(folder.filePath(u"file"_s), {});
    EXPECT_EQ(LogWatcher(folder.filePath(u"file"_s)).poll(), expected) << "no folder at all";
}

TEST_F(LogWatching, SaysNoSessionWhereTheFolderMayNotBeListed) {
    if (geteuid() == 0) {
        GTEST_SKIP() << "the superuser may list everything";
    }
    session(u"Hearthstone_1"_s);
    QFile::setPermissions(folder.path(), {});
    EXPECT_EQ(poll().scene, u"NO_SESSION"_s);
    QFile::setPermissions(folder.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

TEST_F(LogWatching, ReadsBothLogsOfTheSession) {
    const struct {
        const char* why;
        std::optional<QByteArray> loadingScreenLog;
        std::optional<QByteArray> arenaLog;
        QString scene;
        QString draftMode;
        bool inDraft;
    } rows[] = {
        {"neither", {}, {}, u"UNKNOWN"_s, u"UNKNOWN"_s, false},
        {"no arena log: the scene is told", "currMode=DRAFT\n", {}, u"DRAFT"_s, u"UNKNOWN"_s, false},
        {"no loading-screen log hides no draft", {}, drafting, u"UNKNOWN"_s, u"DRAFTING"_s, true},
        {"nor does one without a mode", "nothing\n", drafting, u"UNKNOWN"_s, u"DRAFTING"_s, true},
        {"nor an empty one", "", drafting, u"UNKNOWN"_s, u"DRAFTING"_s, true},
        {"nor one that is no text", "currMode=HUB\n\xFF", drafting, u"UNKNOWN"_s, u"DRAFTING"_s, true},
        {"both", "currMode=DRAFT\n", drafting, u"DRAFT"_s, u"DRAFTING"_s, true},
        {"another screen", "currMode=DRAFT\ncurrMode=HUB\n", drafting, u"HUB"_s, u"DRAFTING"_s, false},
        {"an arena log that is no text", "currMode=DRAFT\n", drafting + '\xFF', u"DRAFT"_s, u"UNKNOWN"_s, false},
        {"an arena log that stays cut off", "currMode=DRAFT\n", drafting + "\xE7\x81", u"DRAFT"_s, u"UNKNOWN"_s, false},
        {"a binary arena log", "currMode=DRAFT\n", QByteArray(5000, '\x8F'), u"DRAFT"_s, u"UNKNOWN"_s, false},
        {"an empty arena log", "currMode=DRAFT\n", "", u"DRAFT"_s, u"UNKNOWN"_s, false},
        {"the mode left",
         {},
         drafting + "SetDraftMode - ACTIVE_DRAFT_DECK\n",
         u"UNKNOWN"_s,
         u"ACTIVE_DRAFT_DECK"_s,
         false},
    };

    const QString path = session(u"Hearthstone_1"_s);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        for (const auto& [name, content] :
             {std::pair{u"/LoadingScreen.log"_s, row.loadingScreenLog}, std::pair{u"/Arena.log"_s, row.arenaLog}}) {
            QFile::remove(path + name);
            if (content) {
                write(path + name, *content);
            }
        }
        const DraftState state = LogWatcher(folder.path(), [] {}).poll();
        EXPECT_EQ(state.sessionDir, path);
        EXPECT_EQ(state.scene, row.scene);
        EXPECT_EQ(state.draftMode, row.draftMode);
        EXPECT_EQ(state.inDraft, row.inDraft);
        EXPECT_EQ(state.phase, row.inDraft ? DraftPhase::heroPick : DraftPhase::idle);
    }
}

TEST_F(LogWatching, TakesALogThatIsAFolderAsUnreadable) {
    const QString path = session(u"Hearthstone_1"_s);
    ASSERT_TRUE(QDir().mkdir(path + u"/Arena.log"_s));
    write(path + u"/LoadingScreen.log"_s, "currMode=DRAFT\n");
    DraftState expected;
    expected.sessionDir = path;
    expected.scene = u"DRAFT"_s;
    EXPECT_EQ(poll(), expected);
}

TEST_F(LogWatching, KeepsTheDraftWhileALineIsBeingWritten) {
    const QString path = session(u"Hearthstone_1"_s) + u"/Arena.log"_s;
    write(path, drafting + "OnChosen(): hero=HERO_08\nClient chooses: 火\xE7");
    const LogWatcher watcher(folder.path(), [&] {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::Append));
        file.write("\x90\x83 (X_1)\n");
    });
    const DraftState state = watcher.poll();
    EXPECT_EQ(state.phase, DraftPhase::cardPick);
    EXPECT_EQ(state.lastChoiceName, u"火球"_s);
}

TEST_F(LogWatching, RemembersNothingBetweenPolls) {
    const LogWatcher watcher(folder.path());
    const QString path = session(u"Hearthstone_1"_s);
    write(path + u"/Arena.log"_s, drafting + "OnChosen(): hero=HERO_08\n");
    EXPECT_EQ(watcher.poll().phase, DraftPhase::cardPick);
    write(path + u"/Arena.log"_s, drafting);
    EXPECT_EQ(watcher.poll().phase, DraftPhase::heroPick) << "the game began its file again";
    QFile::remove(path + u"/Arena.log"_s);
    EXPECT_EQ(watcher.poll().draftMode, u"UNKNOWN"_s);
    setAge(path, 0); // changed by the writing
    session(u"Hearthstone_2"_s, -1);
    EXPECT_EQ(watcher.poll().sessionDir, folder.filePath(u"Hearthstone_2"_s));
}

TEST_F(LogWatching, SaysOnceThatALogIsTooLarge) {
    const testing::CollectedLog collected;
    const QString path = session(u"Hearthstone_%1"_s); // a name that a message must not take for a place of its own
    write(path + u"/LoadingScreen.log"_s, "currMode=DRAFT\n");
    write(path + u"/Arena.log"_s, drafting);
    std::filesystem::resize_file((path + u"/Arena.log"_s).toStdString(), 1LL << 30);
    const LogWatcher watcher(folder.path());
    for (int polls = 0; polls < 3; ++polls) {
        const DraftState state = watcher.poll();
        EXPECT_EQ(state.scene, u"DRAFT"_s);
        EXPECT_EQ(state.draftMode, u"UNKNOWN"_s);
        EXPECT_FALSE(state.inDraft);
    }
    EXPECT_EQ(collected.lines(), QStringList{path + u"/Arena.log is larger than 64 MiB and is not read"_s});
}

TEST_F(LogWatching, TellsOnceOfALogItCannotUseAndNotOfOneThatIsMissing) {
    const QString path = session(u"Hearthstone_1"_s);
    const testing::CollectedLog collected;
    poll();
    EXPECT_EQ(collected.lines(), QStringList());
    write(path + u"/Arena.log"_s, "\xFF");
    QDir().mkdir(path + u"/LoadingScreen.log"_s);
    const LogWatcher watcher(folder.path());
    watcher.poll();
    watcher.poll();
    ASSERT_EQ(collected.lines().size(), 2);
    EXPECT_TRUE(collected.lines()[0].contains(u"LoadingScreen.log cannot be read"_s));
    EXPECT_TRUE(collected.lines()[1].contains(u"Arena.log is not text"_s));
}

TEST_F(LogWatching, OutlivesWhatBecomesOfItsFilesAndTellsOnce) {
    const QString logs = folder.filePath(u"Logs"_s);
    const QString session = logs + u"/Hearthstone_1"_s;
    const QString arena = session + u"/Arena.log"_s;
    std::unique_ptr<testing::NoDescriptors> exhausted;
    // Rights do not bind the superuser, who is somebody else meanwhile.
    const bool isSuperuser = ::geteuid() == 0;
    const auto forbid = [&](const QString& path) {
        if (isSuperuser) {
            for (const QString& above : {folder.path(), logs, session}) {
                ASSERT_EQ(::chmod(qPrintable(above), 0755), 0);
            }
        }
        ASSERT_EQ(::chmod(qPrintable(path), 0), 0);
        if (isSuperuser) {
            constexpr uid_t nobody = 65534;
            ASSERT_EQ(::seteuid(nobody), 0);
        }
    };
    const auto allow = [&] {
        if (isSuperuser) {
            ASSERT_EQ(::seteuid(0), 0);
        }
        ::chmod(qPrintable(logs), 0755);
    };
    const auto allowedAgain = qScopeGuard(allow);

    struct Case {
        const char* why;
        std::function<void()> happen;
        bool draftGoesOn;
        QString line; // none where it is empty
    };

    const Case cases[] = {
        {"replaced by another file",
         [&] {
             write(arena + u".new"_s, drafting + "more\n");
             ASSERT_EQ(std::rename(qPrintable(arena + u".new"_s), qPrintable(arena)), 0);
         },
         true,
         {}},
        {"rotated, and the new one not there yet", [&] { QFile::rename(arena, arena + u".1"_s); }, false, {}},
        {"removed", [&] { QFile::remove(arena); }, false, {}},
        {"truncated", [&] { QFile::resize(arena, 0); }, false, {}},
        {"now a folder",
         [&] {
             QFile::remove(arena);
             QDir().mkdir(arena);
         },
         false, arena + u" cannot be read: it is no file"_s},
        {"now a pipe, which nobody writes",
         [&] {
             QFile::remove(arena);
             ASSERT_EQ(::mkfifo(qPrintable(arena), 0600), 0);
         },
         false, arena + u" cannot be read: it is no file"_s},
        {"now a device, by way of a link",
         [&] {
             QFile::remove(arena);
             QFile::link(u"/dev/zero"_s, arena);
         },
         false, arena + u" cannot be read: it is no file"_s},
        {"it may not be read", [&] { forbid(arena); }, false, arena + u" cannot be read: Permission denied"_s},
        {"a link to itself",
         [&] {
             QFile::remove(arena);
             QFile::link(arena, arena);
         },
         false, arena + u" cannot be read: Too many levels of symbolic links"_s},
        {"a link to nothing",
         [&] {
             QFile::remove(arena);
             QFile::link(folder.filePath(u"nowhere"_s), arena);
         },
         false, arena + u" cannot be read: No such file or directory"_s},
        {"rubbish", [&] { write(arena, drafting + QByteArray(5000, '\xFE')); }, false,
         arena + u" is not text in UTF-8 and is not used"_s},
        {"grown by gigabytes", [&] { std::filesystem::resize_file(arena.toStdString(), std::uintmax_t{3} << 30); },
         false, arena + u" is larger than 64 MiB and is not read"_s},
        {"the session is a file",
         [&] {
             QDir(session).removeRecursively();
             write(session, "x");
         },
         false, session + u" is no folder, so there are no logs in it"_s},
        {"the session is gone", [&] { QDir(session).removeRecursively(); }, false, {}},
        {"the log folder is gone", [&] { QDir(logs).removeRecursively(); }, false,
         u"the log folder %1 cannot be listed: No such file or directory"_s.arg(logs)},
        {"the log folder is a file",
         [&] {
             QDir(logs).removeRecursively();
             write(logs, "x");
         },
         false, u"the log folder %1 cannot be listed: Not a directory"_s.arg(logs)},
        {"the log folder may not be listed", [&] { forbid(logs); }, false,
         u"the log folder %1 cannot be listed: Permission denied"_s.arg(logs)},
        {"nothing more can be opened", [&] { exhausted = std::make_unique<testing::NoDescriptors>(); }, false,
         u"the log folder %1 cannot be listed: Too many open files"_s.arg(logs)},
        {"but one file: the folder can be listed, and its files be read one after the other",
         [&] { exhausted = std::make_unique<testing::NoDescriptors>(1); },
         true,
         {}},
    };
    const auto wellAgain = [&] {
        exhausted.reset();
        allow();
        QFile::remove(logs);
        QDir(logs).removeRecursively();
        ASSERT_TRUE(QDir().mkpath(session));
        write(arena, drafting);
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        wellAgain();
        const testing::CollectedLog collected;
        const LogWatcher watcher(logs, [] {});
        EXPECT_TRUE(watcher.poll().inDraft);
        c.happen();
        for (int polls = 0; polls < 3; ++polls) {
            EXPECT_EQ(watcher.poll().inDraft, c.draftGoesOn);
        }
        const QStringList lines = c.line.isEmpty() ? QStringList() : QStringList{c.line};
        EXPECT_EQ(collected.lines(), lines);
        wellAgain();
        EXPECT_TRUE(watcher.poll().inDraft) << "nothing has to be started again";
        EXPECT_EQ(collected.lines(), lines);
    }
}

TEST_F(LogWatching, SaysNothingOfAFolderThatIsWaitedFor) {
    const testing::CollectedLog collected;
    const QString logs = folder.filePath(u"Logs"_s);
    const LogWatcher watcher(logs, [] {});
    EXPECT_FALSE(watcher.poll().inDraft);
    EXPECT_EQ(collected.lines(), QStringList());
    ASSERT_TRUE(QDir().mkpath(logs + u"/Hearthstone_1"_s));
    write(logs + u"/Hearthstone_1/Arena.log"_s, drafting);
    EXPECT_TRUE(watcher.poll().inDraft);
}

TEST(RecordedLogs, GiveTheStateTheyWereRecordedIn) {
    SKIP_WITHOUT_SHARED_DATA("logs");
    const auto text = [](const QJsonValue& value) { return value.isNull() ? Text() : Text(value.toString()); };
    const QStringList phases{u"idle"_s, u"heroPick"_s, u"cardPick"_s};
    int cases = 0;
    for (const QFileInfo& folder :
         QDir(testing::sharedData(u"logs"_s)).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        SCOPED_TRACE(folder.fileName().toStdString());
        QFile file(folder.filePath() + u"/expected.json"_s);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QJsonObject described = QJsonDocument::fromJson(file.readAll()).object();
        const QJsonObject dates = described[u"mtimes"].toObject();
        ASSERT_TRUE(dates.isEmpty()) << "this test does not set dates in a folder it does not own";
        const QJsonObject json = described[u"expected"].toObject();
        DraftState expected;
        expected.inDraft = json[u"inDraft"].toBool();
        expected.draftMode = json[u"draftMode"].toString();
        expected.scene = json[u"scene"].toString();
        expected.deckId = text(json[u"deckId"]);
        expected.hero = text(json[u"hero"]);
        expected.hasHero = json[u"hasHero"].toBool();
        expected.deckCardIds = json[u"deckCardIds"].toVariant().toStringList();
        expected.lastChoiceName = text(json[u"lastChoiceName"]);
        expected.lastChoiceId = text(json[u"lastChoiceId"]);
        expected.sessionDir = folder.filePath() + u'/' + json[u"sessionDir"].toString();
        expected.phase = static_cast<DraftPhase>(phases.indexOf(json[u"phase"].toString()));
        EXPECT_EQ(LogWatcher(folder.filePath()).poll(), expected);
        ++cases;
    }
    EXPECT_GT(cases, 0);
}

} // namespace pelloran
