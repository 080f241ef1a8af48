#pragma once

#include "overlay/OverlayPanel/layout/PanelGeometry.h"

#include <QWidget>

#include <optional>
#include <vector>

namespace pelloran {

class CloseButton;

// The panel's window: frameless, dragged by its background, resized at its edges and corners, closed by its button, all
// without a window manager's help, because none manages it. What it shows is put into it by the controller.
class FloatingPanel final : public QWidget {
    Q_OBJECT

public:
    // `flags` beyond those of a frameless window.
    explicit FloatingPanel(Qt::WindowFlags flags);

    UpwardRect frame() const;
    void setFrame(const UpwardRect& frame);

    // What docks and menu bars leave of the panel's screen, else of the main one; absent without any screen.
    std::optional<UpwardRect> visibleFrame() const;
    static std::optional<UpwardRect> mainVisibleFrame();
    // Of all screens.
    static std::vector<UpwardRect> visibleFrames();

    UserHold hold() const;

    bool inLiveResize() const { return hold() == UserHold::edge; }

    // As if the button were let go of, where it is held.
    void endDrag();

    // Room for the close button in the top right corner: its centre lies `inset` + half a line below and beside it.
    void placeCloseButton(double inset);
    int closeButtonWidth() const;
    void setCloseButtonColor(const QColor& color);

Q_SIGNALS:
    void willStartDrag(); // moving or resizing, before the first change
    void willStartLiveResize();
    void didResize();
    void didEndLiveResize();
    void didEndDrag();     // that moved or resized it; after the above
    void didCloseByUser(); // hidden by its button
    void paletteDidChange();

protected:
    void changeEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    struct Drag {
        ResizeHandle handle; // none: the panel moves
        QPointF from;        // where the pointer took hold, on the screen
        UpwardRect frame;    // at that moment
    };

    std::optional<Drag> drag;
    CloseButton* closeButton;
    double closeButtonInset = 12;
};

} // namespace pelloran
