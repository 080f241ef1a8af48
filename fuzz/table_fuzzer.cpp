// Any bytes as a table of cards. What is taken has to be a card file that clients take, and what is not has to say why.

#include "data/CardFile.h"
#include "fuzz/Require.h"
#include "publish/CardLists.h"
#include "publish/CardTable.h"

#include <cstdint>

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace pelloran;
    using fuzzing::require;
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto cards = cardsFromTable(bytes, QStringLiteral("then"), CardLists());
    if (!cards) {
        require(!cards.error().isEmpty());
        return 0;
    }
    const auto decoded = CardFile::decode(cards->file, QStringLiteral("table"));
    require(decoded && !decoded->rows.empty());
    return 0;
}
