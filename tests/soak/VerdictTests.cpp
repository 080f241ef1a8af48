#include "tests/soak/Verdict.h"

#include "tests/support/Printing.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace pelloran::soak {
namespace {

constexpr int period = 500;
constexpr int step = 25;

// A run of twenty seasons in which nothing grows: figures go up and down within each, and a little from one to the
// next.
std::vector<Sample> level() {
    std::vector<Sample> samples;
    for (int tick = step; tick <= 20 * period; tick += step) {
        const int place = tick % period / step;
        const int season = tick / period;
        samples.push_back({.tick = tick,
                           .seconds = tick / 100.0,
                           .resident = 90'000 + 700 * (place % 5) + 12 * (season % 3),
                           .anonymous = 50'000 + 700 * (place % 5),
                           .inUse = 30'000 + 300 * (place % 7),
                           .descriptors = 20 + place % 3,
                           .threads = 8,
                           .tickCost = 2000.0 + 4000 * (place % 4) + 30 * (season % 4)});
    }
    return samples;
}

QStringList brokenOf(const std::vector<Judged>& rows) {
    QStringList names;
    for (const Judged& row : rows) {
        if (row.broken) {
            names.append(row.what);
        }
    }
    return names;
}

Bounds bounds() {
    Bounds those = acceleratedBounds;
    those.period = period;
    return those;
}

TEST(Verdict, TellsWhatGrows) {
    struct Case {
        const char* why;
        std::function<void(Sample&)> change;
        QStringList broken;
    };

    const QString resident = QStringLiteral("resident memory");
    const QString inUse = QStringLiteral("memory asked for");
    const QString descriptors = QStringLiteral("descriptors");
    const QString threads = QStringLiteral("threads");
    const QString cost = QStringLiteral("drift of a tick's cost");
    const Case cases[] = {
        {"nothing", [](Sample&) {}, {}},
        {"a small object is forgotten at every tick", [](Sample& one) { *one.inUse += one.tick * 32 / 1024; }, {inUse}},
        {"a kilobyte at every tick",
         [](Sample& one) {
             *one.inUse += one.tick;
             one.resident += one.tick;
         },
         {resident, inUse}},
        {"memory that no allocator knows of", [](Sample& one) { one.resident += one.tick / 10; }, {resident}},
        {"memory that grew while caches filled",
         [](Sample& one) { one.resident += std::min<qint64>(one.tick, 4000); },
         {}},
        {"one step, of which nobody asked for anything",
         [](Sample& one) { one.resident += one.tick > 7200 ? 1000 : 0; },
         {}},
        {"steps", [](Sample& one) { one.resident += one.tick / 1500 * 150; }, {resident}},
        {"memory that is given back", [](Sample& one) { one.resident -= one.tick / 10; }, {}},
        {"a descriptor a season",
         [](Sample& one) { one.descriptors += static_cast<int>(one.tick / period); },
         {descriptors}},
        {"one at one place, where others have more",
         [](Sample& one) { one.descriptors += one.tick > 8000 && one.tick % period == 0 ? 1 : 0; },
         {descriptors}},
        {"a thread late in the run", [](Sample& one) { one.threads += one.tick > 9000 ? 1 : 0; }, {threads}},
        {"threads that end", [](Sample& one) { one.threads += one.tick < 2000 ? 3 : 0; }, {}},
        {"ticks that cost more and more",
         [](Sample& one) { one.tickCost *= 1 + static_cast<double>(one.tick) / 10'000; },
         {cost}},
        {"a machine that gets slower",
         [](Sample& one) {
             one.yardstick = 100 + static_cast<double>(one.tick) / 50;
             one.tickCost *= one.yardstick / 100;
         },
         {}},
        {"ticks that cost more and more on a machine that gets faster",
         [](Sample& one) {
             one.yardstick = 300 - static_cast<double>(one.tick) / 50;
             one.tickCost *= (1 + static_cast<double>(one.tick) / 10'000) * one.yardstick / 300;
         },
         {cost}},
        {"one slow moment", [](Sample& one) { one.tickCost *= one.tick > 8000 && one.tick < 8200 ? 20 : 1; }, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        std::vector<Sample> samples = level();
        std::ranges::for_each(samples, c.change);
        EXPECT_EQ(brokenOf(judge(samples, bounds())), c.broken);
    }
}

TEST(Verdict, JudgesOnlyWhatHasABound) {
    std::vector<Sample> samples = level();
    for (Sample& one : samples) {
        one.resident += one.tick * 100;
        *one.inUse += one.tick * 100;
        one.tickCost += static_cast<double>(one.tick);
        one.threads += static_cast<int>(one.tick);
    }
    const Bounds none{.resident = {}, .inUse = {}, .tickCost = {}, .constantCounts = false, .period = {}};
    EXPECT_EQ(brokenOf(judge(samples, none)), QStringList());
}

TEST(Verdict, GoesWithoutWhatIsNotKnown) {
    std::vector<Sample> samples = level();
    for (Sample& one : samples) {
        one.inUse.reset();
    }
    EXPECT_EQ(brokenOf(judge(samples, bounds())), QStringList());
}

TEST(Verdict, DoesNotTakeTooFewSamplesForHolding) {
    const std::vector<Sample> all = level();
    EXPECT_EQ(brokenOf(judge(std::span(all).first(3), bounds())), QStringList{QStringLiteral("samples")});
    EXPECT_EQ(brokenOf(judge({}, bounds())), QStringList{QStringLiteral("samples")});
    EXPECT_EQ(brokenOf(judge(std::span(all).first(25), bounds())),
              (QStringList{QStringLiteral("resident memory"), QStringLiteral("memory asked for"),
                           QStringLiteral("drift of a tick's cost")}))
        << "a season and a bit: nothing to compare";
}

TEST(Verdict, IsSetInColumns) {
    EXPECT_EQ(table({{QStringLiteral("descriptors"), QStringLiteral("21"), QStringLiteral("no more"), false},
                     {QStringLiteral("threads"), QStringLiteral("8, then 9"), QStringLiteral("no more"), true},
                     {QStringLiteral("syncs"), QStringLiteral("3"), {}, false}})
                  .toStdString(),
              "descriptors  21         no more\n"
              "threads      8, then 9  BROKEN: no more\n"
              "syncs        3\n");
}

} // namespace
} // namespace pelloran::soak
