#include "tests/sync/ConfigInstallerTest.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <system_error>

using namespace Qt::StringLiterals;

// How new content comes into the place of what is there, and what becomes of that.
namespace pelloran {

namespace {

using testing::ConfigInstallerTest;
using ::testing::IsEmpty;
using testing::TarWriter;

// With both ways of bringing the new content into its place.
class ConfigInstallerSwapTest : public ConfigInstallerTest, public ::testing::WithParamInterface<bool> {
protected:
    ConfigInstallerSwapTest() {
        if (!GetParam()) {
            tools.exchange = unsupported;
        }
    }
};

TEST_P(ConfigInstallerSwapTest, InstallsWhereNothingWas) {
    installFirst();
    EXPECT_EQ(everythingIn(folder.path()),
              (QStringList{u"support"_s, u"support/Pelloran"_s, u"support/Pelloran/config"_s,
                           u"support/Pelloran/config/.content_hash"_s, u"support/Pelloran/config/extra"_s,
                           u"support/Pelloran/config/manifest.json"_s, u"support/Pelloran/config/winrates"_s,
                           u"support/Pelloran/config/winrates/class_winrates.json"_s, u"temporary"_s}));
    EXPECT_EQ(read(config().localHashURL()), "old") << "no line break";
    expectOldContent();
    EXPECT_THAT(logged.lines(), IsEmpty());
}

TEST_P(ConfigInstallerSwapTest, ReplacesEverythingThatWas) {
    installFirst();
    write(directory() + u"/mine"_s, "x");
    write(directory() + u".bak/stale"_s, "x");
    write(directory() + u".bak/.content_hash"_s, "older");
    TarWriter writer;
    writer.add({.name = "mage_arena_LAST_7_DAYS.json", .content = "new"});
    const auto installed = installer().install(manifest(u"new"_s), "raw", writer.gzipped());
    ASSERT_TRUE(installed);
    EXPECT_EQ(*installed, ConfigInstaller::Installation::done);
    EXPECT_EQ(everythingIn(files.applicationSupportFolder()),
              (QStringList{u"Pelloran"_s, u"Pelloran/config"_s, u"Pelloran/config/.content_hash"_s,
                           u"Pelloran/config/mage_arena_LAST_7_DAYS.json"_s, u"Pelloran/config/manifest.json"_s}));
    EXPECT_EQ(config().localHash(), u"new"_s);
    EXPECT_THAT(logged.lines(), IsEmpty());
}

TEST_P(ConfigInstallerSwapTest, AnEmptyArchiveIsContentToo) {
    installFirst();
    ASSERT_TRUE(installer().install(manifest(u"none"_s), "raw", TarWriter().gzipped()));
    EXPECT_EQ(everythingIn(directory()), (QStringList{u".content_hash"_s, u"manifest.json"_s}));
    EXPECT_FALSE(config().hasUsableLocalConfig());
}

TEST_P(ConfigInstallerSwapTest, SurvivesTheFolderBeingDeletedMeanwhile) {
    installFirst();
    tools.after = [this](InstallStep step) {
        if (step == InstallStep::wroteManifest) {
            QDir(directory()).removeRecursively();
        }
    };
    EXPECT_TRUE(installer().install(manifest(u"new"_s), "raw", bundle("new")));
    EXPECT_EQ(config().localHash(), u"new"_s);
    EXPECT_EQ(read(directory() + u"/extra"_s), "new");
}

// Of files that nobody has but their owner.
TEST_P(ConfigInstallerSwapTest, KeepsWhatNoSyncHasBrought) {
    tools.sync = [](const auto&) { return std::error_code(); }; // takes its time, and is not what this is about
    const auto link = [](const QString& target, const QString& path) {
        EXPECT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        std::filesystem::create_symlink(target.toStdString(), path.toStdString());
    };
    const QString config = directory();
    const QString kept = QFileInfo(config).path() + u"/winrates-before-sync"_s;
    const QString mine = u"winrates/class_winrates.json"_s;
    const QString cards = u"mage_arena_LAST_7_DAYS.json"_s;

    struct Case {
        const char* why;
        std::function<void()> make;
        QString keptIn;        // empty: nothing is
        QStringList keptFiles; // everything in it
    };

    const Case cases[] = {
        {"there was no folder", [] {}, {}, {}},
        {"an empty one", [&] { QDir().mkpath(config); }, {}, {}},
        {"folders without a file", [&] { QDir().mkpath(config + u"/winrates"_s); }, {}, {}},
        {"the player's own data",
         [&] {
             write(config + u'/' + mine, "mine");
             write(config + u'/' + cards, "mine too");
         },
         kept,
         {cards, u"winrates"_s, mine}},
        {"anything else", [&] { write(config + u"/notes.txt"_s, "x"); }, kept, {u"notes.txt"_s}},
        {"one that does not show", [&] { write(config + u"/a/b/.c"_s, "x"); }, kept, {u"a"_s, u"a/b"_s, u"a/b/.c"_s}},
        {"a link alone", [&] { link(u"/nowhere"_s, config + u"/winrates"_s); }, kept, {u"winrates"_s}},
        {"a folder that lies elsewhere",
         [&] {
             write(folder.filePath(u"elsewhere/"_s) + mine, "mine");
             link(folder.filePath(u"elsewhere"_s), config);
         },
         kept,
         {u"winrates"_s, mine}},
        {"a copy of a server's manifest makes no sync",
         [&] { write(config + u"/manifest.json"_s, "{}"); },
         kept,
         {u"manifest.json"_s}},
        {"nor does a folder of the hash's name",
         [&] { write(config + u"/.content_hash/a"_s, "x"); },
         kept,
         {u".content_hash"_s, u".content_hash/a"_s}},
        {"what a sync has brought can be brought again", [&] { installFirst(); }, {}, {}},
        {"also where the hash is lost",
         [&] {
             write(config + u'/' + mine, "old");
             write(config + u"/.content_hash"_s, "");
         },
         {},
         {}},
        {"the name is taken",
         [&] {
             write(kept + u"/earlier"_s, "x");
             write(config + u'/' + cards, "mine");
         },
         kept + u"-2"_s,
         {cards}},
        {"so are two, one of them by a file",
         [&] {
             write(kept, "x");
             link(u"/nowhere"_s, kept + u"-2"_s);
             write(config + u'/' + cards, "mine");
         },
         kept + u"-3"_s,
         {cards}},
        {"what a swap that was cut off had set aside",
         [&] {
             installFirst();
             write(config + u".bak/"_s + cards, "mine");
         },
         kept,
         {cards}},
        {"that, and more of them",
         [&] {
             write(config + u'/' + cards, "mine");
             write(config + u".bak/"_s + mine, "mine");
         },
         kept + u"-2"_s,
         {cards}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        ASSERT_TRUE(QDir(files.applicationSupportFolder()).removeRecursively());
        c.make();
        const QStringList before = everythingIn(files.applicationSupportFolder());
        logged.clear();
        const auto installed = installer().install(manifest(u"new"_s), "raw", bundle("new"));
        ASSERT_TRUE(installed) << installed.error().localizedDescription().toStdString();
        EXPECT_EQ(everythingIn(config), (QStringList{u".content_hash"_s, u"extra"_s, u"manifest.json"_s, u"winrates"_s,
                                                     u"winrates/class_winrates.json"_s}));
        EXPECT_EQ(read(config + u"/winrates/class_winrates.json"_s), "new");
        const QStringList beside = QDir(QFileInfo(config).path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        if (c.keptIn.isEmpty()) {
            EXPECT_EQ(beside, QStringList{u"config"_s});
            EXPECT_THAT(logged.lines(), IsEmpty());
        } else {
            EXPECT_EQ(everythingIn(c.keptIn), c.keptFiles);
            ASSERT_FALSE(logged.lines().isEmpty());
            EXPECT_EQ(logged.lines().last(),
                      u"a sync has put the server's files in the place of your own win-rate files, "
                      u"which are kept in "_s +
                          c.keptIn);
            EXPECT_FALSE(QFileInfo::exists(config + u".bak"_s));
        }
    }
}

TEST_P(ConfigInstallerSwapTest, ReplacesNothingThatItCannotKeep) {
    const QString mine = directory() + u"/winrates/class_winrates.json"_s;
    write(mine, "mine");
    tools.move = [](const auto& from, const auto& to) {
        return to.string().find("before-sync") != std::string::npos
                   ? std::make_error_code(std::errc::no_space_on_device)
                   : InstallTools::rename(from, to);
    };
    for (int tries = 0; tries < 2; ++tries) {
        const auto installed = installer().install(manifest(u"new"_s), "raw", bundle("new"));
        ASSERT_FALSE(installed);
        EXPECT_EQ(installed.error().localizedDescription(), u"cannot keep your own win-rate files in "_s +
                                                                QFileInfo(directory()).path() +
                                                                u"/winrates-before-sync: No space left on device"_s);
        EXPECT_EQ(everythingIn(directory()), (QStringList{u"winrates"_s, u"winrates/class_winrates.json"_s}));
        EXPECT_EQ(read(mine), "mine");
        EXPECT_THAT(logged.lines(), IsEmpty());
    }
}

TEST_P(ConfigInstallerSwapTest, KeepsOnesOwnFilesOnceForAll) {
    const QString parent = QFileInfo(directory()).path();
    write(directory() + u"/winrates/class_winrates.json"_s, "mine");
    for (const QString& hash : {u"new"_s, u"newer"_s}) {
        ASSERT_TRUE(installer().install(manifest(hash), "raw", bundle("new")));
        EXPECT_EQ(QDir(parent).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                  (QStringList{u"config"_s, u"winrates-before-sync"_s}));
        EXPECT_EQ(read(parent + u"/winrates-before-sync/winrates/class_winrates.json"_s), "mine");
    }
    EXPECT_EQ(logged.lines().size(), 1) << logged.lines().join(u'\n').toStdString();
}

TEST_P(ConfigInstallerSwapTest, LeavesOnesOwnFilesWhereTheyAreWhenAnyStepFails) {
    const QString mine = directory() + u"/winrates/class_winrates.json"_s;
    write(mine, "mine");
    // The first move, the second, and so on; the ways to swap need different numbers of them.
    int failures = 0;
    for (int fatal = 0; fatal < 5; ++fatal) {
        SCOPED_TRACE(fatal);
        int moves = 0;
        tools.move = [&](const auto& from, const auto& to) {
            return moves++ == fatal ? std::make_error_code(std::errc::permission_denied)
                                    : InstallTools::rename(from, to);
        };
        if (installer().install(manifest(u"new"_s), "raw", bundle("new"))) {
            break;
        }
        ++failures;
        EXPECT_EQ(everythingIn(directory()), (QStringList{u"winrates"_s, u"winrates/class_winrates.json"_s}));
        EXPECT_EQ(read(mine), "mine");
        EXPECT_THAT(logged.lines(), IsEmpty());
    }
    EXPECT_EQ(failures, GetParam() ? 2 : 5);
}

TEST_P(ConfigInstallerSwapTest, ABundleThatDoesNotUnpackLeavesOnesOwnFilesAlone) {
    const QString mine = directory() + u"/winrates/class_winrates.json"_s;
    write(mine, "mine");
    EXPECT_FALSE(installer().install(manifest(u"new"_s), "raw", "garbage"));
    EXPECT_EQ(everythingIn(files.applicationSupportFolder()),
              (QStringList{u"Pelloran"_s, u"Pelloran/config"_s, u"Pelloran/config/winrates"_s,
                           u"Pelloran/config/winrates/class_winrates.json"_s}));
    EXPECT_EQ(read(mine), "mine");
}

INSTANTIATE_TEST_SUITE_P(ConfigInstaller, ConfigInstallerSwapTest, ::testing::Bool(),
                         [](const auto& run) { return run.param ? "Exchange" : "TwoMoves"; });

} // namespace

} // namespace pelloran
