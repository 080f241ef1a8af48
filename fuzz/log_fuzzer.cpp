// Reads any bytes as the game's logs and holds the result against patterns over the whole text.

#include "tests/draft/logs/LogFragments.h"
#include "tests/draft/logs/PlainArenaLog.h"

#include <cstdint>
#include <cstdlib>

namespace {

// Bytes as they are, or as a choice of pieces that mean something: mutated bytes alone hardly ever spell a line.
QByteArray logOf(QByteArrayView input) {
    if (input.isEmpty() || input.front() % 2 == 0) {
        // Only text gets past the reading of files.
        return QString::fromUtf8(input).toUtf8();
    }
    return pelloran::testing::logOfFragments(input.sliced(1));
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name libFuzzer calls
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray log = logOf({reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)});
    pelloran::DraftState fast;
    pelloran::readArenaLog(log, fast);
    pelloran::DraftState plain;
    pelloran::testing::plainReadArenaLog(log, plain);
    if (fast != plain || pelloran::lastScene(log) != pelloran::testing::plainLastScene(log)) {
        std::abort();
    }
    return 0;
}
