#pragma once

#include "tools/stage/Catalogue.h"
#include "tools/stage/Look.h"
#include "tools/stage/painting/Curve.h"

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

    // How clerical characters are cut. Lengths are in heights of a capital where nothing else is said.
    struct Hand {
        double height = 1.15;       // of a character
        double pitch = 1.35;        // from one character to the next, in heights of a character
        double stroke = 1.45 / 13;  // width of strokes
        double outline = 2.05 / 13; // on each side: wider than the strokes
        QColor grey{205, 200, 195};
    };

    struct Style {
        double caps = 20; // height of a capital letter; other sizes follow from it
        QColor fill{0xfa, 0xfa, 0xf8};
        QColor outline{0x04, 0x03, 0x02};
        double outlineWidth = 0.155; // of the height of a capital, on each side; 0: none
        Hand hand = {};              // of clerical characters: where outlined, in place of the fill and the outline
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

    // What the characters of a typeface are like on average, in pixels of its size.
    struct Build {
        double width = 0;
        double height = 0;
        double middle = 0; // downward from the base line
    };

    Line lineOf(const QString& text, const Style& style, double maximumWidth) const;
    Line clericalLineOf(const QString& text, const Style& style, double maximumWidth) const;
    void paintOutlined(QPainter& painter, const QPainterPath& letters, const Style& style, const QString& text) const;
    QFont font(double pixelSize) const;
    QFont clericalFont() const;
    static Build buildOf(const QFont& font);
    bool isClerical(const QString& text) const;

    Language language = Language::english;
    ChineseLettering chineseLettering = ChineseLettering::printed;
    QStringList families;      // of names and headings
    QStringList plainFamilies; // of rules
    QStringList thinFamilies;  // of clerical characters
    Build thinBuild;
};

} // namespace pelloran::stage
