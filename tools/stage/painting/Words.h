#pragma once

#include "tools/stage/Catalogue.h"

#include <QString>

#include <utility>
#include <vector>

namespace pelloran::stage {

// What the game says outside of cards.
struct Words {
    QString mainMenu;
    QString theArena;
    QString chooseHero;
    QString chooseCard;
    QString redraft;
    QString deckComplete;
    QString deck;
    QString cards;
    QString choose;
    QString play;
    QString arena;
    QString collection;
    QString options;
    QString quit;
    QString resume;
    QString wins;
    QString back;
    QString search;
    std::vector<std::pair<QString, QString>> keywords; // and what each means, for the tooltips

    static const Words& in(Language language);
};

} // namespace pelloran::stage
