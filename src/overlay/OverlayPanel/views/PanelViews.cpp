#include "overlay/OverlayPanel/views/PanelViews.h"

#include "localisation/L10n.h"
#include "overlay/OverlayPanel/views/CardsStack.h"
#include "overlay/OverlayPanel/views/CardTileView.h"
#include "overlay/OverlayPanel/views/FontCache.h"
#include "overlay/OverlayPanel/views/MaterialView.h"
#include "overlay/OverlayPanel/views/RootContent.h"
#include "overlay/OverlayPanel/views/TextLabel.h"
#include "platform/PanelWindow.h"

#include <QPainterPath>

#include <utility>

namespace pelloran {

namespace {

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

} // namespace

PanelViews::PanelViews(std::unique_ptr<PanelWindow> window, const PanelColors& colors, const ResolvedMetrics& metrics)
    : panel(window->windowFlags())
    , material(new MaterialView(&panel, colors))
    , content(new RootContent(material))
    , cardsStack(content->cardsStack)
    , panelWindow(std::move(window)) {
    panel.setWindowTitle(QStringLiteral("Pelloran"));
    showTitle(L10n::tr(u"overlay.arena"));
    content->messageLabel->hide();
    for (CardTileView*& tile : cardPool) {
        tile = new CardTileView(cardsStack, colors); // owned by the stack
        tile->hide();
    }
    // The panel moves and resizes itself wherever it is touched.
    material->setAttribute(Qt::WA_TransparentForMouseEvents);
    material->lower();
    content->setTitleReserve(panel.closeButtonWidth());
    applyColors(colors);
    fillPanel();
    QObject::connect(&panel, &FloatingPanel::didResize, content, [this] {
        fillPanel();
        applyMaterial();
    });
    showLayout(metrics);
    layoutSubviews();
    applyTypography(metrics);

    panel.winId(); // makes the window known to the window server, for the one that takes charge of it
    panelWindow->attach(*panel.windowHandle());
    panelWindow->compositingChanged = [this] { applyMaterial(); };
    applyMaterial();
}

PanelViews::~PanelViews() = default;

void PanelViews::show() {
    panel.show();
    panelWindow->raise();
}

void PanelViews::showTitle(const QString& title) {
    content->titleLabel->setText(title);
}

void PanelViews::showMessage(const QString& message) {
    const bool appears = content->messageLabel->isHidden();
    content->messageLabel->setText(message);
    content->messageLabel->show();
    cardsStack->hide();
    for (CardTileView* tile : cardPool) {
        tile->hide();
    }
    if (appears) {
        content->layoutSubviews();
    }
}

void PanelViews::showTiles(std::span<const OverlayCardViewModel> cards) {
    content->messageLabel->hide();
    cardsStack->show();
    for (std::size_t index = 0; index < cardPool.size(); ++index) {
        CardTileView* tile = cardPool[index];
        const bool shown = index < cards.size();
        if (shown) {
            tile->bind(cards[index]);
            tile->applyLayout(layout);
        }
        tile->setHidden(!shown);
    }
    layoutSubviews();
}

void PanelViews::rebindTiles(std::span<const OverlayCardViewModel> cards) {
    for (std::size_t index = 0; index < cardPool.size() && index < cards.size(); ++index) {
        cardPool[index]->bind(cards[index]);
    }
}

void PanelViews::showLayout(const ResolvedMetrics& newLayout) {
    layout = newLayout;
    content->setConstraints(constraintsFor(layout));
    cardsStack->applyLayout(layout);
    material->setCornerRadius(layout.panelCornerRadius);
    panel.placeCloseButton(layout.contentInset);
    for (CardTileView* tile : cardPool) {
        if (!tile->isHidden()) {
            tile->applyLayout(layout);
        }
    }
    applyMaterial();
}

void PanelViews::layoutSubviews() {
    content->layoutSubviews();
    cardsStack->layoutSubviews();
}

void PanelViews::applyTypography(const ResolvedMetrics& metrics) {
    content->titleLabel->setTextFont(FontCache::shared().font(metrics.titleSize, QFont::DemiBold));
    content->messageLabel->setTextFont(FontCache::shared().font(metrics.messageSize, QFont::Normal));
    for (CardTileView* tile : cardPool) {
        tile->applyTypography(metrics);
    }
}

void PanelViews::applyColors(const PanelColors& colors) {
    material->setColors(colors);
    content->titleLabel->setColor(colors.title);
    content->messageLabel->setColor(colors.secondaryLabel);
    panel.setCloseButtonColor(colors.secondaryLabel);
    for (CardTileView* tile : cardPool) {
        tile->setColors(colors);
    }
}

QSizeF PanelViews::contentSize() const {
    return material->width() > 1 ? QSizeF(material->size()) : panel.frame().size();
}

FadingPicture& PanelViews::coverTiles() {
    auto* picture = new FadingPicture(content, cardsStack->picture()); // owned by the content
    picture->setGeometry(cardsStack->geometry());
    picture->show();
    return *picture;
}

void PanelViews::fillPanel() {
    material->resize(panel.size());
    content->resize(panel.size());
}

void PanelViews::applyMaterial() {
    const double radius = material->cornerRadius();
    const bool translucent = panelWindow->isComposited();
    material->setTranslucent(translucent);
    if (translucent) {
        panel.clearMask();
    } else {
        // Without a compositor nothing is half transparent: the corners are cut.
        QPainterPath outline;
        outline.addRoundedRect(panel.rect(), radius, radius);
        panel.setMask(QRegion(outline.toFillPolygon().toPolygon()));
    }
    panelWindow->blurBehind(radius);
}

} // namespace pelloran
