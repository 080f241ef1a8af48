#pragma once

#include "stage/painting/BoardPainter.h"
#include "stage/painting/CardPainter.h"
#include "stage/painting/Lettering.h"
#include "stage/painting/ScreenPlan.h"
#include "stage/painting/Words.h"

#include <QPainter>

#include <vector>

// Screens outside of the Arena that show cards and names too.
namespace pelloran::stage {

// An open book with two rows of cards.
void paintCollection(QPainter& painter, const ScreenPlan& plan, const Lettering& lettering, const BoardPainter& board,
                     const std::vector<Card>& cards, Language language, quint32 seed);

// Nine boxes with a deck each.
void paintDecks(QPainter& painter, const ScreenPlan& plan, const Lettering& lettering, const BoardPainter& board,
                Language language, quint32 seed);

} // namespace pelloran::stage
