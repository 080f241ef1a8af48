#pragma once

#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QRectF>

#include <vector>

namespace pelloran::stage {

// What moves over the painted scene: a pulsing glow around the offers, a beam that sweeps across, and drifting motes.
// Everything is drawn from small pictures made beforehand, so that a frame costs little.
class Light {
public:
    Light(QSize size, double unit, quint32 seed);

    // The things that glow from now on, by their outlines in the window; `chosen` shines golden (-1: none).
    void setGlows(std::vector<QPainterPath> outlines, int chosen);

    // The light `seconds` after the start, over a scene that has been painted already.
    void paint(QPainter& painter, double seconds) const;

private:
    struct Mote {
        QPointF start;
        QPointF drift; // pixels in a second
        double phase;
        double size;
    };

    QImage halo(const QPainterPath& outline, const QColor& colour) const;

    QSize size;
    double unit;
    QImage beam;
    QImage spark;
    std::vector<Mote> motes;
    std::vector<QPainterPath> glowing;
    std::vector<QImage> halos; // one for each of them
    int chosen = -1;
};

} // namespace pelloran::stage
