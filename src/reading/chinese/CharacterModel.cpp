#include "reading/chinese/CharacterModel.h"

#include <QCryptographicHash>
#include <QFloat16>
#include <QStringDecoder>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cmath>
#include <functional>

namespace pelloran {

namespace {

constexpr QByteArrayView magic("PellChar");
constexpr quint32 formatVersion = 1;

// Magic, version and four sizes.
constexpr qsizetype headSize = 8 + 5 * 4;
constexpr qsizetype checksumSize = 32;

// No honest file comes near.
constexpr quint32 longestOrigin = 1U << 20;
constexpr quint32 mostCharacters = 1U << 18;

// Characters whose costs are computed together: their sums stay in the processor's cache.
constexpr std::size_t blockSize = 64;

// Rows of numbers that are added to sums together, so that each sum is loaded and stored less often.
constexpr std::size_t step = 4;
static_assert(featureSize % step == 0);

constexpr std::size_t paddedToSteps(std::size_t count) {
    return (count + step - 1) / step * step;
}

template <typename Number>
void append(QByteArray& bytes, Number number) {
    const Number little = qToLittleEndian(number);
    bytes.append(reinterpret_cast<const char*>(&little), sizeof little);
}

void append(QByteArray& bytes, float number) {
    append(bytes, std::bit_cast<quint32>(number));
}

void appendHalf(QByteArray& bytes, float number) {
    append(bytes, std::bit_cast<quint16>(qfloat16(number)));
}

// Takes numbers from the beginning of bytes that are known to suffice.
class Reader {
public:
    explicit Reader(QByteArrayView view)
        : rest(view) {}

    template <typename Number>
    Number next() {
        const auto number = qFromLittleEndian<Number>(take(sizeof(Number)).data());
        return number;
    }

    float nextFloat() { return std::bit_cast<float>(next<quint32>()); }

    float nextHalf() { return float(std::bit_cast<qfloat16>(next<quint16>())); }

