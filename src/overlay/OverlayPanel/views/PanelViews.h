#pragma once

#include "model/OverlayModel.h"
#include "overlay/OverlayPanel/layout/PanelDecisions.h"
#include "overlay/OverlayPanel/layout/ResolvedMetrics.h"
#include "overlay/OverlayPanel/views/FloatingPanel.h"
#include "overlay/OverlayPanel/views/PanelColors.h"

#include <QSizeF>
#include <QString>

#include <array>
#include <memory>
#include <span>

namespace pelloran {

class CardTileView;
class CardsStack;
class FadingPicture;
class MaterialView;
class PanelWindow;
class RootContent;

// The panel's window and everything on it, which does as it is told: it shows texts, tiles, lengths, fonts and colours,
// at once, and decides nothing. Main thread.
class PanelViews {
public:
    // All is built, and nothing shown. Begins with `metrics` and the colours.
    PanelViews(std::unique_ptr<PanelWindow> window, const PanelColors& colors, const ResolvedMetrics& metrics);
    ~PanelViews();
    PanelViews(const PanelViews&) = delete;
    PanelViews& operator=(const PanelViews&) = delete;

    // In front of everything, without the keyboard.
    void show();

    void showTitle(const QString& title);

    // One of them takes the other's place. Of the cards the first are shown, as many as there are tiles.
    void showMessage(const QString& message);
    void showTiles(std::span<const OverlayCardViewModel> cards);

    // Other names and figures in the tiles that are shown; lays nothing out.
    void rebindTiles(std::span<const OverlayCardViewModel> cards);

    // Lengths. With those on the way from one layout to another it is an animation.
    void showLayout(const ResolvedMetrics& layout);

    const ResolvedMetrics& shownLayout() const { return layout; }

    // Every view stands in its place when it returns.
    void layoutSubviews();

    void applyTypography(const ResolvedMetrics& metrics);
    void applyColors(const PanelColors& colors);

    // What the metrics are resolved for.
    QSizeF contentSize() const;

    // What the tiles look like now, on top of them. Owned by the content; whoever lets it fade deletes it.
    FadingPicture& coverTiles();

    FloatingPanel panel;

    // All owned by the panel.
    MaterialView* const material;
    RootContent* const content;
    CardsStack* const cardsStack;

private:
    void fillPanel();
    void applyMaterial();

    std::array<CardTileView*, tilePoolSize> cardPool{};
    ResolvedMetrics layout;
    std::unique_ptr<PanelWindow> panelWindow; // below the panel, of which it has charge: it goes first
};

} // namespace pelloran
