#include "recording/RecordingFolder.h"

#include "recording/Format.h"
#include "recording/RecordingReader.h"
#include "tests/support/Printing.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelloran::recording {
namespace {

// As `du` says.
qint64 bytesIn(const QString& folder) {
    constexpr qint64 block = 4096;
    qint64 bytes = block;
    for (QDirIterator files(folder, QDir::AllEntries | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
         files.hasNext();) {
        files.next();
        bytes += files.fileInfo().isDir() ? block : (files.fileInfo().size() + block - 1) / block * block;
    }
    return bytes;
}

class RecordingFolderTest : public ::testing::Test {
protected:
    std::expected<RecordingFolder, FileTree::Error> open(qint64 limit = 1'000'000) const {
        return RecordingFolder::open(path, limit);
    }

    void write(const QString& name, const QByteArray& bytes) const {
        QFile file(path + u'/' + name);
        ASSERT_TRUE(QDir().mkpath(QFileInfo(file).path()));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    QTemporaryDir home;
    const QString path = home.path() + QStringLiteral("/some/recording");
    const QByteArray header = lineOf(PartHeader());
};

TEST_F(RecordingFolderTest, IsMadeForItsOwnerAlone) {
    ASSERT_TRUE(open());
    EXPECT_EQ(QFile::permissions(path) & (QFile::ReadGroup | QFile::ReadOther | QFile::ExeOther), QFile::Permissions());
}

TEST_F(RecordingFolderTest, KeepsWithinItsLimitAndLetsTheOldestGo) {
    constexpr qint64 limit = 200'000;
    auto folder = open(limit);
    ASSERT_TRUE(folder);
    for (int part = 1; part <= 30; ++part) {
        ASSERT_TRUE(folder->beginPart(header, QByteArray(5000, 'c'), QByteArray(100, 'k')));
        folder->partHasBegun();
        for (int i = 0; i < 5; ++i) {
            ASSERT_TRUE(folder->addPicture(i, QByteArray(3000, 'p')));
            ASSERT_TRUE(folder->addLine(QByteArray(900, 'l') + '\n'));
            ASSERT_LE(folder->size(), limit);
            ASSERT_EQ(bytesIn(path), folder->size());
        }
        ASSERT_GT(folder->growth(), 5 * 3900);
        ASSERT_LT(folder->growth(), 40'000) << "data files apart";
    }
    const auto parts = partsOf(path);
    ASSERT_TRUE(parts);
    EXPECT_EQ(parts->back(), 30);
    EXPECT_GE(parts->size(), 3U);
    EXPECT_EQ(parts->front(), 31 - int(parts->size())) << "the latest ones, and none missing between them";
}

TEST_F(RecordingFolderTest, GoesOnWithWhatIsThere) {
    {
        auto folder = open();
        ASSERT_TRUE(folder);
        ASSERT_TRUE(folder->beginPart(header, {}, {}));
        ASSERT_TRUE(folder->addPicture(0, QByteArray(50'000, 'p')));
    }
    auto folder = open(60'000);
    ASSERT_TRUE(folder);
    EXPECT_GE(folder->size(), 50'000);
    ASSERT_TRUE(folder->beginPart(header, {}, {}));
    ASSERT_TRUE(folder->addPicture(0, QByteArray(20'000, 'p')));
    EXPECT_EQ(partsOf(path), std::vector{2}) << "what was there counts, and goes first";
}

TEST_F(RecordingFolderTest, RefusesAFolderOfOtherThings) {
    for (const char* name :
         {"letter.txt", "part-000001", "part-1/events.jsonl", ".hidden", "part-000001/letter.txt",
          "part-000001/events.jsonl/letter.txt", "part-000001/00.png", "part-000001/1.png.bak", "part-000001/.1.png"}) {
        SCOPED_TRACE(name);
        QDir(path).removeRecursively();
        write(QString::fromLatin1(name), "mine");
        const auto folder = open();
        ASSERT_FALSE(folder);
        EXPECT_TRUE(folder.error().description.contains(QStringLiteral("name an empty or a new folder")));
        EXPECT_TRUE(FileTree::exists(path + u'/' + QString::fromLatin1(name)));
    }
    EXPECT_FALSE(RecordingFolder::open(path + QStringLiteral("/part-000001/.1.png"), 1000)) << "a file is no folder";
}

TEST_F(RecordingFolderTest, RefusesLinksToOtherPlaces) {
    const QString other = home.path() + QStringLiteral("/other");
    ASSERT_TRUE(QDir().mkpath(other));
    ASSERT_TRUE(QDir().mkpath(path));
    ASSERT_TRUE(QFile::link(other, path + QStringLiteral("/part-000001")));
    EXPECT_FALSE(open());
    ASSERT_TRUE(QFile::remove(path + QStringLiteral("/part-000001")));
    ASSERT_TRUE(QDir().mkpath(path + QStringLiteral("/part-000001")));
    ASSERT_TRUE(QFile::link(other, path + QStringLiteral("/part-000001/0.png")));
    EXPECT_FALSE(open());
}

TEST_F(RecordingFolderTest, RemovesNothingThatIsNotItsOwn) {
    auto folder = open(60'000);
    ASSERT_TRUE(folder);
    ASSERT_TRUE(folder->beginPart(header, {}, {}));
    ASSERT_TRUE(folder->addPicture(0, QByteArray(20'000, 'p')));
    write(QStringLiteral("part-000001/letter.txt"), "mine"); // meanwhile
    for (int part = 2; part < 6; ++part) {
        ASSERT_TRUE(folder->beginPart(header, {}, {}));
        ASSERT_TRUE(folder->addPicture(0, QByteArray(20'000, 'p')));
    }
    EXPECT_EQ(QDir(path + QStringLiteral("/part-000001")).entryList(QDir::Files),
              QStringList{QStringLiteral("letter.txt")});
    EXPECT_FALSE(FileTree::exists(path + QStringLiteral("/part-000002")));
}

TEST_F(RecordingFolderTest, HoldsOneRecordingAtATime) {
    auto folder = open();
    ASSERT_TRUE(folder);
    const auto second = open();
    ASSERT_FALSE(second);
    EXPECT_EQ(second.error().description, QStringLiteral("another program is recording in %1").arg(path));
    ASSERT_TRUE(folder->beginPart(header, {}, {}));
    folder = std::unexpected(FileTree::Error());
    EXPECT_TRUE(open());
}

TEST_F(RecordingFolderTest, SaysWhyItCannotGoOn) {
    auto folder = open(20'000);
    ASSERT_TRUE(folder);
    ASSERT_TRUE(folder->beginPart(header, {}, {}));
    const auto tooLarge = folder->addPicture(0, QByteArray(30'000, 'p'));
    ASSERT_FALSE(tooLarge);
    EXPECT_EQ(tooLarge.error().description, QStringLiteral("there is no room for a recording within 20000 bytes"));
    QDir(path).removeRecursively();
    const auto gone = folder->addPicture(1, "p");
    ASSERT_FALSE(gone);
    EXPECT_TRUE(gone.error().description.startsWith(QStringLiteral("cannot write")));
    const auto unseen = folder->addLine("{}\n");
    ASSERT_FALSE(unseen) << "the file is open still, and nobody would read it";
    EXPECT_TRUE(unseen.error().description.startsWith(QStringLiteral("somebody has removed")));
    EXPECT_FALSE(folder->beginPart(header, {}, {}));
}

TEST_F(RecordingFolderTest, RemovesNothingForWhatHasNoRoomAnyway) {
    {
        auto folder = open();
        ASSERT_TRUE(folder);
        for (int part = 1; part <= 3; ++part) {
            ASSERT_TRUE(folder->beginPart(header, {}, {}));
            ASSERT_TRUE(folder->addPicture(0, QByteArray(10'000, 'p')));
        }
        EXPECT_FALSE(folder->addPicture(1, QByteArray(1'000'000, 'p')));
        EXPECT_EQ(partsOf(path), (std::vector{1, 2, 3}));
    }
    auto folder = open(20'000);
    ASSERT_TRUE(folder);
    const auto begun = folder->beginPart(header, QByteArray(30'000, 'c'), {});
    ASSERT_FALSE(begun);
    EXPECT_EQ(begun.error().description, QStringLiteral("there is no room for a recording within 20000 bytes"));
    EXPECT_EQ(partsOf(path), (std::vector{1, 2, 3})) << "an earlier recording, and nothing in its place";
}

TEST_F(RecordingFolderTest, HasNoPartBeforeItsEventsAreThere) {
    write(QStringLiteral("part-000003/cards.json"), "{}"); // as far as one came that died then
    EXPECT_FALSE(partsOf(path)) << "nothing to go through";
    auto folder = open();
    ASSERT_TRUE(folder);
    ASSERT_TRUE(folder->beginPart(header, {}, {}));
    EXPECT_EQ(partsOf(path), std::vector{4});
}

} // namespace
} // namespace pelloran::recording
