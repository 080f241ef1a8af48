#pragma once

#include "reading/chinese/CharacterModel.h"
#include "tools/characters/TypefaceGlyphs.h"

#include <string>
#include <vector>

namespace pelloran::characters {

// How many glyphs of a font a model takes for what they are.
struct CheckResult {
    QString what;
    int right = 0;
    int glyphs = 0;
    std::u32string mistaken; // pairs: meant, taken for
};

// Clean glyphs, and degraded ones of some heights. Glyphs of `among` are shown (those that the model and the font
// have), and each is told from all of `among` that the model has.
std::expected<std::vector<CheckResult>, QString> check(const FontFile& font, const CharacterModel& model,
                                                       const std::u32string& among);

} // namespace pelloran::characters
