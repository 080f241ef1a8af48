#include "tools/stage/LogScript.h"

#include <algorithm>
#include <utility>

namespace pelloran::stage {

namespace {

const QString noDraft = QStringLiteral("NO_ACTIVE_DRAFT");
const QString drafting = QStringLiteral("DRAFTING");
const QString redrafting = QStringLiteral("REDRAFTING");
const QString deckComplete = QStringLiteral("ACTIVE_DRAFT_DECK");

} // namespace

LogScript::LogScript(Language clientLanguage, qint64 firstDeckId)
    : language(clientLanguage)
    , deckId(firstDeckId - 1) {}

std::vector<LogLine> LogScript::start() {
    changeScene(QStringLiteral("LOGIN"));
    changeScene(QStringLiteral("HUB"));
    return std::exchange(lines, {});
}

std::vector<LogLine> LogScript::begin(const Step& step) {
    switch (step.kind) {
    case StepKind::idle:
        changeScene(QStringLiteral("HUB"));
        break;
    case StepKind::heroPick:
        mode = noDraft;
        enterDraft();
        beginDraft();
        break;
    case StepKind::lookAtHero:
    case StepKind::chooseHero: {
        const HeroClass& chosen = step.heroes[static_cast<std::size_t>(*step.chosen)];
        choose(chosen.heroName.in(language), chosen.heroId);
        if (step.kind == StepKind::chooseHero) {
            hero = chosen.heroId;
            arena(QStringLiteral("DraftManager.OnChosen(): hero=") + hero);
        }
        break;
    }
    case StepKind::cardPick:
        enterDraft();
        break;
    case StepKind::choose: {
        const Card& chosen = step.cards[static_cast<std::size_t>(*step.chosen)];
        choose(chosen.name.in(language), chosen.id);
        deck.append(chosen.id);
        break;
    }
    case StepKind::skipAhead:
        enterDraft();
        for (const Card& card : step.cards) {
            choose(card.name.in(language), card.id);
            deck.append(card.id);
        }
        break;
    case StepKind::redraft:
        // The player lost a game: the draft screen is entered anew, now for replacing cards.
        changeScene(QStringLiteral("GAMEPLAY"));
        mode = redrafting;
        enterDraft();
        break;
    case StepKind::end:
        setMode(deckComplete);
        deck = deck.last(std::min<qsizetype>(deck.size(), deckSize)); // those that a redraft replaced are gone
        break;
    }
    return std::exchange(lines, {});
}

void LogScript::changeScene(const QString& next) {
    if (scene == next) {
        return;
    }
    const QString change = QStringLiteral("prevMode=%1 nextMode=%2 m_phase=INVALID").arg(scene, next);
    loadingScreen(QStringLiteral("OnScenePreUnload() - ") + change);
    loadingScreen(QStringLiteral("OnSceneUnloaded() - ") + change);
    loadingScreen(QStringLiteral("OnSceneLoaded() - prevMode=%1 currMode=%2").arg(scene, next));
    if (next == u"LOGIN") {
        loadingScreen(QStringLiteral("OnSceneLoaded() - m_assetLoadStartTimestamp=7800725337780"));
    }
    loadingScreen(QStringLiteral("OnSceneLoaded() - END - INVALID != Phase.WAITING_FOR_SCENE_LOAD"));
    scene = next;
}

// Entering the draft screen tells the whole draft again; staying on it tells nothing.
void LogScript::enterDraft() {
    if (scene == u"DRAFT") {
        return;
    }
    changeScene(QStringLiteral("DRAFT"));
    if (mode != noDraft) {
        writeDeck();
    }
    setMode(mode);
}

void LogScript::beginDraft() {
    ++deckId;
    hero.clear();
    deck.clear();
    arena(QStringLiteral("DraftManager.OnBegin - Got new draft deck with ID: %1").arg(deckId));
    setMode(drafting);
}

void LogScript::writeDeck() {
    arena(
        QStringLiteral("DraftManager.OnChoicesAndContents - Draft Deck ID: %1, Hero Card = %2").arg(deckId).arg(hero));
    for (const QString& id : std::as_const(deck)) {
        arena(QStringLiteral("DraftManager.OnChoicesAndContents - Draft deck contains card ") + id);
    }
}

void LogScript::setMode(const QString& next) {
    mode = next;
    arena(QStringLiteral("SetDraftMode - ") + mode);
}

void LogScript::choose(const QString& displayName, const QString& id) {
    arena(QStringLiteral("Client chooses: %1 (%2)").arg(displayName, id));
}

void LogScript::arena(const QString& text) {
    lines.push_back({LogFile::arena, text});
}

void LogScript::loadingScreen(const QString& text) {
    lines.push_back({LogFile::loadingScreen, QStringLiteral("LoadingScreen.") + text});
}

} // namespace pelloran::stage
