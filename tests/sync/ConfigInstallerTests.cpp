#include "sync/ConfigInstaller.h"

#include "base/SerialQueue.h"
#include "sync/InstallTools.h"
#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/support/CollectedLog.h"
#include "tests/support/FullDisk.h"
#include "tests/support/NoDescriptors.h"
#include "tests/support/Printing.h"
#include "tests/support/TarWriter.h"
#include "tests/sync/TextLanguage.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QThread>

#include <gmock/gmock.h>
#ifdef Q_OS_LINUX
#include <sched.h>
#include <sys/mount.h>
#endif
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <future>
#include <optional>
#include <vector>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TarWriter;

std::error_code unsupported(const std::filesystem::path&, const std::filesystem::path&) {
    return std::make_error_code(std::errc::not_supported);
}

class ConfigInstallerTest : public ::testing::Test {
protected:
    ConfigInstallerTest() {
        tools.temporaryFolder = folder.filePath(u"temporary"_s);
        tools.lockPatience = std::chrono::milliseconds(100);
    }

    LocalConfig config() const { return LocalConfig(files); }

    ConfigInstaller installer() const { return ConfigInstaller(config(), tools); }

    QString directory() const { return config().configDirectory(); }

    static void write(const QString& path, const QByteArray& content) {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
        ASSERT_EQ(file.write(content), content.size());
    }

    static QByteArray read(const QString& path) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        return file.readAll();
    }

    // Everything below, relative to it.
    static QStringList everythingIn(const QString& path) {
        QStringList found;
        std::error_code error;
        const std::filesystem::path root = path.toStdString();
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root, error)) {
            found.append(QString::fromStdString(entry.path().lexically_relative(root).string()));
        }
        found.sort();
        return found;
    }

    static RemoteManifest manifest(const QString& hash) {
        RemoteManifest made;
        made.hash = hash;
        return made;
    }

    static QByteArray bundle(const QByteArray& content) {
        TarWriter writer;
        writer.add({.name = "winrates/", .kind = '5', .mode = 0755});
        writer.add({.name = "winrates/class_winrates.json", .content = content});
        writer.add({.name = "extra", .content = content});
        return writer.gzipped();
    }

    void installFirst() const {
        const auto installed = installer().install(manifest(u"old"_s), R"({"hash": "old"})", bundle("old"));
        ASSERT_TRUE(installed) << installed.error().localizedDescription().toStdString();
    }

    void expectOldContent() const {
        EXPECT_EQ(config().localHash(), u"old"_s);
        EXPECT_EQ(read(directory() + u"/winrates/class_winrates.json"_s), "old");
        EXPECT_EQ(read(directory() + u"/manifest.json"_s), R"({"hash": "old"})");
    }

    const testing::TextLanguage english;
    QTemporaryDir folder;
    testing::FakeApplicationFiles files{folder.path()};
    InstallTools tools;
    testing::CollectedLog logged;
};

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

TEST_F(ConfigInstallerTest, TheBundleDoesNotOverruleWhatIsWrittenForIt) {
    TarWriter writer;
    writer.add({.name = ".content_hash", .content = "forged"});
    writer.add({.name = "manifest.json", .content = "forged"});
    ASSERT_TRUE(installer().install(manifest(u"true"_s), "raw", writer.gzipped()));
    EXPECT_EQ(config().localHash(), u"true"_s);
    EXPECT_EQ(read(directory() + u"/manifest.json"_s), "raw");
}

TEST_F(ConfigInstallerTest, GivesFilesTheUsersOwnPermissions) {
    TarWriter writer;
    writer.add({.name = "open", .content = "x", .mode = 07777});
    writer.add({.name = "closed/", .kind = '5', .mode = 0});
    writer.add({.name = "closed/secret", .content = "x", .mode = 0});
    ASSERT_TRUE(installer().install(manifest(u"h"_s), "raw", writer.gzipped()));
    write(folder.filePath(u"ordinary"_s), "");
    QDir().mkpath(folder.filePath(u"ordinaryFolder"_s));
    const auto ofFile = QFile::permissions(folder.filePath(u"ordinary"_s));
    EXPECT_EQ(QFile::permissions(directory() + u"/open"_s), ofFile);
    EXPECT_EQ(QFile::permissions(directory() + u"/closed/secret"_s), ofFile);
    EXPECT_EQ(QFile::permissions(directory() + u"/closed"_s), QFile::permissions(folder.filePath(u"ordinaryFolder"_s)));
}

