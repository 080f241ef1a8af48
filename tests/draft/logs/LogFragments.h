#pragma once

#include <QByteArray>

// Pieces of which tests put together logs that no game would write: every text that means something, whole and torn,
// every line end, digits and blanks of other scripts, names, and the same things run together.
namespace pelloran::testing {

constexpr const char* logFragments[] = {
    "\n",
    "\n",
    "\n",
    "\r\n",
    "\r",
    "\v",
    "\f",
    "\u0085",
    "\u2028",
    "\u2029",
    " ",
    "\t",
    "\u00a0",
    "\u3000",
    "\u180e",
    "\u200b",
    "currMode=",
    "currMode=DRAFT",
    "currMode=HUB_",
    "currMode=d",
    "SetDraftMode - ",
    "SetDraftMode - DRAFTING",
    "SetDraftMode - REDRAFTING",
    "SetDraftMode",
    " - ",
    "DraftManager.OnBegin",
    "DraftManager.OnBegin - ",
    "DraftManager.",
    "Got new draft deck with ID: ",
    "Got new draft deck with ID: 42",
    "Got new draft deck with ID: x",
    "OnChosen(): hero=",
    "OnChosen(): hero=HERO_08",
    "Hero Card = ",
    "Hero Card = HERO_01",
    "Hero Card = \u00e9",
    "Client chooses: ",
    "Client chooses: ",
    "Client chooses:  (",
    " (HERO_",
    " (HERO_05)",
    " (TLC_460)",
    " (TLC-460)",
    "(X)",
    " (",
    ")",
    "DraftManager.OnChoicesAndContents - Draft Deck ID:",
    "DraftManager.OnChoicesAndContents - Draft Deck ID: 77, Hero Card = HERO_09",
    "DraftManager.OnChoicesAndContents - ",
    "Draft Deck ID: ",
    "Draft Deck ID: 7, Hero Card = ",
    ", Hero Card = ",
    "Draft deck contains card ",
    "Draft deck contains card EX1_066",
    "Draft deck contains card \u5361",
    "0123",
    "\u0663\u0664",
    "\uff11",
    "A",
    "_9",
    "z",
    "\u706b\u7403\u672f",
    "\U0001f600",
    "e\u0301",
};

// Every byte of `picks` names one piece; the pieces follow each other.
inline QByteArray logOfFragments(QByteArrayView picks) {
    QByteArray log;
    for (const char pick : picks) {
        log += logFragments[static_cast<unsigned char>(pick) % std::size(logFragments)];
    }
    return log;
}

} // namespace pelloran::testing
