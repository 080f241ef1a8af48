#pragma once

#include "reading/chinese/CharacterModel.h"
#include "tools/characters/TypefaceGlyphs.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace pelloran::characters {

struct TrainingFace {
    FontFile file;
    // How many degraded glyphs of each character are learned beside the clean one: how much the face counts.
    int variants = 1;
};

struct TrainingPlan {
    std::u32string characters; // sorted
    std::vector<TrainingFace> faces;
    int dimensions = 160;
    std::uint64_t seed = 1;
    int threads = 2; // the result does not depend on it
};

// The same plan and fonts give the same model. `progress` hears, from any thread but one at a time, how many of the
// characters are done. The error is one line for people.
std::expected<CharacterModel, QString> train(const TrainingPlan& plan,
                                             const std::function<void(std::size_t)>& progress);

} // namespace pelloran::characters