TEST_F(ConfigInstallerTest, NobodyElseCanLookIntoADownload) {
    std::optional<QFile::Permissions> others;
    tools.after = [&](InstallStep step) {
        if (step == InstallStep::madeDownloadFolder) {
            const QString download =
                tools.temporaryFolder + u'/' + QDir(tools.temporaryFolder).entryList({u"pl-*"_s}).value(0);
            others = QFile::permissions(download) & (QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                                     QFile::ReadOther | QFile::WriteOther | QFile::ExeOther);
        }
    };
    const mode_t before = ::umask(0); // of a user who allows everybody everything
    const auto installed = installer().install(manifest(u"h"_s), "raw", bundle("x"));
    ::umask(before);
    EXPECT_TRUE(installed);
    EXPECT_EQ(others, QFile::Permissions());
}

TEST_F(ConfigInstallerTest, AFailureBeforeTheSwapChangesNothing) {
    installFirst();
    TarWriter outward;
    outward.add({.name = "../evil", .content = "x"});
    TarWriter inTheWay;
    inTheWay.add({.name = "manifest.json/", .kind = '5', .mode = 0755});

    struct Case {
        const char* why;
        QByteArray bundle;
        QString message;   // a part of it
        qsizetype staging; // folders that stay
    };

    const Case cases[] = {
        {"corrupt", "garbage", u"not in gzip format"_s, 0},
        {"empty", "", u"unexpected end of file"_s, 0},
        {"leads elsewhere", outward.gzipped(), u"\"../evil\" in the archive leads out of its folder"_s, 0},
        {"a folder where the manifest belongs", inTheWay.gzipped(), u"cannot write "_s, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto installed = installer().install(manifest(u"new"_s), "raw", c.bundle);
        ASSERT_FALSE(installed);
        EXPECT_TRUE(installed.error().localizedDescription().contains(c.message))
            << installed.error().localizedDescription().toStdString();
        expectOldContent();
        EXPECT_THAT(everythingIn(tools.temporaryFolder), IsEmpty());
        EXPECT_EQ(QDir(directory() + u"/.."_s).entryList({u"config.staging-*"_s}, QDir::Dirs).size(), c.staging);
        EXPECT_FALSE(QFileInfo::exists(directory() + u".bak"_s));
    }
}

// A server whose content cannot be installed is asked again every ten minutes.
TEST_F(ConfigInstallerTest, FailuresDoNotPileUp) {
    TarWriter inTheWay;
    inTheWay.add({.name = "manifest.json/", .kind = '5', .mode = 0755});
    const auto stagings = [this] {
        return QDir(directory() + u"/.."_s).entryList({u"config.staging-*"_s}, QDir::Dirs);
    };
    const QString others = directory() + u".staging-of-somebody"_s;
    ASSERT_TRUE(QDir().mkpath(others));
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(installer().install(manifest(u"new"_s), "raw", inTheWay.gzipped()));
        EXPECT_EQ(stagings().size(), 2) << "the last one's, to be looked at, and what is none";
    }
    installFirst();
    EXPECT_EQ(stagings(), QStringList{QFileInfo(others).fileName()});
    EXPECT_THAT(logged.lines(), IsEmpty());
}

TEST_F(ConfigInstallerTest, AFailedFirstInstallationLeavesAnEmptyFolder) {
    EXPECT_FALSE(installer().install(manifest(u"new"_s), "raw", "garbage"));
    EXPECT_TRUE(QFileInfo(directory()).isDir());
    EXPECT_THAT(everythingIn(directory()), IsEmpty());
    EXPECT_FALSE(QFileInfo::exists(config().localHashURL()));
}

