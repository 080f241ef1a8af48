#include "platform/posix/LineWriter.h"

#include "tests/support/CollectedLog.h"
#include "tests/support/Printing.h"

#include <QTest>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace pelloran {
namespace {

class LineWriterTest : public ::testing::Test {
protected:
    LineWriterTest() {
        std::signal(SIGPIPE, SIG_IGN);
        EXPECT_EQ(::pipe(ends.data()), 0);
    }

    ~LineWriterTest() override {
        closeReader();
        ::close(ends[1]);
    }

    void closeReader() {
        if (ends[0] >= 0) {
            ::close(ends[0]);
            ends[0] = -1;
        }
    }

    QByteArray read(qsizetype most) const {
        QByteArray bytes(most, '\0');
        const ssize_t got = ::read(ends[0], bytes.data(), static_cast<std::size_t>(most));
        bytes.truncate(std::max<ssize_t>(got, 0));
        return bytes;
    }

    std::array<int, 2> ends{-1, -1};
};

TEST_F(LineWriterTest, WritesEachLineAtOnce) {
    LineWriter writer(ends[1]);
    writer.write("one\n");
    EXPECT_EQ(read(100), "one\n");
    writer.write("two\n");
    EXPECT_EQ(read(100), "two\n");
}

TEST_F(LineWriterTest, NeverWaitsForASlowReaderAndLosesNothing) {
    LineWriter writer(ends[1]);
    QByteArray written;
    for (int i = 0; i < 40; ++i) {
        const QByteArray line = QByteArray(10'000, static_cast<char>('a' + i % 26)) + '\n'; // a pipe holds 64 KiB
        writer.write(line);
        written += line;
    }
    QByteArray got;
    EXPECT_TRUE(QTest::qWaitFor([&] {
        got += read(5000);
        return got.size() >= written.size();
    }));
    EXPECT_EQ(got, written);
}

TEST_F(LineWriterTest, LeavesOutWholeLinesForAStalledReader) {
    const testing::CollectedLog told;
    LineWriter writer(ends[1]);
    const QByteArray line = QByteArray(1024 * 1024 - 1, 'x') + '\n';
    const auto readAll = [&](qsizetype lines) {
        QByteArray got;
        EXPECT_TRUE(QTest::qWaitFor([&] {
            got += read(65536);
            return got.size() >= lines * line.size();
        }));
        return got;
    };
    for (int i = 0; i < 6; ++i) {
        writer.write(line);
    }
    EXPECT_EQ(told.lines().size(), 1) << "once, not for every line";
    EXPECT_EQ(readAll(4), line + line + line + line) << "what fits the pipe and the allowance, no line cut";
    writer.write(line);
    EXPECT_EQ(readAll(1), line) << "goes on once the reader has caught up";
}

TEST_F(LineWriterTest, EndsQuietlyWhenTheReaderHasGone) {
    const testing::CollectedLog told;
    LineWriter writer(ends[1]);
    closeReader();
    writer.write("one\n");
    // The same descriptor, readable again: what ended stays ended.
    std::array<int, 2> others{};
    ASSERT_EQ(::pipe(others.data()), 0);
    ASSERT_EQ(::dup2(others[1], ends[1]), ends[1]);
    ::close(others[1]);
    ends[0] = others[0];
    writer.write("two\n");
    QCoreApplication::processEvents();
    pollfd query{.fd = ends[0], .events = POLLIN, .revents = 0};
    EXPECT_EQ(::poll(&query, 1, 0), 0) << "nothing arrives";
    EXPECT_EQ(told.lines().size(), 0);
}

TEST_F(LineWriterTest, EndsWithOneLineWhereTheDiskIsFull) {
    const int full = ::open("/dev/full", O_WRONLY);
    if (full < 0) {
        GTEST_SKIP() << "needs /dev/full";
    }
    const testing::CollectedLog told;
    {
        LineWriter writer(full);
        for (int i = 0; i < 3; ++i) {
            writer.write("one\n");
            QCoreApplication::processEvents();
        }
    }
    ::close(full);
    EXPECT_EQ(told.lines(), QStringList{QStringLiteral(
                                "the snapshots end, standard output cannot be written: No space left on device")});
}

} // namespace
} // namespace pelloran
