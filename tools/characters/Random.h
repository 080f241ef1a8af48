#pragma once

#include <QByteArrayView>

#include <cstdint>
#include <random>

namespace pelloran::characters {

// Chance that is the same on every system: the distributions of the standard library are each library's own.
class Random {
public:
    explicit Random(std::uint64_t seed)
        : engine(seed) {}

    // From `low` up to, and without, `high`.
    double uniform(double low, double high);

    // From `low` to `high`, both included; at most some thousand numbers.
    int whole(int low, int high);

    // Around 0, as near to a normal distribution as twelve throws make it.
    double normal(double deviation);

private:
    std::mt19937_64 engine;
};

// One number of several, in which each bit depends on all of theirs.
std::uint64_t mixed(std::uint64_t first, std::uint64_t second);

std::uint64_t numberOf(QByteArrayView name);

} // namespace pelloran::characters
