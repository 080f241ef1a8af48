#pragma once

#include "tools/stage/painting/BoardPainter.h"
#include "tools/stage/painting/CardPainter.h"
#include "tools/stage/painting/Lettering.h"
#include "tools/stage/painting/ScreenPlan.h"
#include "tools/stage/painting/Words.h"

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
