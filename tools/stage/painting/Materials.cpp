#include "tools/stage/painting/Materials.h"

#include <QRadialGradient>

#include <algorithm>
#include <cmath>

namespace pelloran::stage {

namespace {

double lattice(int x, int y, quint32 seed) {
    quint32 h = static_cast<quint32>(x) * 0x8da6b343U ^ static_cast<quint32>(y) * 0xd8163841U ^ seed * 0xcb1ab31fU;
    h = (h ^ (h >> 15)) * 0x2c1b3c6dU;
    h = (h ^ (h >> 12)) * 0x297a2d39U;
    h ^= h >> 15;
    return h / 4294967295.0;
}

double smooth(double t) {
    return t * t * (3 - 2 * t);
}

int channel(double value) {
    return static_cast<int>(std::clamp(value, 0.0, 255.0));
}

} // namespace

double noise(double x, double y, quint32 seed) {
    const int left = static_cast<int>(std::floor(x));
    const int top = static_cast<int>(std::floor(y));
    const double u = smooth(x - left);
    const double v = smooth(y - top);
    const double upper = std::lerp(lattice(left, top, seed), lattice(left + 1, top, seed), u);
    const double lower = std::lerp(lattice(left, top + 1, seed), lattice(left + 1, top + 1, seed), u);
    return std::lerp(upper, lower, v);
}

double cloudNoise(double x, double y, int octaves, quint32 seed) {
    double sum = 0;
    double strength = 0.5;
    double total = 0;
    for (int i = 0; i < octaves; ++i) {
        sum += strength * noise(x, y, seed + static_cast<quint32>(i));
        total += strength;
        strength /= 2;
        x *= 2;
        y *= 2;
    }
    return sum / total;
}

QColor shade(const QColor& colour, double factor) {
    return {channel(colour.red() * factor), channel(colour.green() * factor), channel(colour.blue() * factor)};
}

QColor mix(const QColor& a, const QColor& b, double share) {
    return {channel(std::lerp(a.red(), b.red(), share)), channel(std::lerp(a.green(), b.green(), share)),
            channel(std::lerp(a.blue(), b.blue(), share))};
}

QColor withAlpha(QColor colour, double alpha) {
    colour.setAlphaF(static_cast<float>(std::clamp(alpha, 0.0, 1.0)));
    return colour;
}

QImage woodenTable(QSize size, double unit, quint32 seed) {
    // Half the resolution: grain is soft, and large windows would take seconds.
    const QSize half((size.width() + 1) / 2, (size.height() + 1) / 2);
    QImage wood(half, QImage::Format_RGB32);
    const double plankHeight = 118;
    for (int y = 0; y < half.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(wood.scanLine(y));
        const double down = 2 * y / unit;
        const int plank = static_cast<int>(down / plankHeight);
        const double within = down / plankHeight - plank;
        const double tone = 0.82 + 0.36 * lattice(plank, 7, seed);
        const double gap = std::min({1.0, within * 26, (1 - within) * 26});
        for (int x = 0; x < half.width(); ++x) {
            const double across = 2 * x / unit;
            const double warp = noise(across / 300, down / 90, seed + 11) * 40;
            const double fine = noise(across / 110 + plank * 37.0, (down + warp) / 3.2, seed + 3);
            const double broad = cloudNoise(across / 420 + plank * 91.0, (down + warp * 2) / 26, 3, seed + 5);
            const double light = tone * (0.32 + 0.22 * fine + 0.62 * broad) * (0.35 + 0.65 * gap);
            line[x] = qRgb(channel(112 * light), channel(58 * light), channel(34 * light));
        }
    }
    QImage table = wood.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                       .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&table);
    QRadialGradient lamp(size.width() * 0.42, size.height() * 0.30, size.width() * 0.52);
    lamp.setColorAt(0, QColor(255, 190, 110, 70));
    lamp.setColorAt(1, QColor(255, 170, 80, 0));
    painter.fillRect(table.rect(), lamp);
    QRadialGradient corners(size.width() * 0.45, size.height() * 0.45, size.width() * 0.68);
    corners.setColorAt(0.5, QColor(0, 0, 0, 0));
    corners.setColorAt(1, QColor(4, 2, 8, 215));
    painter.fillRect(table.rect(), corners);
    return table;
}

QImage mottled(QSize size, const QColor& colour, double contrast, double unit, quint32 seed) {
    const QSize half((size.width() + 1) / 2, (size.height() + 1) / 2);
    QImage sheet(half, QImage::Format_RGB32);
    for (int y = 0; y < half.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(sheet.scanLine(y));
        for (int x = 0; x < half.width(); ++x) {
            const double across = 2 * x / unit;
            const double down = 2 * y / unit;
            const double broad = cloudNoise(across / 130, down / 70, 4, seed) - 0.5;
            const double fine = noise(across / 3, down / 2.5, seed + 9) - 0.5;
            const double light = 1 + contrast * (1.6 * broad + 0.35 * fine);
            line[x] =
                qRgb(channel(colour.red() * light), channel(colour.green() * light), channel(colour.blue() * light));
        }
    }
    return sheet.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

QBrush metal(const QRectF& box, const QColor& colour) {
    QLinearGradient gradient(box.topLeft(), box.bottomRight());
    gradient.setColorAt(0, shade(colour, 1.35));
    gradient.setColorAt(0.22, shade(colour, 0.72));
    gradient.setColorAt(0.42, shade(colour, 1.2));
    gradient.setColorAt(0.58, shade(colour, 0.6));
    gradient.setColorAt(0.8, shade(colour, 1.0));
    gradient.setColorAt(1, shade(colour, 0.42));
    return gradient;
}

void castShadow(QPainter& painter, const QPainterPath& shape, double reach, double strength) {
    constexpr int rings = 8;
    painter.save();
    painter.setBrush(Qt::NoBrush);
    for (int ring = rings; ring > 0; --ring) {
        const QColor dark = withAlpha(Qt::black, strength / rings);
        painter.strokePath(shape, QPen(dark, 2 * reach * ring / rings, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    }
    painter.restore();
}

void drawRim(QPainter& painter, const QPainterPath& shape, double width, const QColor& colour) {
    const QRectF box = shape.boundingRect();
    painter.strokePath(shape, QPen(QColor(20, 12, 6), width * 1.5, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.strokePath(shape, QPen(metal(box, colour), width, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.strokePath(shape, QPen(withAlpha(shade(colour, 1.6), 0.55), width * 0.16));
}

double between(Random& random, double low, double high) {
    return low + (high - low) * (random() / 4294967295.0);
}

} // namespace pelloran::stage
