#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <vector>

namespace pelloran::stage {

// Language of the simulated game.
enum class Language { english, chinese };

// A name in both languages.
struct Name {
    QString english;
    QString chinese;

    const QString& in(Language language) const { return language == Language::english ? english : chinese; }

    bool operator==(const Name&) const = default;
};

struct Card {
    QString id;
    Name name;
    int cost = 0;
    QString rarity;    // "FREE", "COMMON", "RARE", "EPIC", "LEGENDARY"
    QString type;      // "MINION", "SPELL", "WEAPON", "HERO"
    QString cardClass; // class key, or "NEUTRAL"
    int attack = 0;
    int health = 0;      // of a weapon: its durability
    QStringList rules;   // such as "taunt" or "damage:3"; see rulesText()
    bool golden = false; // the precious version of it, with a frame of gold

    bool operator==(const Card&) const = default;
};

struct HeroClass {
    QString key; // such as "MAGE"
    Name name;
    QString heroId; // such as "HERO_08"
    Name heroName;

    bool operator==(const HeroClass&) const = default;
};

// The cards and classes of the sample data, compiled into the program. Immutable; safe from any thread.
class Catalogue {
public:
    static const Catalogue& sample();

    Catalogue(const Catalogue&) = delete;
    Catalogue& operator=(const Catalogue&) = delete;

    // Null when there is none of that identifier. Valid as long as the program runs.
    const Card* card(const QString& id) const;
    const HeroClass* heroClass(const QString& key) const;

    const std::vector<Card>& cards() const { return allCards; }

    const std::vector<HeroClass>& heroClasses() const { return allClasses; }

private:
    Catalogue();

    std::vector<Card> allCards;
    std::vector<HeroClass> allClasses;
    QHash<QString, const Card*> cardsById;
    QHash<QString, const HeroClass*> classesByKey;
};

// What the card says, in this project's own words. Empty for a card without rules.
QString rulesText(const Card& card, Language language);

} // namespace pelloran::stage
