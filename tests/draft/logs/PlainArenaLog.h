#pragma once

#include "draft/logs/ArenaLog.h"
#include "draft/logs/TextPatterns.h"

#include <QByteArray>
#include <QString>

namespace pelloran::testing {

// What the logs mean, put as plainly as possible: every pattern over the whole decoded text. Far too slow for polls;
// the measure of whatever is fast.
inline std::optional<QString> plainLastScene(const QByteArray& loadingScreenLog) {
    const QStringList modes = matches(QString::fromUtf8(loadingScreenLog), LogPatterns::currentMode.toString());
    return modes.isEmpty() ? std::nullopt : std::optional(modes.last());
}

inline void plainReadArenaLog(const QByteArray& arenaLog, DraftState& state) {
    const QString log = QString::fromUtf8(arenaLog);
    if (const QStringList modes = matches(log, LogPatterns::draftMode.toString()); !modes.isEmpty()) {
        state.draftMode = modes.last();
    }
    const qsizetype begins = log.lastIndexOf(QString::fromStdString(std::string(LogPatterns::draftBegins)));
    const QString section = begins < 0 ? log : log.sliced(begins);

    if (const QStringList decks = matches(section, LogPatterns::newDeck.toString()); !decks.isEmpty()) {
        state.deckId = decks.first();
    }
    if (const auto chosen = firstMatch(section, LogPatterns::chosenHero.toString())) {
        state.hero = chosen->first();
        state.hasHero = true;
    } else if (const auto card = firstMatch(section, LogPatterns::heroCard.toString())) {
        state.hero = card->first();
        state.hasHero = true;
    } else if (firstMatch(section, LogPatterns::heroClicked.toString())) {
        state.hasHero = true;
    }

    const QString listing = QString::fromStdString(std::string(LogPatterns::deckListing));
    if (const QStringList pieces = section.split(listing); pieces.size() >= 2) {
        const QString block = listing + pieces.last();
        if (const auto head = firstMatch(block, LogPatterns::deckAndHero.toString())) {
            state.deckId = head->at(0);
            state.hero = head->at(1);
            state.hasHero = true;
        }
        state.deckCardIds = matches(block, LogPatterns::deckCard.toString());
    }
    if (const auto picks = allGroups(section, LogPatterns::choice.toString()); !picks.isEmpty()) {
        state.lastChoiceName = picks.last().at(0);
        state.lastChoiceId = picks.last().at(1);
    }
}

} // namespace pelloran::testing