TEST_F(ConfigInstallerTest, PutsTheOldContentBackWhenTheNewOneCannotBeMoved) {
    installFirst();
    tools.exchange = unsupported;
    tools.move = [](const auto& from, const auto& to) {
        return from.string().find("staging") != std::string::npos ? std::make_error_code(std::errc::no_space_on_device)
                                                                  : InstallTools::rename(from, to);
    };
    const auto installed = installer().install(manifest(u"new"_s), "raw", bundle("new"));
    ASSERT_FALSE(installed);
    EXPECT_TRUE(installed.error().localizedDescription().endsWith(u"No space left on device"_s));
    expectOldContent();
    EXPECT_FALSE(QFileInfo::exists(directory() + u".bak"_s));
    EXPECT_THAT(everythingIn(tools.temporaryFolder), IsEmpty());
}

TEST_F(ConfigInstallerTest, StopsWhereTheOldContentCannotBeMoved) {
    installFirst();
    tools.exchange = unsupported;
    tools.move = [](const auto&, const auto&) { return std::make_error_code(std::errc::permission_denied); };
    const auto installed = installer().install(manifest(u"new"_s), "raw", bundle("new"));
    ASSERT_FALSE(installed);
    EXPECT_EQ(installed.error().localizedDescription(), u"cannot move "_s + directory() + u": Permission denied"_s);
    expectOldContent();
}

TEST_F(ConfigInstallerTest, NewContentCountsThoughTheOldOneCannotBeSetAside) {
    installFirst();
    tools.move = [](const auto&, const auto&) { return std::make_error_code(std::errc::permission_denied); };
    const bool exchanges = [this] {
        const std::filesystem::path a = folder.filePath(u"a"_s).toStdString();
        const std::filesystem::path b = folder.filePath(u"b"_s).toStdString();
        std::filesystem::create_directory(a);
        std::filesystem::create_directory(b);
        return !exchangePaths(a, b);
    }();
    if (!exchanges) {
        GTEST_SKIP() << "the file system of temporary files cannot exchange folders";
    }
    EXPECT_TRUE(installer().install(manifest(u"new"_s), "raw", bundle("new")));
    EXPECT_EQ(config().localHash(), u"new"_s);
    EXPECT_THAT(logged.lines(), ElementsAre(u"cannot set the old configuration aside: Permission denied"_s));
}

TEST_F(ConfigInstallerTest, EverythingIsOnTheDiskBeforeItIsSwappedIn) {
    installFirst();
    const QString parent = QFileInfo(directory()).path();
    QStringList synced;
    QStringList staged;
    bool oldIsThere = false;
    tools.sync = [&](const std::filesystem::path& path) {
        const QString name = QString::fromStdString(path.string());
        if (name == parent) {
            oldIsThere = QFileInfo::exists(directory() + u".bak"_s);
        }
        synced.append(name);
        return std::error_code();
    };
    tools.exchange = [&](const std::filesystem::path& from, const std::filesystem::path&) {
        EXPECT_FALSE(synced.contains(parent));
        for (const QString& name : everythingIn(QString::fromStdString(from.string()))) {
            staged.append(QString::fromStdString(from.string()) + u'/' + name);
        }
        staged.append(QString::fromStdString(from.string()));
        return std::make_error_code(std::errc::not_supported);
    };
    ASSERT_TRUE(installer().install(manifest(u"new"_s), "raw", bundle("new")));
    EXPECT_EQ(staged.size(), 6) << "two files in two folders, the hash and the manifest";
    staged.append(parent);
    staged.sort();
    synced.sort();
    EXPECT_EQ(synced, staged);
    EXPECT_TRUE(oldIsThere) << "until the new one is certain";
}

TEST_F(ConfigInstallerTest, WhatDoesNotReachTheDiskIsNotSwappedIn) {
    installFirst();
    for (const char* name : {"extra", "winrates", ".content_hash", "class_winrates.json"}) {
        SCOPED_TRACE(name);
        tools.sync = [name](const std::filesystem::path& path) {
            return path.filename() == name ? std::make_error_code(std::errc::no_space_on_device) : std::error_code();
        };
        const auto installed = installer().install(manifest(u"new"_s), "raw", bundle("new"));
        ASSERT_FALSE(installed);
        const QString message = installed.error().localizedDescription();
        EXPECT_TRUE(message.startsWith(u"cannot write "_s)) << message.toStdString();
        EXPECT_TRUE(message.endsWith(u": No space left on device"_s)) << message.toStdString();
        expectOldContent();
        EXPECT_THAT(everythingIn(tools.temporaryFolder), IsEmpty());
    }
}

