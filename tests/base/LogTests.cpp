#include "base/Log.h"

#include "tests/support/Printing.h"

#include <QByteArrayList>
#include <QStringList>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace pelloran {

namespace {

std::string standardErrorOf(const std::function<void()>& action) {
    ::testing::internal::CaptureStderr();
    action();
    return ::testing::internal::GetCapturedStderr();
}

TEST(Log, WritesOnePrefixedLineToStandardError) {
    EXPECT_EQ(standardErrorOf([] { log(QStringLiteral("炉石 %1 %s")); }), "[Pelloran] 炉石 %1 %s\n");
    EXPECT_EQ(standardErrorOf([] { log(QString()); }), "[Pelloran] \n");
}

TEST(Log, ALineIsOne) {
    EXPECT_EQ(logLine(QStringLiteral("a\nb\r\nc")), QStringLiteral("[Pelloran] a b  c"));
    EXPECT_EQ(standardErrorOf([] { log(QStringLiteral("a\nb")); }), "[Pelloran] a b\n");
}

TEST(Log, ALineCommandsNoTerminal) {
    EXPECT_EQ(logLine(QStringLiteral("a\x1b[2J\u009b2J\u202Eb")), QStringLiteral("[Pelloran] a [2J 2J b"));
}

TEST(Log, AVeryLongMessageIsCut) {
    struct Case {
        const char* why;
        QString message;
        QString expected;
    };

    const QString most(8'000, u'x');
    const QString before = most.chopped(1);
    const Case cases[] = {
        {"just as long", most, most},
        {"a character more", most + u'y', most + QStringLiteral("… (1 characters more)")},
        {"of a server that does not stop", most.repeated(1000), most + QStringLiteral("… (7992000 characters more)")},
        {"not within a character", before + QStringLiteral("😀"), before + QStringLiteral("… (2 characters more)")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(logLine(c.message), QStringLiteral("[Pelloran] ") + c.expected);
    }
}

TEST(Log, LinesOfSeveralThreadsNeverMix) {
    constexpr int threadCount = 4;
    constexpr int lineCount = 200;
    const QString body(300, u'x');
    const std::string written = standardErrorOf([&] {
        std::vector<std::thread> threads;
        threads.reserve(threadCount);
        for (int i = 0; i < threadCount; ++i) {
            threads.emplace_back([&body] {
                for (int line = 0; line < lineCount; ++line) {
                    log(body);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    });
    const QByteArrayList lines = QByteArray::fromStdString(written).split('\n');
    ASSERT_EQ(lines.size(), threadCount * lineCount + 1);
    EXPECT_EQ(lines.count("[Pelloran] " + body.toUtf8()), threadCount * lineCount);
}

TEST(Log, ASinkTakesThePlaceOfStandardErrorUntilItIsRemoved) {
    QStringList received;
    const std::string written = standardErrorOf([&] {
        setLogSink([&](const QString& message) { received << message; });
        log(QStringLiteral("one"));
        setLogSink({});
        log(QStringLiteral("two"));
    });
    EXPECT_EQ(received, QStringList{QStringLiteral("one")});
    EXPECT_EQ(written, "[Pelloran] two\n");
}

} // namespace

} // namespace pelloran
