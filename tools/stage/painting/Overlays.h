#pragma once

#include "tools/stage/painting/BoardPainter.h"
#include "tools/stage/painting/HeroPainter.h"
#include "tools/stage/painting/Lettering.h"
#include "tools/stage/painting/ScreenPlan.h"
#include "tools/stage/painting/Words.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <vector>

// What comes and goes over the board.
namespace pelloran::stage {

// The grey box beside a card (its outline in the window) that tells what a keyword means.
void paintTooltip(QPainter& painter, const Lettering& lettering, const ScreenPlan& plan, const Words& words,
                  std::size_t keyword, const QRectF& card);

// The mouse: a glove that points up and to the left, to `tip`.
void paintGlove(QPainter& painter, QPointF tip, double unit);

// A hero that has been clicked, large over the darkened board, with a button to confirm.
void paintZoomedHero(QPainter& painter, const Lettering& lettering, const ScreenPlan& plan, const HeroPainter& heroes,
                     const BoardPainter& board, const HeroClass& hero, Language language);

// The game's menu in the middle, over what has lost its sharpness.
void paintMenuOver(QImage& scene, const Lettering& lettering, const ScreenPlan& plan, const BoardPainter& board,
                   const Words& words);

// Burns `offer`, a picture of the window's size that holds one card, away: holes grow with `progress` (0 to 1), their
// edges glow.
void burn(QImage& offer, const QRect& box, double progress, double unit, quint32 seed);

} // namespace pelloran::stage
