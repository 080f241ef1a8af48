#include "sync/TarArchive.h"

#include "base/SerialQueue.h"
#include "sync/TarListing.h"
#include "tests/support/Printing.h"
#include "tests/support/TarWriter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <limits>
#include <vector>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

using testing::TarWriter;

class TarArchiveTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(QDir().mkpath(unpacked)); }

    // Path of an archive of these bytes.
    QString write(const QByteArray& bytes) const {
        const QString path = folder.filePath(u"a.tar.gz"_s);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        return path;
    }

    QString write(const TarWriter& writer) const { return write(writer.gzipped()); }

    // Empty where it succeeded.
    static QString messageOf(const std::expected<void, ConfigSyncError>& done) {
        if (done) {
            return {};
        }
        const auto* error = std::get_if<ConfigSyncError::ExtractFailed>(&done.error().reason);
        return error ? error->message : u"another error: "_s + done.error().localizedDescription();
    }

    bool nothingUnpacked() const {
        return QDir(unpacked).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    QTemporaryDir folder;
    QString unpacked = folder.filePath(u"unpacked"_s);
};

TEST_F(TarArchiveTest, AcceptsWhatAnHonestTarMakes) {
    struct Case {
        const char* why;
        std::vector<TarWriter::Entry> entries;
    };

    const Case cases[] = {
        {"nothing at all", {}},
        {"a file", {{.name = "a.json", .content = "{}"}}},
        {"a folder's own entry",
         {{.name = "winrates/", .kind = '5', .mode = 0755}, {.name = "winrates/a", .content = "x"}}},
        {"made with \"tar -C folder .\"", {{.name = "./", .kind = '5', .mode = 0755}, {.name = "./a", .content = "x"}}},
        {"hidden", {{.name = ".hidden", .content = "x"}}},
        {"dots within a name", {{.name = "a..b", .content = "x"}, {.name = "...", .content = "x"}}},
        {"spaces, a line break, an arrow, Chinese",
         {{.name = "a b", .content = "x"},
          {.name = "c\nd", .content = "x"},
          {.name = "e -> f", .content = "x"},
          {.name = "胜率.json", .content = "x"}}},
        {"a backslash", {{.name = "a\\n", .content = "x"}}},
        {"an owner with spaces", {{.name = "a", .content = "x", .owner = "John Doe"}}},
        {"the same name twice", {{.name = "a", .content = "x"}, {.name = "a", .content = "y"}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        TarWriter writer;
        for (const TarWriter::Entry& entry : c.entries) {
            writer.add(entry);
        }
        EXPECT_EQ(messageOf(TarArchive::check(write(writer))), u""_s);
    }
}

TEST_F(TarArchiveTest, RefusesWhatMustNotBeUnpacked) {
    struct Case {
        const char* why;
        TarWriter::Entry entry;
        QString message;
    };

    const Case cases[] = {
        {"absolute", {.name = "/tmp/x", .content = "x"}, u"\"/tmp/x\" in the archive leads out of its folder"_s},
        {"upward", {.name = "../x", .content = "x"}, u"\"../x\" in the archive leads out of its folder"_s},
        {"upward on the way",
         {.name = "a/../../x", .content = "x"},
         u"\"a/../../x\" in the archive leads out of its folder"_s},
        {"upward at the end", {.name = "a/..", .kind = '5'}, u"\"a/..\" in the archive leads out of its folder"_s},
        {"a symbolic link",
         {.name = "l", .kind = '2', .linkTarget = "/etc/passwd"},
         u"\"l\" in the archive is neither a file nor a folder"_s},
        {"a hard link",
         {.name = "l", .kind = '1', .linkTarget = "/etc/passwd"},
         u"\"l\" in the archive is neither a file nor a folder"_s},
        {"a link that names itself its target",
         {.name = "l", .kind = '2', .linkTarget = "x l"},
         u"\"l\" in the archive is neither a file nor a folder"_s},
        {"a device", {.name = "d", .kind = '3'}, u"\"d\" in the archive is neither a file nor a folder"_s},
        {"a block device", {.name = "d", .kind = '4'}, u"\"d\" in the archive is neither a file nor a folder"_s},
        {"a pipe", {.name = "p", .kind = '6'}, u"\"p\" in the archive is neither a file nor a folder"_s},
        {"an owner that pretends to be a whole line",
         {.name = "../x", .content = "x", .owner = "a 1 2026-01-31 10:00 y"},
         u"\"../x\" in the archive leads out of its folder"_s},
        {"more than we want on the disk",
         {.name = "zeros", .kind = 'S', .hole = TarListing::maximumUnpackedBytes + 1},
         u"the archive unpacks to more than 512 MiB"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        TarWriter writer;
        writer.add({.name = "honest", .content = "x"});
        writer.add(c.entry);
        EXPECT_EQ(messageOf(TarArchive::check(write(writer))), c.message);
    }
}

TEST_F(TarArchiveTest, RefusesABombBeforeItGoesOff) {
    // Sixty files of ten megabytes, some hundred kilobytes in all.
    TarWriter writer;
    writer.add({.name = "zeros", .content = QByteArray(qsizetype{10} * 1024 * 1024, '\0')});
    const QByteArray bomb = writer.gzippedTimes(60);
    EXPECT_LT(bomb.size(), 10 * 1024 * 1024);
    EXPECT_EQ(messageOf(TarArchive::check(write(bomb))), u"the archive unpacks to more than 512 MiB"_s);
    EXPECT_TRUE(nothingUnpacked());
}

TEST_F(TarArchiveTest, AnOwnersNameDoesNotHideASize) {
    // A file of one large hole; the date is one that tar writes as a single number.
    struct Case {
        const char* why;
        QByteArray owner;
        qint64 time;
    };

    const Case cases[] = {
        {"a size for whoever counts words from the end", "a 1 b", std::numeric_limits<qint64>::max() / 2},
        {"a size for whoever counts words from the front", "a/b 1", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        TarWriter writer;
        writer.add({.name = "zeros",
                    .kind = 'S',
                    .owner = c.owner,
                    .time = c.time,
                    .hole = TarListing::maximumUnpackedBytes + 1});
        EXPECT_EQ(messageOf(TarArchive::check(write(writer))), u"the archive unpacks to more than 512 MiB"_s);
    }
}

TEST_F(TarArchiveTest, CountsEntries) {
    TarWriter most;
    for (int i = 0; i < TarListing::maximumEntries; ++i) {
        most.add({.name = "f" + QByteArray::number(i)});
    }
    EXPECT_EQ(messageOf(TarArchive::check(write(most))), u""_s);
    most.add({.name = "one more"});
    EXPECT_EQ(messageOf(TarArchive::check(write(most))), u"the archive holds more than 10000 entries"_s);
    TarWriter deep; // some kilobytes that would become half a million folders
    for (int i = 0; i < 1'000; ++i) {
        const QByteArray name = QByteArray::number(i) + QByteArray("/a").repeated(490);
        deep.add({.name = "././@LongLink", .content = name + '\0', .kind = 'L'}); // how GNU's tar writes a long name
        deep.add({.name = name.first(99)});
    }
    EXPECT_EQ(messageOf(TarArchive::check(write(deep))), u"the archive holds more than 10000 entries"_s);
}

TEST_F(TarArchiveTest, PassesOnWhatTarSays) {
    TarWriter whole;
    QByteArray noise;
    for (unsigned i = 0; i < 100'000; ++i) {
        noise += static_cast<char>(i * i % 251);
    }
    whole.add({.name = "a", .content = noise});
    const QByteArray bytes = whole.gzipped();

    struct Case {
        const char* why;
        QByteArray bytes;
        QString part;
    };

    const Case cases[] = {
        {"not packed at all", "garbage", u"not in gzip format"_s},
        {"empty", "", u"unexpected end of file"_s},
        {"cut off", bytes.first(bytes.size() / 2), u"unexpected end of file"_s},
        {"packed, but no archive", TarWriter::gzip(noise), u"does not look like a tar archive"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const QString path = write(c.bytes);
        for (const auto& done : {TarArchive::check(path), TarArchive::extract(path, unpacked)}) {
            const QString message = messageOf(done);
            EXPECT_TRUE(message.contains(c.part, Qt::CaseInsensitive)) << message.toStdString();
            EXPECT_TRUE(message.endsWith(u'\n')) << "trimmed";
        }
    }
}

// An archive that nobody writes: whoever reads it waits.
class HangingTarTest : public TarArchiveTest {
protected:
    HangingTarTest() { EXPECT_EQ(::mkfifo(QFile::encodeName(archive).constData(), 0600), 0); }

    // Lets go of what is still reading.
    ~HangingTarTest() override { ::close(::open(QFile::encodeName(archive).constData(), O_RDWR | O_NONBLOCK)); }

    QString archive = folder.filePath(u"a.tar.gz"_s);
};

TEST_F(HangingTarTest, IsEndedAfterAWhile) {
    constexpr std::chrono::milliseconds patience(200);
    EXPECT_EQ(messageOf(TarArchive::check(archive, patience)), u"tar did not end within 200 ms"_s);
    EXPECT_EQ(messageOf(TarArchive::extract(archive, unpacked, patience)), u"tar did not end within 200 ms"_s);
}

TEST_F(HangingTarTest, IsEndedWithItsThread) {
    std::promise<void> begun;
    QString message;
    auto queue = SerialQueue::create(u"test"_s);
    queue->submit(
        [&] {
            begun.set_value();
            message = messageOf(TarArchive::check(archive));
        },
        nullptr, [] {});
    begun.get_future().wait();
    queue.reset();
    EXPECT_EQ(message, u"interrupted"_s);
}

TEST_F(TarArchiveTest, DoesNotTakeOptionsFromTheEnvironment) {
    TarWriter writer;
    writer.add({.name = "a", .content = "x"});
    const QString path = write(writer);
    qputenv("TAR_OPTIONS", "--exclude=a");
    const auto done = TarArchive::extract(path, unpacked);
    qunsetenv("TAR_OPTIONS");
    EXPECT_TRUE(done);
    EXPECT_TRUE(QFileInfo::exists(unpacked + u"/a"_s));
}

TEST_F(TarArchiveTest, LooksAgainAtWhatWasUnpacked) {
    struct Case {
        const char* why;
        std::function<void(const std::filesystem::path&)> make;
        QString message;
    };

    const Case cases[] = {
        {"a file and a folder", [](const auto& at) { std::filesystem::create_directory(at); }, u""_s},
        {"a link", [](const auto& at) { std::filesystem::create_symlink("/etc/passwd", at); },
         u"\"x\" in the archive is neither a file nor a folder"_s},
        {"a link to a folder", [](const auto& at) { std::filesystem::create_directory_symlink("/", at); },
         u"\"x\" in the archive is neither a file nor a folder"_s},
        {"too much",
         [](const auto& at) {
             std::filesystem::create_directory(at);
             QFile file(at / "big");
             ASSERT_TRUE(file.open(QIODevice::WriteOnly));
             ASSERT_TRUE(file.resize(TarListing::maximumUnpackedBytes + 1)); // of holes: takes no space
         },
         u"the archive unpacks to more than 512 MiB"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const std::filesystem::path at = (unpacked + u"/x"_s).toStdString();
        c.make(at);
        EXPECT_EQ(messageOf(TarArchive::checkUnpacked(unpacked)), c.message);
        std::filesystem::remove_all(at);
    }
}

TEST_F(TarArchiveTest, MakesEverythingReadable) {
    TarWriter writer;
    writer.add({.name = "./", .kind = '5', .mode = 0});
    writer.add({.name = "./closed/", .kind = '5', .mode = 0});
    writer.add({.name = "./closed/a", .content = "x", .mode = 0});
    ASSERT_TRUE(TarArchive::extract(write(writer), unpacked));
    ASSERT_EQ(messageOf(TarArchive::checkUnpacked(unpacked)), u""_s);
    EXPECT_TRUE(QFile::permissions(unpacked + u"/closed/a"_s) & QFileDevice::ReadOwner);
    EXPECT_TRUE(QFile::permissions(unpacked + u"/closed"_s) & QFileDevice::WriteOwner);
    EXPECT_TRUE(QFile::permissions(unpacked) & QFileDevice::WriteOwner);
}

} // namespace

} // namespace pelloran
