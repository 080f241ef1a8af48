#pragma once

#include "model/DraftModel.h"

#include <QString>
#include <QStringView>

#include <array>
#include <optional>
#include <vector>

// What the overlay shows, as plain values, and the rule that decides which figures stand out. Nothing here needs a
// screen.
namespace pelloran {

class MetricKind {
public:
    enum Value {
        deckWinRate,
        drawnWinRate,
        playedWinRate,
        popularity,
        avgCopies,
        classWinRate,
        pickRate,
        pct7Plus,
        classRank,
    };

    constexpr MetricKind(Value kind)
        : value(kind) {}

    constexpr operator Value() const { return value; }

    static constexpr std::array<Value, 9> allCases() {
        return {deckWinRate,  drawnWinRate, playedWinRate, popularity, avgCopies,
                classWinRate, pickRate,     pct7Plus,      classRank};
    }

    // Rows of a card's tile, top to bottom.
    static constexpr std::array<Value, 5> cardKinds() {
        return {deckWinRate, drawnWinRate, playedWinRate, popularity, avgCopies};
    }

    // Rows of a hero's tile, top to bottom.
    static constexpr std::array<Value, 4> heroKinds() { return {classWinRate, pickRate, pct7Plus, classRank}; }

    // The raw value is the case's name.
    static std::optional<MetricKind> fromRawValue(QStringView text);
    QString rawValue() const;

    // Caption in the language in force.
    QString label() const;

    // Popularity is none, although it is a share: its source gives it as a plain number and it is shown as one.
    bool isPercent() const;

    // False for the rank alone: rank 1 is the best.
    bool higherIsBetter() const;

private:
    Value value;
};

// How a figure compares with the same figure of the other offers.
enum class MetricHighlight { high, low, normal };

// A value that is no number equals nothing, itself included, and is never marked; no data file can hold one. It is
// written as printf writes it, like every other value.
struct MetricValue {
    MetricKind kind = MetricKind::deckWinRate;
    std::optional<double> value; // in the unit of the data files: percentages from 0 to 100; absent: not known
    MetricHighlight highlight = MetricHighlight::normal;

    // As the panel shows it, with a full stop as the decimal point in every language; "—" when not known.
    QString formatted() const;

    bool operator==(const MetricValue&) const = default;
};

// One tile.
struct OverlayCardViewModel {
    QString slotLabel;
    QString name;
    std::optional<QString> subtitle;  // a second line; cards have none
    std::vector<MetricValue> metrics; // rows in the order shown
    bool recognized = false;          // false: the tile says so in place of its rows

    bool operator==(const OverlayCardViewModel&) const = default;
};

// Everything the panel shows at one moment.
struct OverlaySnapshot {
    QString title;
    std::optional<QString> message;          // a line under the title
    std::vector<OverlayCardViewModel> cards; // left to right; empty outside a pick
    bool inDraft = false;
    DraftPhase phase = DraftPhase::idle;

    // Outside a draft.
    static OverlaySnapshot idle(const QString& message);

    // No tiles, but a word on why.
    static OverlaySnapshot status(const QString& message, bool inDraft);

    bool operator==(const OverlaySnapshot&) const = default;
};

namespace MetricHighlighter {

// Marks, kind by kind, the best value among the tiles `high` and the worst `low`. Ties share the mark. Nothing is
// touched for a kind with fewer than two known values or with all values equal. Only the first metric of a kind in a
// tile counts.
void applyHighlights(std::vector<OverlayCardViewModel>& tiles);

} // namespace MetricHighlighter

} // namespace pelloran
