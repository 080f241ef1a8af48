#pragma once

#include "stage/Catalogue.h"

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QPainterPath>
#include <QPointF>
#include <QString>

#include <expected>

namespace pelloran::stage {

// The line that a ribbon and the name on it follow.
class Curve {
public:
    enum Shape { straight, arch, wave };

    // `width` and `rise` in pixels: how far it runs and how far its middle stands above its ends.
    Curve(Shape curveShape, double curveWidth, double curveRise)
        : shape(curveShape)
        , width(curveWidth)
        , rise(curveRise) {}

    // `x` in pixels from the middle; downward from the middle's height.
    double y(double x) const;

    // The rise of the line at `x`, as an angle in degrees, clockwise.
    double angle(double x) const;

    // The band of `height` pixels along the line, with its middle at `centre`.
    QPainterPath band(QPointF centre, double height) const;

private:
    Shape shape;
    double width;
    double rise;
};

// The typefaces of the stage. Immutable.
class Lettering {
public:
    // The best typefaces installed for the language. The error names what to install.
    static std::expected<Lettering, QString> create(Language language);

    QFont font(double pixelSize, QFont::Weight weight = QFont::Bold) const;

    struct Style {
        double pixelSize = 30;
        QColor fill{0xfb, 0xf6, 0xe6};
        QColor outline{0x0a, 0x07, 0x05};
        double outlineWidth = 0.12; // of the pixel size, on each side
    };

    // One line along `curve`, its middle at `centre`, made smaller where it would be wider than `maximumWidth`.
    void drawAlong(QPainter& painter, const QString& text, QPointF centre, double maximumWidth, const Curve& curve,
                   const Style& style) const;

    // One straight line, centred at `centre`.
    void draw(QPainter& painter, const QString& text, QPointF centre, double maximumWidth, const Style& style) const;

    // One straight line that begins at `left` (middle of its height), cut off at `maximumWidth`.
    void drawFrom(QPainter& painter, const QString& text, QPointF left, double maximumWidth, const Style& style) const;

    // As many lines as needed, centred in `box`, without outline, made smaller until they fit.
    void drawParagraph(QPainter& painter, const QString& text, const QRectF& box, double pixelSize,
                       const QColor& colour) const;

private:
    QStringList families;
};

} // namespace pelloran::stage
