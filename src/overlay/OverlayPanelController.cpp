#include "overlay/OverlayPanelController.h"

#include "overlay/OverlayPanel/views/CardsStack.h"
#include "overlay/OverlayPanel/views/FloatingPanel.h"
#include "overlay/OverlayPanel/views/GeometryDriver.h"
#include "overlay/OverlayPanel/views/PanelColors.h"
#include "overlay/OverlayPanel/views/PanelViews.h"
#include "overlay/OverlayPanel/views/RootContent.h"
#include "platform/PanelWindow.h"
#include "platform/SystemSettings.h"
#include "platform/UserDefaults.h"

#include <QGuiApplication>
#include <QMetaObject>
#include <QPalette>
#include <QScreen>

#include <algorithm>
#include <utility>
#include <variant>
#include <vector>

namespace pelloran {

namespace {

// Seconds.
constexpr double relayoutDuration = 0.28;
constexpr double appearDuration = 0.28;
constexpr double frameDuration = 0.38;
constexpr double axisDuration = 0.22;

// Names of the animations; a new one of the same name takes over.
constexpr auto layoutAnimation = "layout";
constexpr auto frameAnimation = "frame";
constexpr auto alphaAnimation = "alpha";

PanelColors colorsOf(const SystemSettings& settings) {
    return PanelColors::of(settings.appearance().value_or(appearanceOf(QGuiApplication::palette())));
}

std::vector<ScreenInUse> screensOfQt() {
    std::vector<ScreenInUse> screens;
    for (const QScreen* screen : QGuiApplication::screens()) {
        screens.push_back({screen->name(), screen->geometry(), screen == QGuiApplication::primaryScreen()});
    }
    return screens;
}

PanelPlaces placesIn(const UserDefaults* memory) {
    return memory ? placesFrom(memory->string(OverlayPanelController::placesKey).value_or(QString())) : PanelPlaces();
}

void fadeIn(AnimationGroup& group, CardsStack& stack) {
    group.animate(stack, alphaAnimation,
                  [&stack, from = stack.alpha()](double progress) { stack.setAlpha(from + (1 - from) * progress); });
}

} // namespace

const QString OverlayPanelController::placesKey = QStringLiteral("pelloran.panel");

OverlayPanelController::OverlayPanelController(const SystemSettings& systemSettings,
                                               std::unique_ptr<PanelWindow> window, MotionPreference motionPreference,
                                               UserDefaults* userDefaults, const Screens& screens)
    : OverlayPanelController(systemSettings, std::move(window), motionPreference, userDefaults,
                             screens ? screens : screensOfQt,
                             placeToOpen(placesIn(userDefaults), arrangementOf(screens ? screens() : screensOfQt()),
                                         FloatingPanel::visibleFrames())) {}

OverlayPanelController::OverlayPanelController(const SystemSettings& systemSettings,
                                               std::unique_ptr<PanelWindow> window, MotionPreference motionPreference,
                                               UserDefaults* userDefaults, Screens screens, const PanelPlace& place)
    : settings(systemSettings)
    , motion(systemSettings, motionPreference)
    , memory(userDefaults)
    , screensInUse(std::move(screens))
    , asLeft(place)
    , state(initialPanelState(place.frame.size(), place.userSize))
    , views(std::make_unique<PanelViews>(std::move(window), colorsOf(systemSettings), state.metrics.current))
    , geometry(std::make_unique<GeometryDriver>(views->panel)) {
    FloatingPanel* panel = &views->panel;
    panel->setFrame(place.frame);
    connect(panel, &FloatingPanel::didEndDrag, this, [this, panel] {
        const bool isShown = asLeft.isShown;
        asLeft = {arrangementOf(screensInUse()), panel->frame(), state.userResizedFrame, isShown};
        hasUserActed = true;
        remember();
    });
    connect(panel, &FloatingPanel::didCloseByUser, this, [this] { setWanted(false); });
    connect(panel, &FloatingPanel::didResize, this,
            [this, panel] { panelResized(state, panel->hold(), panel->frame().size()); });
    connect(panel, &FloatingPanel::willStartDrag, this, [panel] { Motion::end(*panel, frameAnimation); });
    // It tells of light and dark where the desktop says nothing else.
    connect(panel, &FloatingPanel::paletteDidChange, this, &OverlayPanelController::systemSettingsChanged);
    connect(panel, &QWidget::customContextMenuRequested, this, [this, panel](QPoint at) {
        if (contextMenuRequested) {
            contextMenuRequested(panel->mapToGlobal(at));
        }
    });
    geometry->onTick = [this](GeometryPhase phase) { geometryTick(phase); };

    const auto watch = [this](QScreen* screen) {
        for (const auto signal : {&QScreen::geometryChanged, &QScreen::availableGeometryChanged}) {
            connect(screen, signal, this, &OverlayPanelController::screensChanged, Qt::QueuedConnection);
        }
    };
    std::ranges::for_each(QGuiApplication::screens(), watch);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, watch);
    for (const auto signal :
         {&QGuiApplication::screenAdded, &QGuiApplication::screenRemoved, &QGuiApplication::primaryScreenChanged}) {
        connect(qGuiApp, signal, this, &OverlayPanelController::screensChanged, Qt::QueuedConnection);
    }
}

