#include "tools/stage/painting/Screen.h"

namespace pelloran::stage {

Screen Screen::onStage(const Situation& situation) {
    Screen screen;
    screen.situation = situation;
    if (situation.step.kind == StepKind::choose) {
        screen.hovered = situation.step.chosen;
        screen.glow = Glow::yellow;
    } else if (situation.step.kind == StepKind::cardPick) {
        // On each of the offers in turn, and every fourth time on none.
        const auto turn = static_cast<int>(situation.deck.size() % 4);
        if (turn < 3) {
            screen.hovered = turn;
            screen.tooltip = turn == 1;
        }
    }
    return screen;
}

} // namespace pelloran::stage
