#include "tests/support/FullDisk.h"
#include "tests/support/NoDescriptors.h"
#include "tests/sync/ConfigInstallerTest.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QScopeGuard>

#include <gmock/gmock.h>
#ifdef Q_OS_LINUX
#include <sched.h>
#include <sys/mount.h>
#endif
#include <sys/resource.h>
#include <unistd.h>

#include <optional>
#include <system_error>

using namespace Qt::StringLiterals;

// Installing where the disk, or what this process may do, sets limits.
namespace pelloran {

namespace {

using testing::ConfigInstallerTest;
using ::testing::IsEmpty;
using testing::TarWriter;

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

// The folder is closed while somebody's own files are to get a name in it.
TEST_F(ConfigInstallerTest, KeepsOnesOwnFilesWhereItCannotBeToldWhichNamesAreTaken) {
    const QString mine = directory() + u"/winrates/class_winrates.json"_s;
    write(mine, "mine");
    tools.sync = [](const auto&) { return std::error_code(); }; // takes its time, and is not what this is about
    const QString parent = QFileInfo(directory()).path();
    const AsOrdinaryUser user(folder.path());
    const auto allow = [&](QFileDevice::Permissions entering) {
        EXPECT_TRUE(QFile::setPermissions(parent, QFileDevice::ReadOwner | QFileDevice::WriteOwner | entering));
    };
    tools.after = [&](InstallStep step) {
        if (step == InstallStep::exchanged || step == InstallStep::movedStagingToConfig) {
            allow({});
        }
    };
    tools.move = [&](const auto& from, const auto& to) {
        allow(QFileDevice::ExeOwner); // open again before anything is put back
        return InstallTools::rename(from, to);
    };
    const auto installed = installer().install(manifest(u"new"_s), "raw", bundle("new"));
    ASSERT_FALSE(installed) << "or it looks for a name without end";
    EXPECT_EQ(installed.error().localizedDescription(),
              u"cannot keep your own win-rate files in "_s + parent + u"/winrates-before-sync: Permission denied"_s);
    EXPECT_EQ(everythingIn(directory()), (QStringList{u"winrates"_s, u"winrates/class_winrates.json"_s}));
    EXPECT_EQ(read(mine), "mine");
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

// What it left when the disk got full would keep it full.
TEST_F(FullDiskTest, MakesRoomForTheLock) {
    mountAt(files.applicationSupportFolder());
    if (IsSkipped()) {
        return;
    }
    installFirst();
    const QString left = staging(u"0F8FAD5B-D9CB-469F-A165-70867728950E"_s);
    write(left + u"/small"_s, "x");
    QFile large(left + u"/large"_s);
    ASSERT_TRUE(large.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (large.write(QByteArray(4096, 'x')) > 0) {
    }
    large.close();
    const auto install = [this] { return installer().install(manifest(u"new"_s), "raw", bundle("new")); };
    const auto full = install();
    ASSERT_FALSE(full);
    EXPECT_EQ(full.error().localizedDescription(),
              u"cannot lock "_s + directory() + u".lock: no permission or no space"_s);
    expectOldContent();
    setAge(left, 61);
    EXPECT_EQ(install(), ConfigInstaller::Installation::done);
    EXPECT_EQ(config().localHash(), u"new"_s);
    EXPECT_THAT(logged.lines(), IsEmpty());
}

// Without the lock, what is younger may be another process's that is at it.
TEST_F(ConfigInstallerTest, WithoutRoomForTheLockRemovesWhatIsOldAndNobodys) {
    installFirst();
    const QString old = u"0F8FAD5B-D9CB-469F-A165-70867728950E"_s;
    const QString young = u"1F8FAD5B-D9CB-469F-A165-70867728950E"_s;
    const auto leave = [](const QString& path, int minutes) {
        write(path + u"/a"_s, "x");
        setAge(path, minutes);
    };
    leave(staging(old), 61);
    leave(staging(young), 50);
    leave(staging(u"of-somebody"_s), 500);
    leave(tools.temporaryFolder + u"/pl-config-"_s + old, 61);
    {
        const FullDisk full;
        EXPECT_FALSE(installer().install(manifest(u"new"_s), "raw", bundle("new")));
    }
    expectOldContent();
    EXPECT_EQ(QDir(directory() + u"/.."_s).entryList({u"config.staging-*"_s}, QDir::Dirs),
              (QStringList{u"config.staging-"_s + young, u"config.staging-of-somebody"_s}));
    EXPECT_THAT(everythingIn(tools.temporaryFolder), IsEmpty());
    EXPECT_EQ(installer().install(manifest(u"new"_s), "raw", bundle("new")), ConfigInstaller::Installation::done);
    EXPECT_EQ(QDir(directory() + u"/.."_s).entryList({u"config.staging-*"_s}, QDir::Dirs),
              QStringList{u"config.staging-of-somebody"_s})
        << "with the lock held all are nobody's";
}

// Before anything is made in the folder for temporary files.
TEST_F(ConfigInstallerTest, MakesRoomForADownload) {
    installFirst();
    const QString abandoned = tools.temporaryFolder + u"/pl-config-0F8FAD5B-D9CB-469F-A165-70867728950E"_s;
    write(abandoned + u"/a"_s, "x");
    setAge(abandoned, 61);
    tools.after = [&](InstallStep step) {
        if (step == InstallStep::madeConfigFolder) {
            EXPECT_FALSE(QFileInfo::exists(abandoned));
        }
    };
    EXPECT_EQ(installer().install(manifest(u"new"_s), "raw", bundle("new")), ConfigInstaller::Installation::done);
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

} // namespace

} // namespace pelloran
