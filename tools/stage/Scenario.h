#pragma once

#include "tools/stage/Catalogue.h"
#include "tools/stage/Look.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <expected>
#include <optional>
#include <vector>

namespace pelloran::stage {

enum class StepKind {
    idle,       // the main menu
    heroPick,   // three classes on offer
    lookAtHero, // one of them has been clicked but not confirmed
    chooseHero, // one of them has been confirmed
    cardPick,   // three cards on offer
    choose,     // one of them has been taken
    skipAhead,  // many picks at once, as if time had jumped
    redraft,    // back from a lost game, cards will be replaced
    end,        // the deck is complete
};

QString kindName(StepKind kind);

struct Step {
    StepKind kind = StepKind::idle;
    std::chrono::milliseconds duration{4000};
    std::vector<HeroClass> heroes; // the offers of heroPick, lookAtHero and chooseHero
    std::vector<Card> cards;       // the offers of cardPick and choose; the picks of skipAhead
    std::optional<int> chosen;     // index among the offers, at lookAtHero, chooseHero and choose

    bool operator==(const Step&) const = default;
};

constexpr int deckSize = 30;

// A draft as it will be played. Every step fits the one before it: a choice is one of the offers on screen.
struct Scenario {
    QString name;
    QString about;
    Language language = Language::english;
    Look look = Look::felt;
    std::vector<Step> steps; // at least one

    // From JSON as tools/stage/README.md describes it. The error says which step is wrong and why.
    static std::expected<Scenario, QString> parse(const QByteArray& json);

    // A scenario that ships with the program, by its name, or else a file.
    static std::expected<Scenario, QString> load(const QString& nameOrPath);

    static QStringList shippedNames();
};

// What the player sees at a step, all earlier steps told.
struct Situation {
    Step step;
    std::optional<HeroClass> hero; // once confirmed
    std::vector<Card> deck;        // in the order of picking; a redraft replaces the oldest
    bool redrafting = false;
    bool deckComplete = false;
};

Situation situationAt(const Scenario& scenario, std::size_t step);

} // namespace pelloran::stage
