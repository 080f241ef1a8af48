#pragma once

#include "tests/soak/Figures.h"

#include <QString>

#include <optional>
#include <span>
#include <vector>

// What the samples of a run come to.
namespace pelloran::soak {

// What a run may show. Absent: it is not judged.
struct Bounds {
    std::optional<double> resident; // growth of resident memory, in KB for every 1,000 ticks
    std::optional<double> inUse;    // the same of what was asked of the allocator
    std::optional<double> tickCost; // growth of a tick's median cost over the second half, as a share of it; in
                                    // yardsticks where they were measured
    bool constantCounts = true;     // no more descriptors or threads in the second half than there were in the first
    std::optional<double> period;   // in ticks, after which a run does the same again: like is compared with like
};

// For `ticks` that follow each other without a pause, and for a run on a desktop in its own time.
extern const Bounds acceleratedBounds;
extern const Bounds desktopBounds;

struct Judged {
    QString what;
    QString measured;
    QString bound; // "" where nothing is judged
    bool broken = false;

    bool operator==(const Judged&) const = default;
};

// All is told of the second half of the samples: in the first one the caches fill. Fewer than four samples are judged
// broken: they tell nothing.
std::vector<Judged> judge(std::span<const Sample> samples, const Bounds& bounds);

// In columns.
QString table(const std::vector<Judged>& rows);

} // namespace pelloran::soak
