#pragma once

#include "app/evaluation/Report.h"

#include <optional>
#include <vector>

// Counting what came of pictures.
namespace pelloran::evaluation {

// The median, the ninth decile and so on: the value below which the share `quantile` of the values lies, on the line
// between the two values next to it. Absent without values.
std::optional<double> quantile(std::vector<double> values, double quantile);

struct TextTally {
    int boxes = 0; // the sum of the next four
    int right = 0;
    int wrong = 0;
    int unread = 0;
    int notInData = 0;
    int wrongMissing = 0; // of those not in the data

    void add(const TextAnswer& answer);
};

struct Tally {
    int pictures = 0;
    int slots = 0; // whose offer is legible: the sum of the next four
    int right = 0;
    int wrong = 0;
    int unread = 0;
    int notInData = 0;
    int wrongMissing = 0; // of those not in the data
    int falseOffers = 0;
    int changed = 0;                  // repeated looks that show something else than the first
    std::vector<double> milliseconds; // of the first looks
    std::vector<double> cpuMilliseconds;
    std::vector<double> repeatedCpuMilliseconds;

    void add(const Picture& picture);
};

} // namespace pelloran::evaluation
