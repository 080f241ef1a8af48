#pragma once

#include "overlay/OverlayPanel/layout/ResolvedMetrics.h"

#include <QGraphicsOpacityEffect>
#include <QPixmap>
#include <QWidget>

namespace pelloran {

// Holds the tiles: those that are shown share its room equally, along its axis.
class CardsStack final : public QWidget {
public:
    explicit CardsStack(QWidget* parent);

    void applyLayout(const ResolvedMetrics& metrics);

    // 0: not to be seen, 1: fully there.
    double alpha() const;
    void setAlpha(double alpha);

    // What it shows now, on a clear background.
    QPixmap picture();

    void layoutSubviews();

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;

private:
    Axis orientation = Axis::vertical;
    double spacing = 0;
    QGraphicsOpacityEffect* const opacity; // owned by this; switched off while it would change nothing
};

// A picture that fades away over what has changed beneath it.
class FadingPicture final : public QWidget {
public:
    FadingPicture(QWidget* parent, QPixmap picture);

    void setAlpha(double alpha);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QPixmap picture; // fills the view, whatever its proportions
    double alpha = 1;
};

} // namespace pelloran