    QByteArrayView take(qsizetype count) {
        assert(count <= rest.size());
        const QByteArrayView taken = rest.first(count);
        rest = rest.sliced(count);
        return taken;
    }

private:
    QByteArrayView rest;
};

struct Head {
    quint32 version;
    quint32 originSize;
    quint32 features;
    quint32 dimensions;
    quint32 characters;
};

Head headOf(QByteArrayView bytes) {
    Reader reader(bytes.sliced(magic.size()));
    Head head{};
    head.version = reader.next<quint32>();
    head.originSize = reader.next<quint32>();
    head.features = reader.next<quint32>();
    head.dimensions = reader.next<quint32>();
    head.characters = reader.next<quint32>();
    return head;
}

bool isPlausible(const Head& head) {
    return head.originSize <= longestOrigin && head.features == featureSize && head.dimensions >= 1 &&
           head.dimensions <= featureSize && head.characters >= 1 && head.characters <= mostCharacters;
}

// Of the file with this head, which is plausible.
qsizetype sizeOf(const Head& head) {
    const qsizetype perCharacter = 4 + 4 + qsizetype(head.dimensions);
    return headSize + qsizetype(head.originSize) + qsizetype(head.features) * (4 + 2 * qsizetype(head.dimensions)) +
           qsizetype(head.characters) * perCharacter + checksumSize;
}

QByteArray checksum(QByteArrayView bytes) {
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

// Why the bytes are no file of this version, if they are none. Every version begins with the magic and its number and
// ends with the checksum of all before it, so that another version is told from a damaged file.
std::optional<QString> problemOf(const QByteArray& bytes) {
    if (!bytes.startsWith(magic)) {
        return magic.startsWith(bytes) ? QStringLiteral("it is cut short: only %1 bytes").arg(bytes.size())
                                       : QStringLiteral("it is no model of characters");
    }
    if (bytes.size() < headSize + checksumSize) {
        return QStringLiteral("it is cut short: only %1 bytes").arg(bytes.size());
    }
    const Head head = headOf(bytes);
    const QByteArrayView content = QByteArrayView(bytes).chopped(checksumSize);
    if (checksum(content) == QByteArrayView(bytes).last(checksumSize)) {
        if (head.version != formatVersion) {
            return QStringLiteral("its format is version %1, not %2").arg(head.version).arg(formatVersion);
        }
        return isPlausible(head) && sizeOf(head) == bytes.size()
                   ? std::nullopt
                   : std::optional(QStringLiteral("its sizes do not fit together"));
    }
    if (head.version == formatVersion && isPlausible(head) && sizeOf(head) != bytes.size()) {
        const qsizetype more = bytes.size() - sizeOf(head);
        return more > 0 ? QStringLiteral("%1 bytes follow its end").arg(more)
                        : QStringLiteral("it is cut short: %1 of %2 bytes").arg(bytes.size()).arg(sizeOf(head));
    }
    return QStringLiteral("it is damaged: its checksum does not fit");
}

bool isCharacter(quint32 code) {
    return code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
}

// Makes a vector one of length 1, unless it has none.
void makeUnit(std::span<float> vector) {
    double sum = 0;
    for (const float value : vector) {
        sum += double(value) * double(value);
    }
    if (sum > 0) {
        const auto factor = float(1 / std::sqrt(sum));
        for (float& value : vector) {
            value *= factor;
        }
    }
}

// Adds to `count` sums as many numbers of each of `step` rows, which follow each other, times the row's weight.
void addWeighted(const float* weights, const float* rows, std::size_t count, float* sums) {
    for (std::size_t i = 0; i < count; ++i) {
        sums[i] += (weights[0] * rows[i] + weights[1] * rows[i + count]) +
                   (weights[2] * rows[i + 2 * count] + weights[3] * rows[i + 3 * count]);
    }
}

} // namespace

CharacterModel CharacterModel::of(Parts parts) {
    const auto dimensions = std::size_t(parts.dimensions);
    assert(dimensions >= 1 && dimensions <= featureSize);
    assert(parts.projection.size() == featureSize * dimensions);
    assert(parts.means.size() == parts.characters.size() * dimensions);
    assert(std::ranges::is_sorted(parts.characters, std::less_equal()));

    CharacterModel model;
    model.madeFrom = std::move(parts.origin);
    model.known = std::move(parts.characters);
    model.dimensionCount = parts.dimensions;
    model.centre = parts.centre;
    model.projection.reserve(parts.projection.size());
    for (const float value : parts.projection) {
        model.projection.push_back(float(qfloat16(value)));
    }
    model.rounded.reserve(parts.means.size());
    for (std::size_t i = 0; i < model.known.size(); ++i) {
        const std::span<float> mean = std::span(parts.means).subspan(i * dimensions, dimensions);
        makeUnit(mean);
        float largest = 0;
        for (const float value : mean) {
            largest = std::max(largest, std::abs(value));
        }
        const float scale = largest > 0 ? largest / 127 : 1;
        model.scales.push_back(scale);
        for (const float value : mean) {
            model.rounded.push_back(std::int8_t(std::lround(value / scale)));
        }
    }
    return model;
}

std::expected<CharacterModel, QString> CharacterModel::parse(const QByteArray& bytes) {
    if (const std::optional<QString> problem = problemOf(bytes)) {
        return std::unexpected(*problem);
    }
    // From here on the sizes are known to be those of the bytes.
    const Head head = headOf(bytes);
    Reader reader(QByteArrayView(bytes).sliced(headSize));
    CharacterModel model;
    model.dimensionCount = int(head.dimensions);

    // Whole, with a byte-order mark if it should begin with one.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    model.madeFrom = decoder(reader.take(head.originSize));
    if (decoder.hasError()) {
        return std::unexpected(QStringLiteral("its origin is no UTF-8"));
    }

    model.known.reserve(head.characters);
    for (quint32 i = 0; i < head.characters; ++i) {
        const auto code = reader.next<quint32>();
        if (!isCharacter(code) || (i > 0 && code <= model.known.back())) {
            return std::unexpected(QStringLiteral("its characters are not sorted, or not characters"));
        }
        model.known.push_back(code);
    }

    bool isFinite = true;
    for (float& value : model.centre) {
        value = reader.nextFloat();
        isFinite = isFinite && std::isfinite(value);
    }
    model.projection.resize(featureSize * head.dimensions);
    for (float& value : model.projection) {
        value = reader.nextHalf();
        isFinite = isFinite && std::isfinite(value);
    }
    model.scales.resize(head.characters);
    for (float& value : model.scales) {
        value = reader.nextFloat();
        isFinite = isFinite && std::isfinite(value) && value > 0;
    }
    if (!isFinite) {
        return std::unexpected(QStringLiteral("some of its numbers are none"));
    }
    const QByteArrayView means = reader.take(qsizetype(head.characters) * head.dimensions);
    model.rounded.assign(means.begin(), means.end());
    return model;
}

QByteArray CharacterModel::serialized() const {
    const QByteArray origin = madeFrom.toUtf8();
    const Head head{.version = formatVersion,
                    .originSize = quint32(origin.size()),
                    .features = featureSize,
                    .dimensions = quint32(dimensionCount),
                    .characters = quint32(known.size())};
    QByteArray bytes;
    bytes.reserve(sizeOf(head));
    bytes.append(magic);
    for (const quint32 number : {head.version, head.originSize, head.features, head.dimensions, head.characters}) {
        append(bytes, number);
    }
    bytes.append(origin);
    for (const char32_t character : known) {
        append(bytes, quint32(character));
    }
    for (const float value : centre) {
        append(bytes, value);
    }
    for (const float value : projection) {
        appendHalf(bytes, value);
    }
    for (const float value : scales) {
        append(bytes, value);
    }
    bytes.append(reinterpret_cast<const char*>(rounded.data()), qsizetype(rounded.size()));
    bytes.append(checksum(bytes));
    return bytes;
}

std::optional<std::size_t> CharacterModel::indexOf(char32_t character) const {
    const auto place = std::ranges::lower_bound(known, character);
    if (place == known.end() || *place != character) {
        return std::nullopt;
    }
    return std::size_t(place - known.begin());
}

std::vector<float> CharacterModel::project(const CharacterFeature& feature) const {
    const auto count = std::size_t(dimensionCount);
    std::vector<float> result(count, 0.0F);
    CharacterFeature fromCentre;
    std::ranges::transform(feature, centre, fromCentre.begin(), std::minus());
    for (std::size_t i = 0; i < featureSize; i += step) {
        addWeighted(fromCentre.data() + i, projection.data() + i * count, count, result.data());
    }
    makeUnit(result);
    return result;
}

std::vector<float> CharacterModel::mean(std::size_t index) const {
    assert(index < known.size());
    const std::span<const std::int8_t> values =
        std::span(rounded).subspan(index * std::size_t(dimensionCount), std::size_t(dimensionCount));
    std::vector<float> result;
    result.reserve(values.size());
    for (const std::int8_t value : values) {
        result.push_back(float(value) * scales[index]);
    }
    makeUnit(result); // rounding has changed its length a little
    return result;
}

CharacterCosts::CharacterCosts(const CharacterModel& model, std::span<const std::size_t> characters)
    : count(characters.size())
    , dimensions(std::size_t(model.dimensions()))
    , blocks((count + blockSize - 1) / blockSize * blockSize * paddedToSteps(dimensions), 0.0F) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::vector<float> mean = model.mean(characters[i]);
        float* block = blocks.data() + i / blockSize * blockSize * paddedToSteps(dimensions);
        for (std::size_t k = 0; k < dimensions; ++k) {
            block[k * blockSize + i % blockSize] = mean[k];
        }
    }
}

void CharacterCosts::costs(std::span<const float> projected, std::span<float> out) const {
    assert(projected.size() == dimensions && out.size() == count);
    std::array<float, featureSize> padded{};
    std::ranges::copy(projected, padded.begin());
    const float* block = blocks.data();
    for (std::size_t first = 0; first < count; first += blockSize) {
        std::array<float, blockSize> cosines{};
        for (std::size_t k = 0; k < paddedToSteps(dimensions); k += step, block += step * blockSize) {
            addWeighted(padded.data() + k, block, blockSize, cosines.data());
        }
        for (std::size_t i = 0; i < std::min(blockSize, count - first); ++i) {
            out[first + i] = 1 - cosines[i];
        }
    }
}

float CharacterCosts::cost(std::span<const float> projected, std::size_t character) const {
    assert(projected.size() == dimensions && character < count);
    const float* block = blocks.data() + character / blockSize * blockSize * paddedToSteps(dimensions);
    float cosine = 0;
    for (std::size_t k = 0; k < dimensions; ++k) {
        cosine += projected[k] * block[k * blockSize + character % blockSize];
    }
    return 1 - cosine;
}

} // namespace pelloran
