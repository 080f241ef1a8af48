#pragma once

#include "model/DraftModel.h"

#include <QByteArrayView>
#include <QString>

#include <optional>
#include <string_view>

// What the texts of the game's logs say. Nothing here touches files, and every text of valid UTF-8 is fine, however it
// was cut or mixed up.
namespace pelloran {

// Last game mode a loading-screen log announces, such as "DRAFT".
std::optional<QString> lastScene(QByteArrayView loadingScreenLog);

// Sets what an arena log tells: `draftMode`, and of the current draft `deckId`, `hero`, `hasHero`, `deckCardIds`,
// `lastChoiceName` and `lastChoiceId`. Fields it says nothing about keep what they hold.
//
// A log of many megabytes takes a few milliseconds: its bytes are searched for the few lines that matter, and only
// those are decoded and matched.
void readArenaLog(QByteArrayView arenaLog, DraftState& state);

// Sets `inDraft` and `phase` by the other fields.
void decidePhase(DraftState& state);

// The lines the game writes, as texts for textPattern().
namespace LogPatterns {

constexpr QStringView currentMode = u"currMode=([A-Z_]+)";
constexpr QStringView draftMode = u"SetDraftMode - (\\S+)";
constexpr QStringView newDeck = u"Got new draft deck with ID: (\\d+)";
constexpr QStringView chosenHero = u"OnChosen\\(\\): hero=([A-Za-z0-9_]+)";
constexpr QStringView heroCard = u"Hero Card = ([A-Za-z0-9_]+)";
constexpr QStringView heroClicked = u"Client chooses: .+ \\(HERO_";
constexpr QStringView deckAndHero = u"Draft Deck ID: (\\d+), Hero Card = ([A-Za-z0-9_]+)";
constexpr QStringView deckCard = u"Draft deck contains card ([A-Za-z0-9_]+)";
constexpr QStringView choice = u"Client chooses: (.+?) \\(([A-Za-z0-9_]+)\\)";

// Plain texts: the last one begins the current draft, or within it the last listing of its deck.
constexpr std::string_view draftBegins = "DraftManager.OnBegin";
constexpr std::string_view deckListing = "DraftManager.OnChoicesAndContents - Draft Deck ID:";

} // namespace LogPatterns

} // namespace pelloran
