#include "tools/characters/Check.h"

#include "tools/characters/Degradation.h"

#include <algorithm>
#include <thread>

namespace pelloran::characters {

namespace {

// Absent: clean.
using EmHeight = std::optional<int>;

// px of an em on the screen, from a small window to a large one.
const std::vector<EmHeight> heights{std::nullopt, 11, 14, 20, 28};

// Half of what is learned from: about as a line of a real screen is bent and slanted.
constexpr double strength = 0.8;

// Not one that a training is likely to have.
constexpr std::uint64_t seed = 0xC4EC;

CheckResult checkAt(EmHeight height, TypefaceGlyphs& font, const CharacterModel& model,
                    const std::vector<std::size_t>& indexes) {
    CheckResult result;
    result.what = height ? QStringLiteral("%1 px").arg(*height) : QStringLiteral("clean");
    const CharacterCosts classes(model, indexes);
    std::vector<float> costs(indexes.size());
    for (const std::size_t index : indexes) {
        const char32_t character = model.characters()[index];
        std::optional<Plane> glyph = font.draw(character);
        if (!glyph) {
            continue;
        }
        if (height) {
            Random random(mixed(mixed(seed, std::uint64_t(*height)), character));
            glyph = degraded(*glyph, {.strength = strength, .emHeight = height}, random);
        }
        ++result.glyphs;
        const auto shape = shapeOf(*glyph, QRect(0, 0, glyph->width, glyph->height));
        if (!shape) {
            continue;
        }
        classes.costs(model.project(featureOf(*shape)), costs);
        const std::size_t best = indexes[std::size_t(std::ranges::min_element(costs) - costs.begin())];
        if (best == index) {
            ++result.right;
        } else {
            result.mistaken += {character, model.characters()[best]};
        }
    }
    return result;
}

} // namespace

std::expected<std::vector<CheckResult>, QString> check(const FontFile& font, const CharacterModel& model,
                                                       const std::u32string& among) {
    std::vector<std::size_t> indexes;
    for (const char32_t character : among) {
        if (const auto index = model.indexOf(character)) {
            indexes.push_back(*index);
        }
    }
    std::vector<TypefaceGlyphs> fonts; // one for each height, which are looked at side by side
    for (std::size_t i = 0; i < heights.size(); ++i) {
        std::expected<TypefaceGlyphs, QString> opened = TypefaceGlyphs::open(font);
        if (!opened) {
            return std::unexpected(opened.error());
        }
        fonts.push_back(*std::move(opened));
    }
    std::vector<CheckResult> results(heights.size());
    {
        std::vector<std::jthread> threads;
        for (std::size_t i = 0; i < heights.size(); ++i) {
            threads.emplace_back([&, i] { results[i] = checkAt(heights[i], fonts[i], model, indexes); });
        }
    }
    return results;
}

} // namespace pelloran::characters
