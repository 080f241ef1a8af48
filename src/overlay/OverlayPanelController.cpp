#include "overlay/OverlayPanelController.h"

#include "localisation/L10n.h"
#include "overlay/OverlayPanel/views/CardsStack.h"
#include "overlay/OverlayPanel/views/CardTileView.h"
#include "overlay/OverlayPanel/views/FloatingPanel.h"
#include "overlay/OverlayPanel/views/FontCache.h"
#include "overlay/OverlayPanel/views/MaterialView.h"
#include "overlay/OverlayPanel/views/Motion.h"
#include "overlay/OverlayPanel/views/RootContent.h"
#include "overlay/OverlayPanel/views/TextLabel.h"
#include "platform/PanelWindow.h"
#include "platform/SystemSettings.h"

#include <QGuiApplication>
#include <QMetaObject>
#include <QPainterPath>
#include <QPalette>
#include <QScopedValueRollback>
#include <QScreen>

#include <algorithm>
#include <utility>

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

Appearance appearanceOf(const SystemSettings& settings) {
    return settings.appearance().value_or(pelloran::appearanceOf(QGuiApplication::palette()));
}

ContentConstraints constraintsFor(const ResolvedMetrics& layout) {
    const double inset = layout.contentInset;
    const double gap = layout.sectionSpacing;
    return {
        .titleTop = inset,
        .titleLeading = inset,
        .titleTrailing = -inset,
        .messageTop = gap,
        .messageLeading = inset,
        .messageTrailing = -inset,
        .stackTop = gap,
        .stackLeading = inset,
        .stackTrailing = -inset,
        .stackBottom = -inset,
    };
}

void fadeIn(AnimationGroup& group, CardsStack& stack) {
    group.animate(stack, alphaAnimation,
                  [&stack, from = stack.alpha()](double progress) { stack.setAlpha(from + (1 - from) * progress); });
}

} // namespace

OverlayPanelController::OverlayPanelController(const SystemSettings& systemSettings,
                                               std::unique_ptr<PanelWindow> window)
    : settings(systemSettings)
    , panelWindow(std::move(window))
    , colors(PanelColors::of(appearanceOf(systemSettings)))
    , panel(std::make_unique<FloatingPanel>(panelWindow->windowFlags())) {
    panel->setWindowTitle(QStringLiteral("Pelloran"));
    // All views below are owned by the panel.
    materialView = new MaterialView(panel.get(), colors);
    rootContent = new RootContent(materialView);
    titleLabel = rootContent->titleLabel;
    messageLabel = rootContent->messageLabel;
    cardsStack = rootContent->cardsStack;
    titleLabel->setText(L10n::tr(u"overlay.arena"));
    messageLabel->hide();
    for (CardTileView*& tile : cardPool) {
        tile = new CardTileView(cardsStack, colors);
        tile->hide();
    }
    // The panel moves and resizes itself wherever it is touched.
    materialView->setAttribute(Qt::WA_TransparentForMouseEvents);
    materialView->lower();
    rootContent->setTitleReserve(panel->closeButtonWidth());
    applyColors();

    metrics.current = ResolvedMetrics::resolve(initialFrame.size(), 0, Axis::vertical);
    shownLayout = metrics.current;
    materialView->resize(panel->size());
    rootContent->resize(panel->size());

    connect(panel.get(), &FloatingPanel::didResize, this, [this] {
        // At once: where the drag ends in the same turn of the event loop, the tick that follows is no live one.
        if (panel->inLiveResize() && !suppressUserResizeTracking) {
            userResizedFrame = panel->frame().size();
        }
        materialView->resize(panel->size());
        rootContent->resize(panel->size());
        applyMaterial();
    });
    connect(panel.get(), &FloatingPanel::willStartDrag, this, [this] { Motion::end(*panel, frameAnimation); });
    // It tells of light and dark where the desktop says nothing else.
    connect(panel.get(), &FloatingPanel::paletteDidChange, this, &OverlayPanelController::systemSettingsChanged);
    connect(panel.get(), &QWidget::customContextMenuRequested, this,
            [this](QPoint at) { Q_EMIT contextMenuRequested(panel->mapToGlobal(at)); });
    geometry = std::make_unique<GeometryDriver>(*panel);
    geometry->onTick = [this](GeometryDriver::Phase phase) { geometryTick(phase); };

    Motion::instant([this](AnimationGroup& group) {
        applyLayout(group, true);
        applyTypography();
    });

    panel->winId(); // makes the window known to the window server, for the one that takes charge of it
    panelWindow->attach(*panel->windowHandle());
    panelWindow->compositingChanged = [this] { applyMaterial(); };
    applyMaterial();
    const auto watch = [this](QScreen* screen) {
        connect(screen, &QScreen::availableGeometryChanged, this, &OverlayPanelController::bringBackIfLost,
                Qt::QueuedConnection);
    };
    std::ranges::for_each(QGuiApplication::screens(), watch);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, watch);
    for (const auto signal : {&QGuiApplication::screenRemoved, &QGuiApplication::primaryScreenChanged}) {
        connect(qGuiApp, signal, this, &OverlayPanelController::bringBackIfLost, Qt::QueuedConnection);
    }
}

