#pragma once

#include "tests/soak/Figures.h"

#include <chrono>
#include <expected>
#include <functional>
#include <vector>

namespace pelloran::soak {

// The program itself with its panel on a virtual display, beside the simulated game, in its own time: the game plays a
// draft in English and one in Chinese in turn, faster than people do, each in a window and a session of its own.
// Sampled every few seconds, after which `goOn` is asked; a tick is a line that the program prints. Needs an
// application object. The error is for people.
std::expected<std::vector<Sample>, QString> followOnDesktop(std::chrono::minutes length,
                                                            const std::function<bool(const Sample&)>& goOn);

} // namespace pelloran::soak
