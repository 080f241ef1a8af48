#include "sync/InstallTools.h"
#include "sync/LocalConfig.h"
#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/support/Printing.h"
#include "tests/support/TarWriter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

// A program of its own installs, and is killed after a step of it.
class InterruptedInstallationTest : public ::testing::TestWithParam<QString> {
protected:
    // Files that tell whether a content is complete: each holds its hash.
    static constexpr int fileCount = 6;

    QString bundleOf(const QString& hash) const {
        testing::TarWriter writer;
        for (int i = 0; i < fileCount; ++i) {
            writer.add({.name = "winrates/" + QByteArray::number(i), .content = hash.toUtf8()});
        }
        const QString path = folder.filePath(hash + u".tar.gz"_s);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(writer.gzipped());
        return path;
    }

    // Whether it lived.
    static bool run(const QStringList& arguments) {
        QProcess process;
        process.start(QStringLiteral(INSTALL_AND_DIE), arguments);
        EXPECT_TRUE(process.waitForFinished(60'000));
        if (process.exitStatus() == QProcess::CrashExit) {
            EXPECT_EQ(process.exitCode(), SIGKILL);
            return false;
        }
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
        return true;
    }

    QStringList installing(const QString& hash, int step) const {
        return {folder.path(), hash, bundleOf(hash), GetParam(), QString::number(step)};
    }

    // The hash of a content that is all there.
    QString completeContent() const {
        const testing::FakeApplicationFiles files(folder.path());
        const LocalConfig config(files);
        const QString hash = config.localHash().value_or(u"none"_s);
        EXPECT_TRUE(QFileInfo(config.configDirectory() + u"/manifest.json"_s).isFile());
        for (int i = 0; i < fileCount; ++i) {
            QFile file(config.configDirectory() + u"/winrates/"_s + QString::number(i));
            EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << i;
            EXPECT_EQ(QString::fromUtf8(file.readAll()), hash) << i;
        }
        return hash;
    }

    QTemporaryDir folder;
};

TEST_P(InterruptedInstallationTest, LeavesOldOrNewContentComplete) {
    int deaths = 0;
    for (int step = 0; step <= static_cast<int>(InstallStep::removedBackup); ++step) {
        SCOPED_TRACE(step);
        ASSERT_TRUE(run(installing(u"old"_s, -1)));
        ASSERT_EQ(completeContent(), u"old"_s);
        const bool lived = run(installing(u"new"_s, step));
        deaths += !lived;
        ASSERT_TRUE(run({folder.path()})); // the next start
        const QString content = completeContent();
        const bool inPlace = lived || step >= static_cast<int>(InstallStep::movedStagingToConfig) ||
                             step == static_cast<int>(InstallStep::exchanged);
        EXPECT_EQ(content, inPlace ? u"new"_s : u"old"_s);
        // And nothing that was left behind stands in the way of the next one.
        ASSERT_TRUE(run(installing(u"newer"_s, -1)));
        EXPECT_EQ(completeContent(), u"newer"_s);
    }
    // All steps but those of the other way to swap.
    const int steps = static_cast<int>(InstallStep::removedBackup) + 1;
    EXPECT_EQ(deaths, GetParam() == u"moves"_s ? steps - 1 : steps - 2);
}

// The user's own files, which no sync has brought.
TEST_P(InterruptedInstallationTest, LosesNobodysOwnFiles) {
    const testing::FakeApplicationFiles files(folder.path());
    const QString config = LocalConfig(files).configDirectory();
    const QString parent = QFileInfo(config).path();
    const QString name = u"/winrates/class_winrates.json"_s;
    const auto isMine = [&](const QString& inFolder) {
        QFile file(inFolder + name);
        return file.open(QIODevice::ReadOnly) && file.readAll() == "mine";
    };
    int deaths = 0;
    for (int step = 0; step <= static_cast<int>(InstallStep::keptOwnFiles); ++step) {
        SCOPED_TRACE(step);
        ASSERT_TRUE(QDir(parent).removeRecursively());
        ASSERT_TRUE(QDir().mkpath(config + u"/winrates"_s));
        QFile mine(config + name);
        ASSERT_TRUE(mine.open(QIODevice::WriteOnly));
        mine.write("mine");
        mine.close();
        const bool lived = run(installing(u"new"_s, step));
        deaths += !lived;
        ASSERT_TRUE(run({folder.path()})); // the next start
        if (!isMine(config)) {
            EXPECT_EQ(completeContent(), u"new"_s);
            EXPECT_TRUE(isMine(config + u".bak"_s) || isMine(parent + u"/winrates-before-sync"_s));
        }
        ASSERT_TRUE(run(installing(u"newer"_s, -1)));
        EXPECT_EQ(completeContent(), u"newer"_s);
        EXPECT_TRUE(isMine(parent + u"/winrates-before-sync"_s));
        EXPECT_EQ(QDir(parent).entryList({u"winrates-*"_s, u"*.bak"_s}, QDir::AllEntries).size(), 1);
    }
    // All steps but those of other ways to swap.
    const int steps = static_cast<int>(InstallStep::keptOwnFiles) + 1;
    EXPECT_EQ(deaths, GetParam() == u"moves"_s ? steps - 2 : steps - 3);
}

TEST_P(InterruptedInstallationTest, SeveralAtOnceLeaveTheContentOfOneOfThem) {
    std::vector<std::unique_ptr<QProcess>> processes;
    for (int i = 0; i < 6; ++i) {
        processes.push_back(std::make_unique<QProcess>());
        processes.back()->start(QStringLiteral(INSTALL_AND_DIE), installing(u"content%1"_s.arg(i), -1));
    }
    for (const auto& process : processes) {
        ASSERT_TRUE(process->waitForFinished(60'000));
        EXPECT_EQ(process->exitCode(), 0) << process->readAllStandardError().toStdString();
    }
    EXPECT_TRUE(completeContent().startsWith(u"content"_s));
    EXPECT_TRUE(QDir(folder.filePath(u"temporary"_s)).isEmpty());
    EXPECT_EQ(QDir(folder.filePath(u"support/Pelloran"_s)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList{u"config"_s});
}

INSTANTIATE_TEST_SUITE_P(Swap, InterruptedInstallationTest, ::testing::Values(u"exchange"_s, u"moves"_s),
                         [](const auto& run) { return run.param.toStdString(); });

} // namespace

} // namespace pelloran
