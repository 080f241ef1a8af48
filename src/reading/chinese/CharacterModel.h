#pragma once

#include "reading/chinese/CharacterFeature.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace pelloran {

// What telling characters apart was learned to take: a projection of features to a few dimensions, in which characters
// differ and hands that write them do not, and the direction in which each character lies there. Immutable; for any
// thread. Its file is described in docs/formats.md.
class CharacterModel {
public:
    // A model as it is learned, before it is rounded to what its file holds.
    struct Parts {
        QString origin;
        std::u32string characters;     // sorted, each once
        CharacterFeature centre{};     // subtracted from each feature before it is projected
        int dimensions = 0;            // 1 to the size of a feature
        std::vector<float> projection; // for each value of a feature its share in each dimension
        std::vector<float> means;      // for each character a vector of `dimensions`, of any length but 0
    };

    // `parts` must fit together.
    static CharacterModel of(Parts parts);

    // The error says what is wrong with the file, for the log.
    static std::expected<CharacterModel, QString> parse(const QByteArray& bytes);

    QByteArray serialized() const;

    // For people: from which fonts it was made, and how.
    const QString& origin() const { return madeFrom; }

    // Sorted.
    const std::u32string& characters() const { return known; }

    std::optional<std::size_t> indexOf(char32_t character) const;

    int dimensions() const { return dimensionCount; }

    // Of length 1; all 0 for what lies at the centre.
    std::vector<float> project(const CharacterFeature& feature) const;

    // Direction of a character, of length 1. `index` below the number of characters.
    std::vector<float> mean(std::size_t index) const;

private:
    CharacterModel() = default;

    QString madeFrom;
    std::u32string known;
    int dimensionCount = 0;
    CharacterFeature centre{};
    std::vector<float> projection;    // exact as half floats
    std::vector<float> scales;        // one for each character
    std::vector<std::int8_t> rounded; // means: `dimensionCount` for each character, times its scale
};

// How far a projected feature lies from each of some of a model's characters: of those that may be meant. Immutable;
// for any thread. It does not refer to the model afterwards.
class CharacterCosts {
public:
    // `characters` are indexes below the model's number of characters.
    CharacterCosts(const CharacterModel& model, std::span<const std::size_t> characters);

    std::size_t size() const { return count; }

    // 1 less the cosine: 0 the same direction, 1 unlike, 2 the opposite. `projected` is what the model made of a
    // feature; `out` has one place for each character, in the order given to the constructor.
    void costs(std::span<const float> projected, std::span<float> out) const;

    // The same for one of the characters.
    float cost(std::span<const float> projected, std::size_t character) const;

private:
    std::size_t count;
    std::size_t dimensions;
    std::vector<float> blocks; // of some characters each, the first value of each of them first
};

} // namespace pelloran
