// Merges any bytes as the game's log.config: nothing that is outside of the two sections goes, and what is merged again
// stays as it is.

#include "draft/logs/LogConfig.h"
#include "fuzz/Require.h"

#include <cstdint>

using namespace pelloran;

// NOLINTNEXTLINE(readability-identifier-naming): the name libFuzzer calls
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray text(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto once = mergeLogConfig(text);
    if (!once) {
        return 0;
    }
    fuzzing::require(once->changes.isEmpty() == (once->text == text));
    const auto twice = mergeLogConfig(once->text);
    fuzzing::require(twice && twice->text == once->text && twice->changes.isEmpty());
    if (!text.contains('[')) {
        fuzzing::require(once->text.startsWith(text));
    }
    return 0;
}
