#include "benchmarks/SharedCards.h"

#include "data/WinrateFormats.h"

#include <QFile>

#include <cmath>
#include <random>

using namespace Qt::StringLiterals;

namespace pelloran::benchmarks {

std::optional<QByteArray> cardFileOfSharedNames() {
    QFile source(QStringLiteral(PELLORAN_TEST_DATA "/cards.json"));
    if (!source.open(QFile::ReadOnly)) {
        return std::nullopt;
    }
    auto rows = decodeCards(source.readAll());
    if (!rows) {
        return std::nullopt;
    }
    std::mt19937 random(1);
    const auto figure = [&random] { return std::round(static_cast<double>(random() % 100'000)) / 1000; };
    for (CardStats& row : *rows) {
        row.deckWinRate = figure();
        row.drawnWinRate = figure();
        row.playedWinRate = figure();
        row.popularity = figure();
        row.avgCopiesInDeck = figure();
        row.numGames = static_cast<qint64>(random() % 1'000'000);
    }
    return WinrateFile{u"ALL"_s, u"LAST_7_DAYS"_s, {}, {}, *rows}.encode();
}

} // namespace pelloran::benchmarks
