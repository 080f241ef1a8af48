#include "draft/logs/LogFile.h"

#include "tests/support/Printing.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <random>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

class LogFile : public ::testing::Test {
protected:
    void append(const QByteArray& bytes) const {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::Append));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    void write(const QByteArray& bytes) const {
        QFile::remove(path);
        append(bytes);
    }

    // Reads without waiting; `pause` may write more.
    std::expected<QByteArray, LogFileError> read(const std::function<void()>& pause = {}) {
        pauses = 0;
        return readLogFile(path, [&] {
            ++pauses;
            if (pause) {
                pause();
            }
        });
    }

    QTemporaryDir folder;
    QString path = folder.filePath(u"Arena.log"_s);
    int pauses = 0;
};

} // namespace

TEST_F(LogFile, IsReadWholeWhenItIsText) {
    for (const QByteArray& text : {QByteArray(), QByteArray("a\nb"), QByteArray("火球术"), QByteArray("\xEF\xBB\xBFx"),
                                   QByteArray("a\0b", 3), QByteArray("x\n").repeated(1'000'000)}) {
        write(text);
        EXPECT_EQ(read(), text);
        EXPECT_EQ(pauses, 0);
    }
}

TEST_F(LogFile, IsUnreadableWhenThereIsNoRegularFile) {
    EXPECT_EQ(read(), std::unexpected(LogFileError::unreadable)) << "missing";
    ASSERT_TRUE(QDir().mkdir(path));
    EXPECT_EQ(read(), std::unexpected(LogFileError::unreadable)) << "a folder";
    ASSERT_TRUE(QDir().rmdir(path));
    ASSERT_TRUE(QFile::link(u"/dev/zero"_s, path));
    EXPECT_EQ(read(), std::unexpected(LogFileError::unreadable)) << "a device, which has no end";
}

TEST_F(LogFile, IsNotWaitedForWhenItIsAPipe) {
    // A program of its own, since the standard library makes none.
    ASSERT_EQ(std::system(("mkfifo '" + path.toStdString() + "'").c_str()), 0);
    EXPECT_EQ(read(), std::unexpected(LogFileError::unreadable));
}

TEST_F(LogFile, IsUnreadableWithoutPermission) {
    if (geteuid() == 0) {
        GTEST_SKIP() << "the superuser may read everything";
    }
    write("text");
    QFile::setPermissions(path, {});
    EXPECT_EQ(read(), std::unexpected(LogFileError::unreadable));
}

TEST_F(LogFile, IsRefusedUnreadWhenItIsTooLarge) {
    write({});
    std::filesystem::resize_file(path.toStdString(), largestLogFile + 1);
    EXPECT_EQ(read(), std::unexpected(LogFileError::tooLarge));
    std::filesystem::resize_file(path.toStdString(), 1LL << 30);
    EXPECT_EQ(read(), std::unexpected(LogFileError::tooLarge));
}

TEST_F(LogFile, IsNoTextWithBytesThatNoCharacterHas) {
    const struct {
        const char* why;
        QByteArray bytes;
    } rows[] = {
        {"a byte that never occurs", "a\xFFz"},
        {"it ends the file", "a\xFF"},
        {"a stray continuation", "a\x80"},
        {"a cut-off character within the text", "a\xE7\x81z"},
        {"two cut-off characters at the end", "a\xE7\x81\xE7\x81"},
        {"an overlong form", "a\xC0\xAF"},
        {"the beginning of an overlong form", "a\xE0\x80"},
        {"the beginning of half a surrogate pair", "a\xED\xA0"},
        {"the beginning of a character beyond the last", "a\xF4\x90"},
        {"too many continuations", "a\xE7\x81\xAB\x80"},
        {"text broken early, cut at the end", "\xFF a\xE7\x81"},
        {"UTF-16", QByteArray("\xFF\xFE"
                              "a\0b\0",
                              6)},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        write(row.bytes);
        EXPECT_EQ(read(), std::unexpected(LogFileError::notText));
        EXPECT_EQ(pauses, 0) << "there is nothing to wait for";
    }
}

TEST_F(LogFile, IsReadOnWhenItsLastCharacterIsBeingWritten) {
    for (const char* const character : {"é", "火", "😀", "\u0800", "\ud7ff", "\uffff", "\U0010ffff"}) {
        const QByteArray whole = QByteArray("D 21:40:50 Client chooses: ") + character;
        for (qsizetype missing = 1; missing < qsizetype(qstrlen(character)); ++missing) {
            SCOPED_TRACE(character);
            write(whole.chopped(missing));
            EXPECT_EQ(read([&] { append(whole.last(missing) + " (X)\n"); }), whole + " (X)\n");
            EXPECT_EQ(pauses, 1);
        }
    }
}

TEST_F(LogFile, IsReadOnByteByByte) {
    const QByteArray more = QByteArray("火球术").sliced(2);
    qsizetype written = 0;
    write("火\xE7");
    EXPECT_EQ(read([&] { append(QByteArray("\x81\xAB", 2).sliced(written++, 1)); }), "火火");
    EXPECT_EQ(pauses, 2);

    // A writer that stops within another character each time, until the last look.
    write(QByteArray("火").first(1));
    written = 0;
    const QByteArray pieces[] = {"\x81\xAB\xE7", "\x90", "\x83\xE6\x9C", "\xAF"};
    EXPECT_EQ(read([&] { append(pieces[written++]); }), "火球术");
    EXPECT_EQ(pauses, 4);
}

TEST_F(LogFile, IsNoTextWhenTheCharacterStaysCutOff) {
    write("火\xE7\x81");
    EXPECT_EQ(read(), std::unexpected(LogFileError::notText));
    EXPECT_EQ(pauses, 4);
}

TEST_F(LogFile, IsNoTextWhenWhatFollowsDoesNotFit) {
    write("火\xE7\x81");
    EXPECT_EQ(read([&] { append("z"); }), std::unexpected(LogFileError::notText));
    EXPECT_EQ(pauses, 1);
}

TEST_F(LogFile, MayBeTruncatedMeanwhile) {
    write("火\xE7\x81");
    EXPECT_EQ(read([&] { QFile::resize(path, 0); }), std::unexpected(LogFileError::notText));
}

TEST_F(LogFile, IsTextWheneverQtSaysSo) {
    std::mt19937 random(8);
    const QByteArray pieces[] = {"a",    "é",    "火",   "😀",   "\x80", "\xBF", "\xC2",
                                 "\xE0", "\xE7", "\xED", "\xF0", "\xF4", "\xFF"};
    for (int round = 0; round < 3'000; ++round) {
        QByteArray bytes;
        for (auto left = random() % 6; left > 0; --left) {
            bytes += pieces[random() % std::size(pieces)];
        }
        write(bytes);
        const auto text = read();
        ASSERT_EQ(text.has_value(), bytes.isValidUtf8()) << bytes.toHex().toStdString();
        // Some further bytes make it text exactly when it was worth waiting for.
        bool couldBecomeText = false;
        for (const char* rest : {"\x80", "\xBF", "\x80\x80", "\xBF\xBF", "\x80\x80\x80", "\xBF\xBF\xBF"}) {
            couldBecomeText = couldBecomeText || (bytes + rest).isValidUtf8();
        }
        ASSERT_EQ(pauses > 0, !text && couldBecomeText) << bytes.toHex().toStdString();
    }
}

} // namespace pelloran