OverlayPanelController::~OverlayPanelController() {
    window().endDrag(); // the end may come while it is held, or before its release is heard of
    if (hasUserActed) {
        remember();
    }
}

void OverlayPanelController::setWanted(bool shown) {
    if (shown != asLeft.isShown) {
        asLeft.isShown = shown;
        hasUserActed = true;
        remember();
    }
}

FloatingPanel& OverlayPanelController::window() const {
    return views->panel;
}

void OverlayPanelController::open() {
    if (asLeft.isShown) {
        show();
    }
}

void OverlayPanelController::show() {
    const auto seen = [this](const UpwardRect& visible) { return isComfortablyOnScreen(window().frame(), visible); };
    if (const auto main = FloatingPanel::mainVisibleFrame();
        main && std::ranges::none_of(FloatingPanel::visibleFrames(), seen)) {
        moveTo(broughtBack(window().frame(), *main));
    }
    setWanted(true);
    views->show();
    geometry->enqueue(GeometryPhase::settle, true);
}

void OverlayPanelController::hide() {
    setWanted(false);
    window().hide();
}

bool OverlayPanelController::isVisible() const {
    return window().isVisible();
}

void OverlayPanelController::remember() const {
    if (!memory) {
        return;
    }
    const PanelPlaces before = placesIn(memory);
    if (const PanelPlaces after = withPlace(before, asLeft); after != before) {
        memory->setString(placesKey, textOf(after));
    }
}

void OverlayPanelController::update(const OverlaySnapshot& snapshot) {
    QMetaObject::invokeMethod(this, [this, snapshot] { present(snapshot); }, Qt::QueuedConnection);
}

void OverlayPanelController::present(const OverlaySnapshot& snapshot) {
    const SnapshotUpdate change = snapshotArrived(state, snapshot);
    views->showTitle(snapshot.title);
    switch (change) {
    case SnapshotUpdate::bindAll:
    case SnapshotUpdate::bindAppearing:
        if (showsMessageOnly(snapshot)) {
            views->showMessage(*snapshot.message);
        } else {
            showTiles(snapshot, change == SnapshotUpdate::bindAppearing);
        }
        break;
    case SnapshotUpdate::showMessage:
        views->showMessage(*snapshot.message);
        break;
    case SnapshotUpdate::rebind:
        views->rebindTiles(snapshot.cards);
        break;
    }
    adaptWindowSize();
    geometry->enqueue(GeometryPhase::settle, true);
}

void OverlayPanelController::showTiles(const OverlaySnapshot& snapshot, bool appearing) {
    views->showTiles(snapshot.cards);
    CardsStack& stack = *views->cardsStack;
    Motion::end(stack, alphaAnimation);
    if (appearing && !motion.isReduced()) {
        stack.setAlpha(0);
        motion.run(appearDuration, [&stack](AnimationGroup& group) { fadeIn(group, stack); });
    } else {
        stack.setAlpha(1);
    }
}