OverlayPanelController::~OverlayPanelController() {
    panelWindow.reset(); // it has charge of a window that goes with the panel
}

void OverlayPanelController::show() {
    if (const auto visible = FloatingPanel::mainVisibleFrame();
        visible && !isComfortablyOnScreen(panel->frame(), *visible)) {
        Motion::end(*panel, frameAnimation);
        panel->setFrame(broughtBack(panel->frame(), *visible));
    }
    panel->show();
    panelWindow->raise();
    geometry->enqueue(GeometryDriver::Phase::settle, true);
}

void OverlayPanelController::hide() {
    panel->hide();
}

bool OverlayPanelController::isVisible() const {
    return panel->isVisible();
}

void OverlayPanelController::update(const OverlaySnapshot& snapshot) {
    QMetaObject::invokeMethod(this, [this, snapshot] { present(snapshot); }, Qt::QueuedConnection);
}

void OverlayPanelController::present(const OverlaySnapshot& snapshot) {
    const SnapshotUpdate change = snapshotUpdate(lastSnapshot ? &*lastSnapshot : nullptr, snapshot, activeCardCount);
    lastSnapshot = snapshot;
    titleLabel->setText(snapshot.title);
    switch (change) {
    case SnapshotUpdate::bindAll:
        bindCards(snapshot, false);
        break;
    case SnapshotUpdate::bindAppearing:
        bindCards(snapshot, true);
        break;
    case SnapshotUpdate::showMessage:
        bindMessage(*snapshot.message);
        break;
    case SnapshotUpdate::rebind:
        for (int index = 0; index < activeCardCount; ++index) {
            cardPool[index]->bind(snapshot.cards[index]);
        }
        break;
    }
    adaptWindowSize(static_cast<int>(snapshot.cards.size()), true);
    geometry->enqueue(GeometryDriver::Phase::settle, true);
}

void OverlayPanelController::bindMessage(const QString& message) {
    messageLabel->setText(message);
    messageLabel->show();
    cardsStack->hide();
    for (CardTileView* tile : cardPool) {
        tile->hide();
    }
    activeCardCount = 0;
}

void OverlayPanelController::bindCards(const OverlaySnapshot& snapshot, bool animateAppear) {
    if (showsMessageOnly(snapshot)) {
        bindMessage(*snapshot.message);
        rootContent->layoutSubviews();
        return;
    }
    messageLabel->hide();
    cardsStack->show();
    activeCardCount = shownCardCount(snapshot);
    for (int index = 0; index < tilePoolSize; ++index) {
        CardTileView* tile = cardPool[index];
        const bool shown = index < activeCardCount;
        if (shown) {
            tile->bind(snapshot.cards[index]);
            tile->applyLayout(shownLayout);
        }
        tile->setHidden(!shown);
    }
    rootContent->layoutSubviews();
    cardsStack->layoutSubviews();
    Motion::end(*cardsStack, alphaAnimation);
    if (animateAppear && !Motion::reducesMotion()) {
        cardsStack->setAlpha(0);
        Motion::run(appearDuration, [this](AnimationGroup& group) { fadeIn(group, *cardsStack); });
    } else {
        cardsStack->setAlpha(1);
    }
}

void OverlayPanelController::adaptWindowSize(int cardCount, bool animated) {
    if (panel->isDragged()) {
        return; // it is in the user's hand
    }
    const UpwardRect from = panel->frame();
    const auto target = adaptedFrame(cardCount, from, userResizedFrame, metrics.current.scale, metrics.current.axis,
                                     panel->visibleFrame());
    if (!target) {
        Motion::end(*panel, frameAnimation); // on the way to where an earlier snapshot wanted it
        return;
    }
    suppressUserResizeTracking = true;
    const int animation = ++frameAnimations;
    const auto change = [this, from, to = *target](AnimationGroup& group) {
        group.animate(*panel, frameAnimation,
                      [this, from, to](double progress) { panel->setFrame(betweenFrames(from, to, progress)); });
    };
    const auto complete = [this, animation] {
        if (animation == frameAnimations) {
            suppressUserResizeTracking = false;
        }
    };
    Motion::run(animated ? frameDuration : 0, change, complete);
}

