#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <expected>
#include <optional>
#include <vector>

// What a process holds and uses, as the system tells it.
namespace pelloran::soak {

struct Sample {
    qint64 tick = 0;
    double seconds = 0;          // since the start
    qint64 resident = 0;         // memory, in KB: all,
    qint64 anonymous = 0;        // what is no file's,
    std::optional<qint64> inUse; // and what the program has asked the allocator for and not given back
    int descriptors = 0;
    int threads = 0;
    double tickCost = 0;  // processor time of a tick in microseconds, the median since the sample before
    double yardstick = 0; // the same of a fixed piece of work, done beside each tick; 0: not measured

    bool operator==(const Sample&) const = default;
};

// Memory, descriptors and threads of a process now. Absent when it is not there.
std::optional<Sample> sampleOf(qint64 process);

// The same of this process, and what its allocator says.
Sample sampleOfThis();

// Processor time so far, of all threads of this process.
std::chrono::nanoseconds workOfThis();

// One line each, with the names of the columns before them.
QByteArray toCsv(const std::vector<Sample>& samples);

// The error is for people.
std::expected<std::vector<Sample>, QString> fromCsv(const QByteArray& text);

} // namespace pelloran::soak
