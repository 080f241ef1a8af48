#pragma once

#include "stage/Catalogue.h"
#include "stage/Look.h"
#include "stage/painting/Curve.h"

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QPainterPath>
#include <QPointF>
#include <QString>

#include <expected>

namespace pelloran::stage {

// The typefaces of the stage, and how letters are set with them. Immutable.
class Lettering {
public:
    // The best typefaces installed for the language. The error names what to install.
    static std::expected<Lettering, QString> create(Language language,
                                                    ChineseLettering chinese = ChineseLettering::printed);

    struct Style {
        double caps = 20; // height of a capital letter; other sizes follow from it
        QColor fill{0xfa, 0xfa, 0xf8};
        QColor outline{0x04, 0x03, 0x02};
        double outlineWidth = 0.155; // of the height of a capital, on each side; 0: none
    };

    // One line whose letters stand on `curve`, its middle at `base`: set tighter and then smaller where it would be
    // wider than `maximumWidth`. Answers the letters without their outline.
    QPainterPath drawAlong(QPainter& painter, const QString& text, QPointF base, double maximumWidth,
                           const Curve& curve, const Style& style) const;

    // One straight line, centred at `centre`.
    QPainterPath draw(QPainter& painter, const QString& text, QPointF centre, double maximumWidth,
                      const Style& style) const;

    // One straight line that begins at `left` (middle of its height), cut off at `maximumWidth`.
    void drawFrom(QPainter& painter, const QString& text, QPointF left, double maximumWidth, const Style& style) const;

    // As many plain lines as needed, centred in `box`, without outline, made smaller until they fit.
    void drawParagraph(QPainter& painter, const QString& text, const QRectF& box, double pixelSize,
                       const QColor& colour) const;

private:
    // The letters of one line, one path each, with where each stands.
    struct Line;

    Line lineOf(const QString& text, double caps, double maximumWidth) const;
    void paintOutlined(QPainter& painter, const QPainterPath& letters, const Style& style, bool chinese) const;
    QFont font(double pixelSize) const;
    QFont clericalFont(double pixelSize) const;
    bool isClerical(const QString& text) const;

    Language language = Language::english;
    ChineseLettering chineseLettering = ChineseLettering::printed;
    QStringList families;      // of names and headings
    QStringList plainFamilies; // of rules
};

} // namespace pelloran::stage