void OverlayPanelController::transitionAxis(bool animated) {
    isAxisTransitioning = true;
    const auto turn = [this] {
        Motion::instant([this](AnimationGroup& group) {
            applyLayout(group, true);
            applyTypography();
        });
    };
    if (!animated || Motion::reducesMotion()) {
        turn();
        cardsStack->setAlpha(1);
        isAxisTransitioning = false;
        return;
    }
    auto* picture = new FadingPicture(rootContent, cardsStack->picture()); // owned by the content until it has faded
    picture->setGeometry(cardsStack->geometry());
    picture->show();
    Motion::end(*cardsStack, alphaAnimation);
    cardsStack->setAlpha(0);
    turn();
    Motion::run(
        axisDuration,
        [this, picture](AnimationGroup& group) {
            group.animate(*picture, alphaAnimation, [picture](double progress) { picture->setAlpha(1 - progress); });
            fadeIn(group, *cardsStack);
        },
        [this, picture] {
            picture->deleteLater();
            isAxisTransitioning = false;
        });
}

void OverlayPanelController::geometryTick(GeometryDriver::Phase phase) {
    if (isApplyingLayout || isAxisTransitioning) {
        return;
    }
    // A snapshot may ask for a settled look in the middle of a drag: the axis must not turn under the user's hand.
    const bool live = phase == GeometryDriver::Phase::live || panel->inLiveResize();
    const UpwardRect frame = panel->frame();
    if (phase == GeometryDriver::Phase::live && !suppressUserResizeTracking) {
        userResizedFrame = frame.size();
    }
    const QSizeF content = materialView->width() > 1 ? QSizeF(materialView->size()) : frame.size();
    const auto resolved = ResolvedMetrics::resolve(content, activeCardCount, metrics.current.axis);
    const GeometryDecision decision = live ? liveDecision(metrics, resolved) : settleDecision(metrics, resolved);
    if (decision.store) {
        metrics.current = *decision.store;
    }
    if (decision.transitionAxis) {
        transitionAxis(true);
    } else if (decision.applyAnimated) {
        Motion::run(relayoutDuration, [this](AnimationGroup& group) {
            applyLayout(group, false);
            applyTypography();
        });
    }
    if (decision.applyLayoutAtOnce) {
        Motion::instant([this](AnimationGroup& group) { applyLayout(group, false); });
    }
    if (decision.applyTypographyAtOnce) {
        applyTypography();
    }
}

void OverlayPanelController::applyLayout(AnimationGroup& group, bool syncLayout) {
    const QScopedValueRollback applying(isApplyingLayout, true);
    group.animate(*rootContent, layoutAnimation, [this, from = shownLayout, to = metrics.current](double progress) {
        showLayout(betweenLayouts(from, to, progress));
    });
    metrics.appliedLayout = metrics.current;
    if (syncLayout) {
        rootContent->layoutSubviews();
        cardsStack->layoutSubviews();
    }
    Q_EMIT layoutApplied();
}

void OverlayPanelController::showLayout(const ResolvedMetrics& layout) {
    shownLayout = layout;
    rootContent->setConstraints(constraintsFor(layout));
    cardsStack->applyLayout(layout);
    materialView->setCornerRadius(layout.panelCornerRadius);
    panel->placeCloseButton(layout.contentInset);
    for (int index = 0; index < activeCardCount; ++index) {
        cardPool[index]->applyLayout(layout);
    }
    applyMaterial();
}

void OverlayPanelController::applyTypography() {
    titleLabel->setTextFont(FontCache::shared().font(metrics.current.titleSize, QFont::DemiBold));
    messageLabel->setTextFont(FontCache::shared().font(metrics.current.messageSize, QFont::Normal));
    for (CardTileView* tile : cardPool) {
        tile->applyTypography(metrics.current);
    }
    metrics.appliedTypography = metrics.current;
}

void OverlayPanelController::systemSettingsChanged() {
    colors = PanelColors::of(appearanceOf(settings));
    applyColors();
}

void OverlayPanelController::applyColors() {
    materialView->setColors(colors);
    titleLabel->setColor(colors.title);
    messageLabel->setColor(colors.secondaryLabel);
    panel->setCloseButtonColor(colors.secondaryLabel);
    for (CardTileView* tile : cardPool) {
        tile->setColors(colors);
    }
}

void OverlayPanelController::applyMaterial() {
    const double radius = materialView->cornerRadius();
    const bool translucent = panelWindow->isComposited();
    materialView->setTranslucent(translucent);
    if (translucent) {
        panel->clearMask();
    } else {
        // Without a compositor nothing is half transparent: the corners are cut.
        QPainterPath outline;
        outline.addRoundedRect(panel->rect(), radius, radius);
        panel->setMask(QRegion(outline.toFillPolygon().toPolygon()));
    }
    panelWindow->blurBehind(radius);
}

void OverlayPanelController::bringBackIfLost() {
    const auto main = FloatingPanel::mainVisibleFrame();
    const auto own = panel->visibleFrame();
    if (main && own && !isComfortablyOnScreen(panel->frame(), *own)) {
        Motion::end(*panel, frameAnimation);
        panel->setFrame(broughtBack(panel->frame(), *main));
    }
}

} // namespace pelloran
