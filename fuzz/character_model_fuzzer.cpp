// Any bytes as a model of characters, as they are and with the checksum that they need, and as changes to one that is
// good. What parses has to be the same file again, and to be fit for use.

#include "fuzz/Require.h"
#include "reading/chinese/CharacterModel.h"

#include <QCryptographicHash>

#include <cstdint>

namespace {

using namespace pelloran;
using fuzzing::require;

void parse(const QByteArray& bytes) {
    const auto model = CharacterModel::parse(bytes);
    if (!model) {
        require(!model.error().isEmpty());
        return;
    }
    require(model->serialized() == bytes);
    const std::size_t last = model->characters().size() - 1;
    for (std::size_t i = 0; i <= last; ++i) {
        require(model->indexOf(model->characters()[i]) == i);
    }
    const CharacterCosts among(*model, std::vector<std::size_t>{0, last});
    std::vector<float> costs(2);
    CharacterFeature feature{};
    feature.front() = 1;
    const std::vector<float> projected = model->project(feature);
    among.costs(projected, costs);
    (void)among.cost(projected, 1);
    (void)model->mean(last);
}

QByteArray withChecksum(const QByteArray& bytes) {
    return bytes + QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

// Without its checksum.
const QByteArray& goodModel() {
    static const QByteArray bytes = [] {
        CharacterModel::Parts parts;
        parts.origin = QStringLiteral("made up");
        parts.characters = U"一丁\U00020000";
        parts.dimensions = 2;
        parts.projection.assign(featureSize * 2, 0.5F);
        parts.means = {1, 0, 0, 1, 0.6F, 0.8F};
        return CharacterModel::of(std::move(parts)).serialized().chopped(32);
    }();
    return bytes;
}

// Each three bytes: how far behind the change before it a byte is, and what it becomes; or the bytes to cut off.
QByteArray changed(const std::uint8_t* data, std::size_t size) {
    QByteArray bytes = goodModel();
    qsizetype place = 0;
    for (std::size_t i = 0; i + 2 < size && !bytes.isEmpty(); i += 3) {
        place = (place + data[i] + 256 * (data[i + 1] % 128)) % bytes.size();
        if (data[i + 1] < 248) {
            bytes[place] = char(data[i + 2]);
        } else {
            bytes.remove(place, data[i + 2]);
        }
    }
    return bytes;
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    parse(bytes);
    parse(withChecksum(bytes));
    parse(withChecksum(changed(data, size)));
    return 0;
}