void OverlayPanelController::adaptWindowSize() {
    FloatingPanel& panel = window();
    const UpwardRect from = panel.frame();
    const FrameDecision decision = frameSuited(state, from, panel.hold(), panel.visibleFrame());
    if (std::holds_alternative<StopFrame>(decision)) {
        Motion::end(panel, frameAnimation);
    } else if (const auto* move = std::get_if<MoveFrame>(&decision)) {
        motion.run(
            frameDuration,
            [&panel, from, to = move->target](AnimationGroup& group) {
                group.animate(panel, frameAnimation, [&panel, from, to](double progress) {
                    panel.setFrame(betweenFrames(from, to, progress));
                });
            },
            [this, number = move->number] { frameMoveEnded(state, number); });
    }
}

void OverlayPanelController::transitionAxis() {
    CardsStack& stack = *views->cardsStack;
    const auto turn = [this] {
        Motion::instant([this](AnimationGroup& group) {
            applyLayout(group);
            views->layoutSubviews();
            applyTypography();
        });
    };
    if (motion.isReduced()) {
        turn();
        stack.setAlpha(1);
        axisTurned(state);
        return;
    }
    FadingPicture& picture = views->coverTiles();
    Motion::end(stack, alphaAnimation);
    stack.setAlpha(0);
    turn();
    motion.run(
        axisDuration,
        [&stack, &picture](AnimationGroup& group) {
            group.animate(picture, alphaAnimation, [&picture](double progress) { picture.setAlpha(1 - progress); });
            fadeIn(group, stack);
        },
        [this, &picture] {
            picture.deleteLater();
            axisTurned(state);
        });
}

void OverlayPanelController::geometryTick(GeometryPhase phase) {
    const FloatingPanel& panel = window();
    const GeometryDecision decision =
        panelMeasured(state, phase, panel.hold(), panel.frame().size(), views->contentSize());
    if (decision.transitionAxis) {
        transitionAxis();
    } else if (decision.applyAnimated) {
        motion.run(relayoutDuration, [this](AnimationGroup& group) {
            applyLayout(group);
            applyTypography();
        });
    }
    if (decision.applyLayoutAtOnce) {
        Motion::instant([this](AnimationGroup& group) { applyLayout(group); });
    }
    if (decision.applyTypographyAtOnce) {
        applyTypography();
    }
}

void OverlayPanelController::applyLayout(AnimationGroup& group) {
    group.animate(*views->content, layoutAnimation,
                  [this, from = views->shownLayout(), to = state.metrics.current](double progress) {
                      views->showLayout(betweenLayouts(from, to, progress));
                  });
    Q_EMIT layoutApplied();
}

void OverlayPanelController::applyTypography() {
    views->applyTypography(state.metrics.current);
}

void OverlayPanelController::systemSettingsChanged() {
    views->applyColors(colorsOf(settings));
}

void OverlayPanelController::moveTo(const UpwardRect& frame) {
    Motion::end(window(), frameAnimation);
    window().setFrame(frame);
}

void OverlayPanelController::screensChanged() {
    const auto main = FloatingPanel::mainVisibleFrame();
    const auto own = window().visibleFrame();
    if (!main || !own) {
        return;
    }
    const PanelPlace now{asLeft.screens, window().frame(), state.userResizedFrame, asLeft.isShown};
    const PanelPlace next = placeAfterChange(placesIn(memory), now, arrangementOf(screensInUse()),
                                             {FloatingPanel::visibleFrames(), *main, *own});
    if (next.screens != asLeft.screens) {
        asLeft = next;
    }
    state.userResizedFrame = next.userSize;
    if (next.frame != now.frame) {
        moveTo(next.frame);
        if (state.lastSnapshot) {
            adaptWindowSize(); // it may have been left while it showed something else
        }
    }
}

} // namespace pelloran