TEST_F(ConfigInstallerTest, NewContentCountsThoughItsFolderCannotBeSynced) {
    installFirst();
    tools.sync = [](const std::filesystem::path& path) {
        return path.filename() == "Pelloran" ? std::make_error_code(std::errc::io_error) : std::error_code();
    };
    EXPECT_TRUE(installer().install(manifest(u"new"_s), "raw", bundle("new")));
    EXPECT_EQ(config().localHash(), u"new"_s);
    EXPECT_THAT(logged.lines(),
                ElementsAre(u"cannot write "_s + QFileInfo(directory()).path() + u": Input/output error"_s));
}

TEST_F(ConfigInstallerTest, SaysWhatIsInTheWay) {
    write(directory(), "a file");
    const auto installed = installer().install(manifest(u"new"_s), "raw", bundle("new"));
    ASSERT_FALSE(installed);
    EXPECT_TRUE(installed.error().localizedDescription().startsWith(u"cannot make the folder "_s + directory()));
    EXPECT_EQ(read(directory()), "a file");
    EXPECT_FALSE(QFileInfo::exists(tools.temporaryFolder));
}

TEST_F(ConfigInstallerTest, SaysThatNothingCanBeMadeThere) {
    write(files.applicationSupportFolder(), "a file where the folder of all should be");
    const auto installed = installer().install(manifest(u"new"_s), "raw", bundle("new"));
    ASSERT_FALSE(installed);
    EXPECT_TRUE(installed.error().localizedDescription().startsWith(u"cannot make the folder "_s));
}

// Permissions do not bind the administrator: until it goes out of scope, the process is an ordinary user, who owns
// `folder` and all in it.
class AsOrdinaryUser {
public:
    explicit AsOrdinaryUser(const QString& folder) {
        if (isAdministrator) {
            EXPECT_EQ(QProcess::execute(u"chown"_s, {u"-R"_s, QString::number(nobody), folder}), 0);
            EXPECT_EQ(::seteuid(nobody), 0);
        }
    }

    ~AsOrdinaryUser() {
        if (isAdministrator) {
            EXPECT_EQ(::seteuid(0), 0);
        }
    }

    AsOrdinaryUser(const AsOrdinaryUser&) = delete;
    AsOrdinaryUser& operator=(const AsOrdinaryUser&) = delete;

private:
    static constexpr uid_t nobody = 65534;
    const bool isAdministrator = ::geteuid() == 0;
};

