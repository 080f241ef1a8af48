#include "tests/soak/Figures.h"

#include "tests/support/ProcessStatus.h"
#include "tests/support/Sanitizers.h"

#include <QFile>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>

namespace pelloran::soak {
namespace {

constexpr std::size_t megabyte = std::size_t{1024} * 1024;

TEST(Figures, TellWhatThisProcessHolds) {
    if (testing::hasThreadSanitizer) {
        GTEST_SKIP() << "the thread sanitizer has a thread of its own, and shares its memory with itself";
    }
    const Sample before = sampleOfThis();
    EXPECT_GT(before.resident, 1000);
    EXPECT_GT(before.anonymous, 0);
    EXPECT_LE(before.anonymous, before.resident);
    EXPECT_GE(before.threads, 1);

    QFile file(QStringLiteral("/dev/null"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const std::unique_ptr<char, decltype(&std::free)> memory(static_cast<char*>(std::malloc(32 * megabyte)), std::free);
    std::memset(memory.get(), 1, 32 * megabyte);
    std::jthread thread([](const std::stop_token& end) {
        while (!end.stop_requested()) {
            std::this_thread::yield();
        }
    });
    const Sample after = sampleOfThis();
    EXPECT_EQ(after.descriptors, before.descriptors + 1);
    EXPECT_EQ(after.threads, before.threads + 1);
    EXPECT_GE(after.anonymous - before.anonymous, 31 * 1024);
    if (before.inUse != 0) { // the sanitizers' allocators do not tell
        EXPECT_GE(after.inUse.value_or(0) - before.inUse.value_or(0), 31 * 1024);
    }
}

TEST(Figures, AreNotToldOfAProcessThatIsNot) {
    EXPECT_FALSE(sampleOf(0));
    EXPECT_FALSE(testing::processorTimeOf(0));
}

TEST(Figures, CountTheWorkOfAllThreads) {
    const auto before = workOfThis();
    const auto done = before + std::chrono::milliseconds(5);
    std::jthread([&] {
        while (workOfThis() < done) {
        }
    }).join();
    EXPECT_GE(workOfThis() - before, std::chrono::milliseconds(5));
}

TEST(Figures, GoThroughATable) {
    const std::vector<Sample> samples{{25, 0.5, 80'000, 40'000, 12'345, 21, 9, 3100.5, 150.5},
                                      {50, 1, 80'004, 40'004, {}, 21, 9, 0, 0}};
    const auto read = fromCsv(toCsv(samples));
    ASSERT_TRUE(read) << read.error().toStdString();
    EXPECT_EQ(*read, samples);
}

TEST(Figures, RefuseWhatIsNoTable) {
    const QByteArray head = toCsv({});

    struct Case {
        const char* why;
        QByteArray text;
        const char* error;
    };

    const Case cases[] = {
        {"nothing", "",
         "does not begin with tick,seconds,resident_kb,anonymous_kb,in_use_kb,descriptors,threads,tick_microseconds,"
         "yardstick_microseconds"},
        {"a column is missing", head + "25,0.5,80000,40000,12345,21,9,1\n", "line 2 is no sample"},
        {"a column too many", head + "25,0.5,80000,40000,12345,21,9,1,1,1\n", "line 2 is no sample"},
        {"a word for a number", head + "25,0.5,80000,40000,12345,21,9,1,1\n50,0.5,much,40000,12345,21,9,1,1\n",
         "line 3 is no sample"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const auto read = fromCsv(c.text);
        ASSERT_FALSE(read);
        EXPECT_EQ(read.error().toStdString(), c.error);
    }
}

} // namespace
} // namespace pelloran::soak
