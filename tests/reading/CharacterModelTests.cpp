#include "reading/chinese/CharacterModel.h"

#include <QCryptographicHash>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <random>

namespace pelloran {

namespace {

constexpr int dimensions = 6; // no multiple of what is computed together

// Numbers from -1 to 1.
std::vector<float> numbers(std::size_t count, std::uint32_t seed) {
    std::mt19937 engine(seed);
    std::vector<float> result(count);
    for (float& value : result) {
        value = float(engine() % 20001) / 10000 - 1;
    }
    return result;
}

CharacterFeature featureNumber(std::uint32_t seed) {
    CharacterFeature feature{};
    std::ranges::copy(numbers(feature.size(), seed), feature.begin());
    return feature;
}

CharacterModel model() {
    CharacterModel::Parts parts;
    parts.origin = QStringLiteral("strokes of a test, 楷");
    parts.characters = U"一三丁七\U00020000";
    std::ranges::sort(parts.characters);
    parts.centre = featureNumber(1);
    parts.dimensions = dimensions;
    parts.projection = numbers(featureSize * dimensions, 2);
    parts.means = numbers(parts.characters.size() * dimensions, 3);
    return CharacterModel::of(std::move(parts));
}

// With a checksum that fits, as of somebody who writes such files.
QByteArray signedBytes(QByteArray bytes) {
    bytes.chop(32);
    return bytes + QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

QString problemOf(const QByteArray& bytes) {
    const auto parsed = CharacterModel::parse(bytes);
    return parsed ? QString() : parsed.error();
}

double cosine(std::span<const float> first, std::span<const float> second) {
    return std::inner_product(first.begin(), first.end(), second.begin(), 0.0);
}

TEST(CharacterModelTest, IsTheSameAfterAFile) {
    const CharacterModel before = model();
    const QByteArray bytes = before.serialized();
    const auto after = CharacterModel::parse(bytes);
    ASSERT_TRUE(after) << after.error().toStdString();
    EXPECT_EQ(after->origin(), before.origin());
    EXPECT_EQ(after->characters(), before.characters());
    EXPECT_EQ(after->dimensions(), dimensions);
    EXPECT_EQ(after->serialized(), bytes);
    const CharacterFeature feature = featureNumber(9);
    EXPECT_EQ(after->project(feature), before.project(feature));
    for (std::size_t i = 0; i < before.characters().size(); ++i) {
        EXPECT_EQ(after->mean(i), before.mean(i));
    }
}

TEST(CharacterModelTest, FindsCharacters) {
    const CharacterModel known = model();
    for (std::size_t i = 0; i < known.characters().size(); ++i) {
        EXPECT_EQ(known.indexOf(known.characters()[i]), i);
    }

    struct Row {
        char32_t character;
        const char* why;
    };

    const Row table[] = {
        {U'A', "before all"},
        {U'二', "between two"},
        {U'\U0002F000', "after all"},
        {U'\0', "nothing"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(known.indexOf(row.character), std::nullopt);
    }
}

TEST(CharacterModelTest, ProjectsToLengthOne) {
    const CharacterModel known = model();
    const CharacterFeature feature = featureNumber(7);
    const std::vector<float> projected = known.project(feature);
    ASSERT_EQ(projected.size(), std::size_t(dimensions));
    EXPECT_NEAR(cosine(projected, projected), 1, 1e-5);

    // By the definition, with numbers that have not been rounded to the file's.
    const CharacterFeature centre = featureNumber(1);
    const std::vector<float> projection = numbers(featureSize * dimensions, 2);
    std::vector<float> expected(dimensions);
    for (std::size_t k = 0; k < dimensions; ++k) {
        for (std::size_t i = 0; i < featureSize; ++i) {
            expected[k] += (feature[i] - centre[i]) * projection[i * dimensions + k];
        }
    }
    const double length = std::sqrt(cosine(expected, expected));
    for (std::size_t k = 0; k < dimensions; ++k) {
        EXPECT_NEAR(projected[k], expected[k] / length, 2e-3);
    }

    EXPECT_EQ(known.project(centre), std::vector<float>(dimensions, 0.0F)) << "what is at the centre has no direction";
}

TEST(CharacterModelTest, MeansKeepTheirDirection) {
    const CharacterModel known = model();
    const std::vector<float> means = numbers(known.characters().size() * dimensions, 3);
    for (std::size_t i = 0; i < known.characters().size(); ++i) {
        const std::span<const float> given = std::span(means).subspan(i * dimensions, dimensions);
        const std::vector<float> kept = known.mean(i);
        EXPECT_NEAR(cosine(kept, kept), 1, 1e-5);
        EXPECT_NEAR(cosine(kept, given) / std::sqrt(cosine(given, given)), 1, 1e-4);
    }
}

TEST(CharacterModelTest, DamagedFiles) {
    const QByteArray bytes = model().serialized();
    for (qsizetype size = 0; size < bytes.size(); ++size) {
        const QString problem = problemOf(bytes.first(size));
        ASSERT_TRUE(problem.startsWith(QStringLiteral("it is cut short"))) << size << ": " << problem.toStdString();
    }
    const auto withFlippedBit = [&](qsizetype bit) {
        QByteArray flipped = bytes;
        flipped[bit / 8] = char(flipped[bit / 8] ^ (1 << bit % 8));
        return flipped;
    };
    // Every bit of the head, and some hundred of the rest.
    for (qsizetype bit = 0; bit < 8 * bytes.size(); bit += bit < 8 * 64 ? 1 : 149) {
        const QString problem = problemOf(withFlippedBit(bit));
        ASSERT_FALSE(problem.isEmpty()) << "bit " << bit;
        // A damaged number in the head looks like another length; none looks like another version.
        ASSERT_FALSE(problem.contains(QStringLiteral("version"))) << "bit " << bit;
        if (bit < 8 * 8) {
            ASSERT_EQ(problem, QStringLiteral("it is no model of characters"));
        } else if (bit >= 8 * 28) {
            ASSERT_EQ(problem, QStringLiteral("it is damaged: its checksum does not fit"));
        }
    }
}

TEST(CharacterModelTest, FilesThatAreNone) {
    const QByteArray bytes = model().serialized();
    constexpr qsizetype version = 8;
    constexpr qsizetype originSize = 12;
    constexpr qsizetype features = 16;
    constexpr qsizetype dimensionCount = 20;
    constexpr qsizetype characterCount = 24;
    constexpr qsizetype origin = 28;
    const qsizetype characters = origin + model().origin().toUtf8().size();
    const qsizetype centre = characters + 4 * 5;
    const qsizetype projection = centre + 4 * qsizetype(featureSize);
    const qsizetype scales = projection + 2 * qsizetype(featureSize) * dimensions;
    const auto with = [&](qsizetype place, std::initializer_list<int> values) {
        QByteArray changed = bytes;
        for (const int value : values) {
            changed[place++] = char(value);
        }
        return signedBytes(changed);
    };

    struct Row {
        QByteArray bytes;
        QString problem;
        const char* why;
    };

    const QString sizes = QStringLiteral("its sizes do not fit together");
    const QString notSorted = QStringLiteral("its characters are not sorted, or not characters");
    const QString noNumbers = QStringLiteral("some of its numbers are none");
    const Row table[] = {
        {QByteArray("{\"cards\": []}"), QStringLiteral("it is no model of characters"), "another file"},
        {with(version, {2, 0, 0, 0}), QStringLiteral("its format is version 2, not 1"), "a later version"},
        {with(version, {0, 0, 0, 0}), QStringLiteral("its format is version 0, not 1"), "an earlier one"},
        {bytes + QByteArray(1, '\0'), QStringLiteral("1 bytes follow its end"), "a byte too many"},
        {bytes + bytes, QStringLiteral("%1 bytes follow its end").arg(bytes.size()), "twice"},
        {signedBytes(bytes + QByteArray(5, 'x') + QByteArray(32, 'x')), sizes, "bytes too many, knowingly"},
        {with(originSize, {0xFF, 0xFF, 0xFF, 0xFF}), sizes, "four gigabytes of origin"},
        {with(features, {0, 0, 0, 0}), sizes, "no features"},
        {with(features, {0, 0, 0, 0x40}), sizes, "other features"},
        {with(dimensionCount, {0, 0, 0, 0}), sizes, "no dimensions"},
        {with(dimensionCount, {1, 2, 0, 0}), sizes, "more dimensions than features"},
        {with(characterCount, {0, 0, 0, 0}), sizes, "no characters"},
        {with(characterCount, {6, 0, 0, 0}), sizes, "a character more than there are"},
        {with(characterCount, {0xFF, 0xFF, 0xFF, 0x7F}), sizes, "more characters than there can be"},
        {with(dimensionCount, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), sizes, "sizes that overflow"},
        {with(origin, {0xC0, 0x80}), QStringLiteral("its origin is no UTF-8"), "a text in another coding"},
        {with(characters, {0xFF, 0xFF, 0, 0}), notSorted, "the first character behind the second"},
        {with(characters + 4, {0, 0x4E, 0, 0}), notSorted, "the same character twice"},
        {with(characters + 16, {0, 0, 0x11, 0}), notSorted, "beyond Unicode"},
        {with(characters, {0, 0xD8, 0, 0, 1, 0xE0, 0, 0}), notSorted, "half of a surrogate pair"},
        {with(centre, {0, 0, 0xC0, 0x7F}), noNumbers, "a centre that is no number"},
        {with(projection, {0, 0x7C}), noNumbers, "an infinite weight"},
        {with(scales, {0, 0, 0x80, 0x7F}), noNumbers, "an infinite scale"},
        {with(scales, {0, 0, 0, 0}), noNumbers, "a scale of nothing"},
        {with(scales, {0, 0, 0x80, 0xBF}), noNumbers, "a negative scale"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(problemOf(row.bytes).toStdString(), row.problem.toStdString());
    }
    EXPECT_EQ(problemOf(signedBytes(bytes)), QString()) << "the signature itself is right";
}

TEST(CharacterCostsTest, AreOneLessTheCosine) {
    // More characters than are computed together, and not a round number of them.
    CharacterModel::Parts parts;
    for (char32_t i = 0; i < 150; ++i) {
        parts.characters.push_back(U'一' + i);
    }
    parts.dimensions = dimensions;
    parts.projection = numbers(featureSize * dimensions, 2);
    parts.means = numbers(parts.characters.size() * dimensions, 3);
    const CharacterModel known = CharacterModel::of(std::move(parts));
    const std::vector<float> projected = known.project(featureNumber(5));

    struct Row {
        std::vector<std::size_t> characters;
        const char* why;
    };

    std::vector<std::size_t> every(150);
    std::iota(every.begin(), every.end(), 0U);
    const Row table[] = {
        {{}, "none"},
        {{149}, "one"},
        {{7, 3, 149, 0, 3}, "some, in an order of their own, one of them twice"},
        {std::vector(every.begin(), every.begin() + 64), "as many as are computed together"},
        {every, "all"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const CharacterCosts among(known, row.characters);
        ASSERT_EQ(among.size(), row.characters.size());
        std::vector<float> costs(row.characters.size(), -1);
        among.costs(projected, costs);
        for (std::size_t i = 0; i < costs.size(); ++i) {
            EXPECT_NEAR(costs[i], 1 - cosine(known.mean(row.characters[i]), projected), 1e-5);
        }
    }
}

TEST(CharacterCostsTest, ReachFromTheSameToTheOpposite) {
    const CharacterModel known = model();
    const CharacterCosts among(known, std::vector<std::size_t>{2});
    std::vector<float> cost(1);
    std::vector<float> mean = known.mean(2);
    among.costs(mean, cost);
    EXPECT_NEAR(cost[0], 0, 1e-5);
    std::ranges::transform(mean, mean.begin(), std::negate());
    among.costs(mean, cost);
    EXPECT_NEAR(cost[0], 2, 1e-5);
}

} // namespace

} // namespace pelloran
