#include "tests/soak/Verdict.h"

#include "tests/soak/Trend.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>

namespace pelloran::soak {

namespace {

constexpr double thousand = 1000;

using Slope = std::function<std::optional<double>(std::span<const Point>)>;

std::vector<Point> points(std::span<const Sample> samples, const std::function<double(const Sample&)>& figure) {
    std::vector<Point> all;
    for (const Sample& sample : samples) {
        all.push_back({static_cast<double>(sample.tick), figure(sample)});
    }
    return all;
}

QString kilobytes(double value) {
    return QStringLiteral("%1 KB").arg(value, 0, 'f', 1);
}

Judged growth(const QString& what, std::span<const Sample> samples, const std::function<double(const Sample&)>& figure,
              std::optional<double> bound, const Slope& slopeOf) {
    const auto grows = slopeOf(points(samples, figure));
    if (!grows) {
        return {what, QStringLiteral("too few samples"), {}, bound.has_value()};
    }
    const double each = *grows * thousand;
    return {what, QStringLiteral("%1 per 1,000 ticks").arg(kilobytes(each)),
            bound ? QStringLiteral("at most %1").arg(kilobytes(*bound)) : QString(), bound && each > *bound};
}

Judged drift(std::span<const Sample> samples, const Bounds& bounds) {
    const QString what = QStringLiteral("drift of a tick's cost");
    const bool measured = std::ranges::all_of(samples, [](const Sample& sample) { return sample.yardstick > 0; });
    const auto cost = [&](const Sample& sample) { return sample.tickCost / (measured ? sample.yardstick : 1); };
    const auto grows = slope(points(samples, cost), bounds.period);
    std::vector<double> costs;
    std::vector<double> times;
    for (const Sample& sample : samples) {
        costs.push_back(cost(sample));
        times.push_back(sample.tickCost);
    }
    const double usual = median(costs);
    if (!grows || usual <= 0) {
        return {what, QStringLiteral("too few samples"), {}, bounds.tickCost.has_value()};
    }
    const auto span = static_cast<double>(samples.back().tick - samples.front().tick);
    const double share = *grows * span / usual;
    const auto percent = [](double part) { return QStringLiteral("%1 %").arg(part * 100, 0, 'f', 1); };
    return {what,
            QStringLiteral("%1 over the second half, of a median of %2 ms")
                .arg(percent(share))
                .arg(median(times) / thousand, 0, 'f', 2),
            bounds.tickCost ? QStringLiteral("at most %1").arg(percent(*bounds.tickCost)) : QString(),
            bounds.tickCost && share > *bounds.tickCost};
}

// At each place of the period by itself, so that a count that grows does not hide behind a larger one elsewhere.
Judged constant(const QString& what, std::span<const Sample> first, std::span<const Sample> second, int Sample::* count,
                const Bounds& bounds) {
    const auto placeOf = [&](const Sample& sample) {
        return bounds.period ? std::fmod(static_cast<double>(sample.tick), *bounds.period) : 0.0;
    };
    std::map<double, int> most;
    for (const Sample& sample : first) {
        int& known = most[placeOf(sample)];
        known = std::max(known, sample.*count);
    }
    bool more = false;
    for (const Sample& sample : second) {
        const auto known = most.find(placeOf(sample));
        more = more || (known != most.end() && sample.*count > known->second);
    }
    const auto range = [&](std::span<const Sample> samples) {
        const auto [least, greatest] = std::ranges::minmax(samples, {}, count);
        return least.*count == greatest.*count ? QString::number(least.*count)
                                               : QStringLiteral("%1 to %2").arg(least.*count).arg(greatest.*count);
    };
    return {what, QStringLiteral("%1, then %2").arg(range(first), range(second)),
            bounds.constantCounts ? QStringLiteral("no more in the second half") : QString(),
            bounds.constantCounts && more};
}

} // namespace

// An evening of four hours has 16,000 ticks, so 32 KB per 1,000 are half a megabyte then, which nobody would notice. It
// is also as little as can be told: of what was given back the allocator keeps now more, now less, and the difference
// comes and goes in steps of some hundred kilobytes; one of a megabyte is taken in some runs, and judged as none. What
// was asked of it is known exactly and is judged more strictly: 2 KB are a small object of 32 bytes that is forgotten
// at every sixteenth tick. What a tick costs in yardsticks goes up and down by a tenth; a list that grows and is
// searched at every tick does not stop at that.
const Bounds acceleratedBounds{.resident = 32, .inUse = 2, .tickCost = 0.15, .constantCounts = true, .period = {}};

// Here a thousand ticks are a quarter of an hour, so that minutes tell less: what the desktop does beside it moves
// memory by some hundreds of kilobytes. A picture that was kept would show with megabytes.
const Bounds desktopBounds{.resident = 1000, .inUse = {}, .tickCost = {}, .constantCounts = true, .period = {}};

std::vector<Judged> judge(std::span<const Sample> samples, const Bounds& bounds) {
    constexpr std::size_t fewest = 4;
    if (samples.size() < fewest) {
        return {{QStringLiteral("samples"), QString::number(samples.size()), QStringLiteral("at least %1").arg(fewest),
                 true}};
    }
    // The middle by ticks: a run may sample more often at one time than at another.
    const qint64 middle = (samples.front().tick + samples.back().tick) / 2;
    const auto border = std::ranges::find_if(samples, [&](const Sample& sample) { return sample.tick >= middle; });
    const std::span first(samples.begin(), border);
    const std::span second(border, samples.end());
    const auto apartFromAStep = [&](std::span<const Point> those) { return slopeApartFromAStep(those, bounds.period); };
    const auto throughout = [&](std::span<const Point> those) { return slope(those, bounds.period); };
    return {
        growth(
            QStringLiteral("resident memory"), second, [](const Sample& one) { return double(one.resident); },
            bounds.resident, apartFromAStep),
        growth(
            QStringLiteral("memory that is no file's"), second, [](const Sample& one) { return double(one.anonymous); },
            std::nullopt, apartFromAStep),
        samples.front().inUse
            ? growth(
                  QStringLiteral("memory asked for"), second,
                  [](const Sample& one) { return double(one.inUse.value_or(0)); }, bounds.inUse, throughout)
            : Judged{QStringLiteral("memory asked for"), QStringLiteral("not known"), {}, false},
        constant(QStringLiteral("descriptors"), first, second, &Sample::descriptors, bounds),
        constant(QStringLiteral("threads"), first, second, &Sample::threads, bounds),
        drift(second, bounds),
    };
}

QString table(const std::vector<Judged>& rows) {
    qsizetype what = 0;
    qsizetype measured = 0;
    for (const Judged& row : rows) {
        what = std::max(what, row.what.size());
        measured = std::max(measured, row.measured.size());
    }
    QString text;
    for (const Judged& row : rows) {
        const QString verdict = row.broken ? QStringLiteral("BROKEN: ") + row.bound : row.bound;
        text +=
            (row.what.leftJustified(what + 2) + row.measured.leftJustified(measured + 2) + verdict).trimmed() + u'\n';
    }
    return text;
}

} // namespace pelloran::soak
