// Any strip of a ribbon, and any known names, without the search for lines that takes most of the time of a whole
// picture. A name that is read has to be a known one, and as likely as the reader promises.

#include "fuzz/AnyNames.h"
#include "reading/chinese/ChineseInk.h"
#include "reading/chinese/ChineseLineReader.h"

#include <algorithm>
#include <cmath>

namespace {

using namespace pelloran;
using fuzzing::Bytes;
using fuzzing::require;

void fill(Plane& plane, QRect area, int value) {
    area = area.intersected(QRect(0, 0, plane.width, plane.height));
    for (int y = area.top(); y <= area.bottom(); ++y) {
        std::fill_n(plane.row(y) + area.left(), std::max(0, area.width()), std::uint8_t(value));
    }
}

// Strokes anywhere, or in the cells of characters.
Plane stripFrom(Bytes& bytes) {
    Plane strip(1 + bytes.take() * (1 + bytes.take() % 4), stripRows, std::uint8_t(bytes.take()));
    const int pitch = 20 + bytes.take() % 40;
    while (!bytes.isEmpty()) {
        const int where = bytes.take();
        const int left = where & 1 ? where / 2 * pitch / 4 : where / 2 * strip.width / 128;
        const QRect stroke(left, bytes.take() % stripRows, 1 + bytes.take() % 40, 1 + bytes.take() % 40);
        const int shade = bytes.take();
        if (shade & 1) { // an outline
            fill(strip, stroke.adjusted(-2, -2, 2, 2), 0);
        }
        fill(strip, stroke, shade);
    }
    return strip;
}

void readAs(const ChineseAcceptance& acceptance, const std::vector<std::optional<Plane>>& sights,
            ChineseLineReader& reader, const Lexicon& lexicon, const QStringList& names) {
    const auto reading =
        reader.read(sights.size(), [&](std::size_t index) { return sights[index]; }, lexicon, acceptance);
    if (reading) {
        require(!reading->text.isEmpty());
        require(!std::isnan(reading->nameCost) && !std::isnan(reading->letterCost));
        require(!reading->isName || names.contains(reading->text));
        require(!reading->isName || reading->nameCost <= acceptance.greatestCostAmply);
    }
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    const QStringList names = fuzzing::namesFrom(bytes);
    const auto lexicon = fuzzing::lexiconOf(names);
    const int how = bytes.take();
    const int level = 1 + bytes.take() % 254;
    const int other = bytes.take();
    const Extent part{bytes.take(), bytes.take()};
    const Plane strip = stripFrom(bytes);
    const int left = part.left * strip.width / 256;
    const Extent seen{left, left + 1 + part.right * (strip.width - left - 1) / 256};
    std::vector<std::optional<Plane>> sights{trimmedLine(inkOf(strip, seen), seen, level)};
    if (how & 1) { // as ink already
        sights.push_back(trimmedLine(strip, seen, level));
    }
    if (how & 2) { // as it is: nothing is trimmed, and it may be all black
        sights.emplace_back(strip);
    }
    for (const std::optional<Plane>& sight : sights) {
        require(!sight || (sight->width > 0 && sight->height > 0));
    }
    ChineseLineReader reader(*fuzzing::model());
    readAs(ofChineseCards, sights, reader, *lexicon, names);
    readAs(ofChineseClasses, sights, reader, *lexicon, names);
    if (how & 4) {
        const QStringList others = names.mid(other % std::max<qsizetype>(1, names.size()));
        readAs(ofChineseCards, sights, reader, *fuzzing::lexiconOf(others), others);
    }
    return 0;
}
