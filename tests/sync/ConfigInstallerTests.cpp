#include "sync/ConfigInstaller.h"

#include "base/SerialQueue.h"
#include "sync/InstallTools.h"
#include "tests/sync/ConfigInstallerTest.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QThread>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <future>
#include <optional>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

using testing::ConfigInstallerTest;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TarWriter;

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

TEST_F(ConfigInstallerTest, SaysThatNothingCanBeMadeThere) {
    write(files.applicationSupportFolder(), "a file where the folder of all should be");
    const auto installed = installer().install(manifest(u"new"_s), "raw", bundle("new"));
    ASSERT_FALSE(installed);
    EXPECT_TRUE(installed.error().localizedDescription().startsWith(u"cannot make the folder "_s));
}

TEST_F(ConfigInstallerTest, InstallsNothingWhereTheFolderIsAFile) {
    write(directory(), "mine");
    const auto installed = installer().install(manifest(u"new"_s), "raw", bundle("new"));
    ASSERT_FALSE(installed);
    EXPECT_EQ(installed.error().localizedDescription(),
              u"cannot make the folder "_s + directory() + u": Not a directory"_s);
    EXPECT_EQ(read(directory()), "mine");
    EXPECT_FALSE(QFileInfo::exists(tools.temporaryFolder)) << "it was not even downloaded";
    EXPECT_THAT(logged.lines(), IsEmpty());
}

TEST_F(ConfigInstallerTest, RemovesOnlyOldDownloadsOfOurs) {
    const auto download = [this](const QString& name, int minutes) {
        const QString path = tools.temporaryFolder + u'/' + name;
        write(path + u"/extract/a"_s, "x");
        setAge(path, minutes);
    };
    download(u"pl-config-0F8FAD5B-D9CB-469F-A165-70867728950E"_s, 61);
    download(u"pl-config-1F8FAD5B-D9CB-469F-A165-70867728950E"_s, 50);
    download(u"pl-config-2F8FAD5B-D9CB-469F-A165-70867728950E"_s, -500); // the clock was put back
    download(u"pl-config-backup"_s, 500);
    download(u"other-0F8FAD5B-D9CB-469F-A165-70867728950E"_s, 500);
    // Of somebody who can write into the folder for temporary files.
    const QString elsewhere = folder.filePath(u"elsewhere"_s);
    write(elsewhere + u"/extract/a"_s, "x");
    setAge(elsewhere, 500);
    ASSERT_TRUE(QFile::link(elsewhere, tools.temporaryFolder + u"/pl-config-3F8FAD5B-D9CB-469F-A165-70867728950E"_s));
    installFirst();
    EXPECT_EQ(read(elsewhere + u"/extract/a"_s), "x");
    EXPECT_EQ(QDir(tools.temporaryFolder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              (QStringList{u"other-0F8FAD5B-D9CB-469F-A165-70867728950E"_s,
                           u"pl-config-1F8FAD5B-D9CB-469F-A165-70867728950E"_s,
                           u"pl-config-2F8FAD5B-D9CB-469F-A165-70867728950E"_s,
                           u"pl-config-3F8FAD5B-D9CB-469F-A165-70867728950E"_s, u"pl-config-backup"_s}));
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
