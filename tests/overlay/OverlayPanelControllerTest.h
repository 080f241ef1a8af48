#pragma once

#include "localisation/AppLanguage.h"
#include "overlay/OverlayPanel/views/CardsStack.h"
#include "overlay/OverlayPanel/views/CardTileView.h"
#include "overlay/OverlayPanel/views/FloatingPanel.h"
#include "overlay/OverlayPanel/views/RootContent.h"
#include "overlay/OverlayPanelController.h"
#include "tests/fakes/FakePanelWindow.h"
#include "tests/fakes/FakeSystemSettings.h"
#include "tests/support/ManualAnimationTime.h"
#include "tests/support/PanelDrag.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

// The panel on Qt's platform without a screen, in a time of its own.
namespace pelloran {

using namespace Qt::StringLiterals;

inline OverlaySnapshot tiles(int count, const QString& name = u"Fireball"_s) {
    OverlaySnapshot snapshot{u"Mage · pick 3"_s, {}, {}, true, DraftPhase::cardPick};
    for (int index = 0; index < count; ++index) {
        OverlayCardViewModel card{QString::number(index), name, {}, {}, true};
        for (const MetricKind kind : MetricKind::cardKinds()) {
            card.metrics.emplace_back(kind, 50.0 + index);
        }
        snapshot.cards.push_back(card);
    }
    return snapshot;
}

inline OverlaySnapshot message(const QString& text = u"Waiting"_s) {
    return {u"Arena"_s, text, {}, false, DraftPhase::idle};
}

class OverlayPanelControllerTest : public ::testing::Test {
public:
    ~OverlayPanelControllerTest() override {
        controller.reset();
        AppLanguage::configure(nullptr, nullptr);
    }

protected:
    OverlayPanelControllerTest() {
        AppLanguage::overridePreference(AppLanguage::en);
        build();
    }

    void build(MotionPreference motion = MotionPreference::asDesktopSays) {
        auto owned = std::make_unique<testing::FakePanelWindow>();
        window = owned.get();
        controller = std::make_unique<OverlayPanelController>(settings, std::move(owned), motion);
    }

    // Longer than every animation that follows from another.
    void settle() { time.pass(1600, 100); }

    void showSettled() {
        controller->show();
        settle();
    }

    void update(const OverlaySnapshot& snapshot) {
        controller->update(snapshot);
        testing::turnEventLoop();
    }

    void updateSettled(const OverlaySnapshot& snapshot) {
        update(snapshot);
        settle();
    }

    FloatingPanel& panel() const { return controller->window(); }

    const ResolvedMetrics& metrics() const { return controller->metricsInForce(); }

    // A scale that changes no length and no font is not stored when the panel comes to rest.
    bool looksAsResolvedFor(int cardCount, Axis previous = Axis::vertical) const {
        const auto resolved = ResolvedMetrics::resolve(panel().frame().size(), cardCount, previous);
        return metrics().layoutEquals(resolved) && metrics().typographyEquals(resolved);
    }

    template <typename View>
    std::vector<View*> views() const {
        std::vector<View*> found;
        for (QWidget* widget : panel().findChildren<QWidget*>()) {
            if (auto* view = dynamic_cast<View*>(widget)) {
                found.push_back(view);
            }
        }
        return found;
    }

    RootContent& root() const { return *views<RootContent>().front(); }

    CardsStack& stack() const { return *root().cardsStack; }

    CardTileView& tile(std::size_t index) const { return *views<CardTileView>().at(index); }

    int tilesShown() const {
        return static_cast<int>(
            std::ranges::count_if(views<CardTileView>(), [](CardTileView* view) { return view->isVisible(); }));
    }

    bool tilesStandSideBySide() const { return tile(1).x() > tile(0).x() && tile(1).y() == tile(0).y(); }

    // A run that begins where the one before has ended, as `memory` has it.
    void startAnew(UserDefaults& memory) {
        controller.reset();
        controller = std::make_unique<OverlayPanelController>(settings, std::make_unique<testing::FakePanelWindow>(),
                                                              MotionPreference::asDesktopSays, &memory);
        controller->open();
        settle();
    }

    // By the right edge, in steps, with a turn of the event loop after each.
    void dragWidthTo(int width, bool release = true) {
        testing::PanelDrag drag(panel(), {panel().width() - 1.0, panel().height() / 2.0});
        const int from = panel().width();
        for (int step = 1; step <= 10; ++step) {
            drag.moveBy({(width - from) * step / 10.0, 0});
            testing::turnEventLoop();
        }
        if (release) {
            drag.release();
            testing::turnEventLoop();
        }
    }

    testing::ManualAnimationTime time;
    testing::FakeSystemSettings settings;
    testing::FakePanelWindow* window = nullptr; // the controller's
    std::unique_ptr<OverlayPanelController> controller;
};

} // namespace pelloran
