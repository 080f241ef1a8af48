#pragma once

#include "names/NameMatching.h"

#include <QRectF>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <array>
#include <map>
#include <optional>

// The values that the following of a draft passes around. All are plain: copied, compared field by field, owning
// nothing.
namespace pelloran {

enum class DraftPhase { idle, heroPick, cardPick };

// One of the three offers, left to right on the screen.
class DraftSlot {
public:
    enum Value { left, middle, right };

    constexpr DraftSlot(Value slot)
        : value(slot) {}

    constexpr operator Value() const { return value; }

    // In the order in which offers are shown and gone through.
    static constexpr std::array<Value, 3> allCases() { return {left, middle, right}; }

    // Takes exactly "left", "middle" and "right".
    static std::optional<DraftSlot> fromRawValue(QStringView text);
    QString rawValue() const;

    // Key of the caches per slot: the raw value.
    QString key() const { return rawValue(); }

    // Short caption in the language in force, such as "L" or "左".
    QString label() const;

private:
    Value value;
};

// What the game's logs say at one moment.
struct DraftState {
    bool inDraft = false;                          // an Arena draft is in progress on screen
    QString draftMode = QStringLiteral("UNKNOWN"); // last mode the game announced: "DRAFTING", "REDRAFTING", ...
    // Last game mode, such as "DRAFT". "NO_SESSION" when there is no log session; "UNKNOWN" (nothing read yet) counts
    // as compatible with a draft.
    QString scene = QStringLiteral("UNKNOWN");
    std::optional<QString> deckId;         // digits
    std::optional<QString> hero;           // hero's card identifier
    bool hasHero = false;                  // the hero of this draft has been chosen
    QStringList deckCardIds;               // in log order, duplicates kept
    std::optional<QString> lastChoiceName; // display name of the most recent pick
    std::optional<QString> lastChoiceId;   // card identifier of the most recent pick
    std::optional<QString> sessionDir;     // path of the session folder read
    DraftPhase phase = DraftPhase::idle;

    bool operator==(const DraftState&) const = default;
};

// What recognition made of one offer.
struct SlotMatch {
    DraftSlot slot = DraftSlot::left;
    std::optional<QString> cardId; // card identifier at a card pick, class key at a hero pick; absent: nothing matched
    double confidence = 0;         // 0 to 1; 0 when nothing matched
    // "card-layout" or "class-layout", with "-empty" when no text matched anywhere and "-miss" when this slot got none.
    QString method;
    QString ocrText; // text read for this slot; "" for none

    bool operator==(const SlotMatch&) const = default;
};

// Settings of the loop that follows a draft.
struct AppConfig {
    using Regions = std::map<DraftSlot, QRectF>;

    // Where offers lie, in fractions of the window's image, y from the top. Carried as settings: recognition looks at
    // the whole image and goes by where text stands.
    static Regions defaultCardRois();
    static Regions defaultHeroRois();

    Regions cardRois = defaultCardRois();
    Regions heroRois = defaultHeroRois();
    double pollInterval = 0.9; // seconds
    QString logsDir = QStringLiteral("/Applications/Hearthstone/Logs");
    QString windowOwnerHint = QStringLiteral("Hearthstone");
    NameLengths nameLengths = NameLengths::limited; // which lines are too long to be names

    bool operator==(const AppConfig&) const = default;
};

} // namespace pelloran
