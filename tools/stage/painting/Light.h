#pragma once

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QPoint>

#include <vector>

namespace pelloran::stage {

// What moves over the painted scene: the glow around an offer under the mouse, and drifting motes. Everything is drawn
// from small pictures made beforehand, so that a frame costs little.
class Light {
public:
    Light(QSize size, double unit, quint32 seed);

    // The offer of those outlines (in the window) that glows from now on, in that colour; -1: none of them.
    void setGlow(const std::vector<QPainterPath>& offers, int glowing, const QColor& colour);

    // The light `seconds` after the start, over a scene that has been painted already.
    void paint(QPainter& painter, double seconds) const;

private:
    struct Mote {
        QPointF start;
        QPointF drift; // pixels in a second
        double phase;
        double size;
    };

    QSize size;
    double unit;
    QImage spark;
    std::vector<Mote> motes;
    QPoint haloPlace;
    QImage halo; // null: nothing glows
};

} // namespace pelloran::stage