TEST_F(ConfigInstallerTest, KeepsItsContentWhereNothingMayBeWritten) {
    installFirst();
    const AsOrdinaryUser user(folder.path());
    const QString parent = QFileInfo(directory()).path();
    QFile::setPermissions(parent, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    const auto installed = installer().install(manifest(u"new"_s), "raw", bundle("new"));
    QFile::setPermissions(parent, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    ASSERT_FALSE(installed);
    EXPECT_EQ(installed.error().localizedDescription(),
              u"cannot lock "_s + directory() + u".lock: no permission or no space"_s);
    expectOldContent();
    EXPECT_THAT(everythingIn(tools.temporaryFolder), IsEmpty());
}

TEST_F(ConfigInstallerTest, ReplacesAFolderThatIsReadOnlyItself) {
    installFirst();
    const AsOrdinaryUser user(folder.path());
    for (const QString& name : {u"/winrates"_s, u""_s}) {
        QFile::setPermissions(directory() + name, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    }
    EXPECT_EQ(installer().install(manifest(u"new"_s), "raw", bundle("new")), ConfigInstaller::Installation::done);
    EXPECT_EQ(config().localHash(), u"new"_s);
    EXPECT_FALSE(QFileInfo::exists(directory() + u".bak"_s));
    EXPECT_THAT(logged.lines(), IsEmpty());
}

// Mounts a small disk that this program and what it starts see, and nobody else: it is gone with the program, however
// that ends. False where only somebody else may do so, or the system has no such thing.
bool mountForUsAlone(const QString& path) {
#ifdef Q_OS_LINUX
    return ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("none", QFile::encodeName(path).constData(), "tmpfs", 0, "size=1m") == 0;
#else
    return false;
#endif
}

// A disk of its own for what is to be filled.
class FullDiskTest : public ConfigInstallerTest {
protected:
    // Of one megabyte.
    void mountAt(const QString& path) {
        ASSERT_TRUE(QDir().mkpath(path));
        if (!mountForUsAlone(path)) {
            GTEST_SKIP() << "only the administrator can mount a small disk";
        }
        mounted = path;
    }

    ~FullDiskTest() override {
#ifdef Q_OS_LINUX
        if (!mounted.isEmpty()) {
            EXPECT_EQ(::umount(QFile::encodeName(mounted).constData()), 0);
        }
#endif
    }

    // Little to download, two megabytes on the disk.
    static QByteArray largeBundle() {
        TarWriter writer;
        writer.add({.name = "winrates/class_winrates.json", .content = "new"});
        writer.add({.name = "zeros", .content = QByteArray(qsizetype{2} * 1024 * 1024, '\0')});
        return writer.gzipped();
    }

    QString mounted;
};

TEST_F(FullDiskTest, KeepsTheOldContentWhereTheNewOneHasNoRoom) {
    mountAt(files.applicationSupportFolder());
    if (IsSkipped()) {
        return;
    }
    installFirst();
    const auto installed = installer().install(manifest(u"new"_s), "raw", largeBundle());
    ASSERT_FALSE(installed);
    const QString message = installed.error().localizedDescription();
    EXPECT_TRUE(message.startsWith(u"cannot write "_s)) << message.toStdString();
    EXPECT_TRUE(message.endsWith(u"No space left on device"_s)) << message.toStdString();
    expectOldContent();
    EXPECT_THAT(everythingIn(tools.temporaryFolder), IsEmpty());
}

TEST_F(FullDiskTest, KeepsTheOldContentWhereTheDownloadHasNoRoom) {
    mountAt(tools.temporaryFolder);
    if (IsSkipped()) {
        return;
    }
    installFirst();
    const auto installed = installer().install(manifest(u"new"_s), "raw", largeBundle());
    ASSERT_FALSE(installed);
    const QString message = installed.error().localizedDescription();
    EXPECT_TRUE(message.startsWith(u"Failed to extract config: "_s)) << message.toStdString();
    expectOldContent();
    EXPECT_THAT(everythingIn(tools.temporaryFolder), IsEmpty());
    EXPECT_EQ(QDir(directory() + u"/.."_s).entryList({u"config.staging-*"_s}, QDir::Dirs).size(), 0);
}

// As on a full disk, no file may grow beyond a size: of this program and of the tar it starts.
TEST_F(ConfigInstallerTest, AFullDiskKeepsTheOldContent) {
    installFirst();
    TarWriter writer;
    writer.add({.name = "zeros", .content = QByteArray(qsizetype{8} * 1024 * 1024, '\0')});
    const QByteArray bytes = writer.gzipped();

    struct Case {
        const char* why;
        rlim_t room;
        QString message; // a part of it
    };

    const Case cases[] = {
        {"no room for the archive", 1000, u"File too large"_s},
        {"no room for what it holds", rlim_t{1024} * 1024, u"Failed to extract config: "_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto installed = [&] {
            const FullDisk full(c.room);
            return installer().install(manifest(u"new"_s), "raw", bytes);
        }();
        ASSERT_FALSE(installed);
        EXPECT_TRUE(installed.error().localizedDescription().contains(c.message))
            << installed.error().localizedDescription().toStdString();
        expectOldContent();
        EXPECT_THAT(everythingIn(tools.temporaryFolder), IsEmpty());
    }
}

TEST_F(ConfigInstallerTest, KeepsItsContentWhileTooFewFilesCanBeOpened) {
    installFirst();
    tools.sync = [](const auto&) { return std::error_code(); }; // takes its time, and is not what this is about
    const QByteArray bytes = bundle("new");                     // by a program of its own
    // Qt says of programs that cannot be started why.
    const auto handler = qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const auto heardAgain = qScopeGuard([handler] { qInstallMessageHandler(handler); });
    int failures = 0;
    std::optional<ConfigSyncError> error;
    for (rlim_t spare = 0; spare < 40; ++spare) {
        SCOPED_TRACE(spare);
        {
            const testing::NoDescriptors few(spare);
            const auto installed = installer().install(manifest(u"new"_s), "raw", bytes);
            if (installed == ConfigInstaller::Installation::done) {
                break;
            }
            error = installed ? std::nullopt : std::optional(installed.error());
        }
        ASSERT_TRUE(error);
        EXPECT_FALSE(error->localizedDescription().isEmpty());
        expectOldContent();
        ++failures;
    }
    EXPECT_GT(failures, 2);
    EXPECT_EQ(config().localHash(), u"new"_s) << "with enough of them it goes on";
    EXPECT_EQ(read(directory() + u"/winrates/class_winrates.json"_s), "new");
}

TEST_F(ConfigInstallerTest, InstallsNothingWhereTheFolderIsAFile) {
    write(directory(), "mine");
    const auto installed = installer().install(manifest(u"new"_s), "raw", bundle("new"));
    ASSERT_FALSE(installed);
    EXPECT_EQ(installed.error().localizedDescription(),
              u"cannot make the folder "_s + directory() + u": Not a directory"_s);
    EXPECT_EQ(read(directory()), "mine");
    EXPECT_THAT(logged.lines(), IsEmpty());
}

TEST_F(ConfigInstallerTest, RemovesOnlyOldDownloadsOfOurs) {
    const auto download = [this](const QString& name, int minutes) {
        const QString path = tools.temporaryFolder + u'/' + name;
        write(path + u"/extract/a"_s, "x");
        const auto time = std::filesystem::file_time_type::clock::now() - std::chrono::minutes(minutes);
        std::filesystem::last_write_time(path.toStdString(), time);
    };
    download(u"pl-config-0F8FAD5B-D9CB-469F-A165-70867728950E"_s, 61);
    download(u"pl-config-1F8FAD5B-D9CB-469F-A165-70867728950E"_s, 50);
    download(u"pl-config-2F8FAD5B-D9CB-469F-A165-70867728950E"_s, -500); // the clock was put back
    download(u"pl-config-backup"_s, 500);
    download(u"other-0F8FAD5B-D9CB-469F-A165-70867728950E"_s, 500);
    installFirst();
    EXPECT_EQ(QDir(tools.temporaryFolder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              (QStringList{u"other-0F8FAD5B-D9CB-469F-A165-70867728950E"_s,
                           u"pl-config-1F8FAD5B-D9CB-469F-A165-70867728950E"_s,
                           u"pl-config-2F8FAD5B-D9CB-469F-A165-70867728950E"_s, u"pl-config-backup"_s}));
}

TEST_F(ConfigInstallerTest, WaitsForAnotherInstallationOnlySoLong) {
    installFirst();
    QLockFile other(directory() + u".lock"_s);
    ASSERT_TRUE(other.lock());
    const auto installed = installer().install(manifest(u"new"_s), "raw", bundle("new"));
    ASSERT_TRUE(installed);
    EXPECT_EQ(*installed, ConfigInstaller::Installation::busy);
    expectOldContent();
    other.unlock();
    EXPECT_EQ(installer().install(manifest(u"new"_s), "raw", bundle("new")), ConfigInstaller::Installation::done);
    EXPECT_EQ(config().localHash(), u"new"_s);
}

TEST_F(ConfigInstallerTest, ALockOfNobodyHoldsForAnHour) {
    installFirst();
    const auto lockOfAge = [this](int minutes) {
        const std::filesystem::path path = (directory() + u".lock"_s).toStdString();
        std::filesystem::last_write_time(path,
                                         std::filesystem::file_time_type::clock::now() - std::chrono::minutes(minutes));
    };
    // As after a loss of power: made, but not written.
    write(directory() + u".lock"_s, "");
    lockOfAge(50);
    EXPECT_EQ(installer().install(manifest(u"new"_s), "raw", bundle("new")), ConfigInstaller::Installation::busy);
    lockOfAge(61);
    EXPECT_EQ(installer().install(manifest(u"new"_s), "raw", bundle("new")), ConfigInstaller::Installation::done);
    EXPECT_EQ(config().localHash(), u"new"_s);
    EXPECT_FALSE(QFileInfo::exists(directory() + u".lock"_s));

    // The clock was put back after it was made.
    write(directory() + u".lock"_s, "");
    lockOfAge(-61);
    EXPECT_EQ(installer().install(manifest(u"newest"_s), "raw", bundle("newest")), ConfigInstaller::Installation::done);

    // One that somebody holds stays, however old it is.
    QLockFile other(directory() + u".lock"_s);
    ASSERT_TRUE(other.lock());
    lockOfAge(500);
    EXPECT_EQ(installer().install(manifest(u"newer"_s), "raw", bundle("newer")), ConfigInstaller::Installation::busy);
}

TEST_F(ConfigInstallerTest, APutAsideContentComesBackThoughTheNextInstallationFails) {
    installFirst();
    ASSERT_TRUE(QDir().rename(directory(), directory() + u".bak"_s));
    EXPECT_FALSE(installer().install(manifest(u"new"_s), "raw", "garbage"));
    expectOldContent();
    EXPECT_FALSE(QFileInfo::exists(directory() + u".bak"_s));
    EXPECT_THAT(logged.lines(),
                ElementsAre(u"an update of the configuration was cut off: the previous files are back in place"_s));
}

TEST_F(ConfigInstallerTest, AnEndingThreadCopiesNoMore) {
    installFirst();
    for (const InstallStep step : {InstallStep::unpacked, InstallStep::madeStaging, InstallStep::wroteManifest}) {
        SCOPED_TRACE(static_cast<int>(step));
        std::promise<void> there;
        tools.after = [&](InstallStep done) {
            if (done == step) {
                there.set_value();
                while (!QThread::currentThread()->isInterruptionRequested()) {
                    QThread::msleep(1);
                }
            }
        };
        std::optional<ConfigSyncError> error;
        auto queue = SerialQueue::create(u"test"_s);
        queue->submit(
            [&] {
                const auto installed = installer().install(manifest(u"new"_s), "raw", bundle("new"));
                if (!installed) {
                    error = installed.error();
                }
            },
            nullptr, [] {});
        there.get_future().wait();
        queue.reset();
        ASSERT_EQ(error, (ConfigSyncError{ConfigSyncError::Platform{u"interrupted"_s}}));
        expectOldContent();
        EXPECT_THAT(everythingIn(tools.temporaryFolder), IsEmpty());
    }
}

TEST_F(ConfigInstallerTest, InstallsNotAgainWhatAnotherProcessInstalledMeanwhile) {
    installFirst();
    EXPECT_EQ(installer().install(manifest(u"old"_s), "raw", "not even looked at"),
              ConfigInstaller::Installation::done);
    expectOldContent();
}

TEST_F(ConfigInstallerTest, PutsABackupBackThatAnInterruptedSwapLeft) {
    installFirst();
    ASSERT_TRUE(QDir().rename(directory(), directory() + u".bak"_s));
    installer().restoreInterruptedSwap();
    expectOldContent();
    EXPECT_FALSE(QFileInfo::exists(directory() + u".bak"_s));
    EXPECT_THAT(logged.lines(),
                ElementsAre(u"an update of the configuration was cut off: the previous files are back in place"_s));
}

TEST_F(ConfigInstallerTest, LeavesABackupAloneBesideAFolder) {
    installFirst();
    write(directory() + u".bak/older"_s, "x");
    installer().restoreInterruptedSwap();
    expectOldContent();
    EXPECT_TRUE(QFileInfo::exists(directory() + u".bak/older"_s));
    EXPECT_THAT(logged.lines(), IsEmpty());
}

TEST_F(ConfigInstallerTest, LeavesABackupToTheInstallationUnderWay) {
    installFirst();
    ASSERT_TRUE(QDir().rename(directory(), directory() + u".bak"_s));
    QLockFile other(directory() + u".lock"_s);
    ASSERT_TRUE(other.lock());
    installer().restoreInterruptedSwap();
    EXPECT_FALSE(QFileInfo::exists(directory()));
}

TEST_F(ConfigInstallerTest, MendsNothingWhereNothingIs) {
    installer().restoreInterruptedSwap();
    EXPECT_THAT(everythingIn(folder.path()), IsEmpty());
    EXPECT_THAT(logged.lines(), IsEmpty());
}

} // namespace

} // namespace pelloran
