#include "stage/painting/Lettering.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QGlyphRun>
#include <QRawFont>
#include <QTextBoundaryFinder>
#include <QTextLayout>

#include <algorithm>
#include <cmath>
#include <vector>

namespace pelloran::stage {

namespace {

const QStringList latinFamilies{QStringLiteral("Linux Libertine O"), QStringLiteral("Libertinus Serif"),
                                QStringLiteral("EB Garamond"),       QStringLiteral("P052"),
                                QStringLiteral("Caladea"),           QStringLiteral("DejaVu Serif"),
                                QStringLiteral("Palatino"),          QStringLiteral("Times New Roman")};
const QStringList plainLatinFamilies{QStringLiteral("Linux Biolinum O"), QStringLiteral("Nimbus Sans Narrow"),
                                     QStringLiteral("DejaVu Sans"), QStringLiteral("Helvetica")};
const QStringList chineseFamilies{QStringLiteral("Noto Serif CJK SC"), QStringLiteral("Source Han Serif SC"),
                                  QStringLiteral("AR PL UMing CN"),    QStringLiteral("Noto Sans CJK SC"),
                                  QStringLiteral("WenQuanYi Zen Hei"), QStringLiteral("AR PL UKai CN"),
                                  QStringLiteral("Songti SC"),         QStringLiteral("PingFang SC")};
const QStringList plainChineseFamilies{QStringLiteral("Noto Sans CJK SC"), QStringLiteral("Source Han Sans SC"),
                                       QStringLiteral("WenQuanYi Zen Hei"), QStringLiteral("PingFang SC")};

// Letters with sharp corners are drawn with a round pen of this width (in heights of a capital), which makes them
// bolder and their corners soft, as the game's are; and they are made wider and set apart, as far as the game's are.
constexpr double softness = 0.08;
constexpr double widening = 1.1;
constexpr double tracking = 0.055; // in heights of a capital

// Chinese characters are this much higher than capital letters.
constexpr double printedHeight = 1.5;

// The lettering of inscriptions: characters this high, squeezed to that share of their height, set so far apart (in
// heights of a character), in grey. Widths are in heights of a capital.
constexpr double clericalHeight = 1.15;
constexpr double squeeze = 0.7;
constexpr double clericalPitch = 1.5;
constexpr double clericalSoftness = 0.03;
constexpr double clericalOutline = 2.1 / 13;
const QColor clericalGrey(200, 195, 190);

QStringList installed(const QStringList& wanted) {
    const QStringList present = QFontDatabase::families();
    QStringList found;
    for (const QString& family : wanted) {
        if (present.contains(family)) {
            found.append(family);
        }
    }
    return found;
}

bool coversChinese(const QString& family) {
    const QRawFont font = QRawFont::fromFont(QFont(family, 20), QFontDatabase::SimplifiedChinese);
    return font.supportsCharacter(QChar(0x6cd5)) && font.supportsCharacter(QChar(0x724c));
}

// Any family that can write Chinese, for systems whose fonts are none of those above.
QStringList anyChinese() {
    for (const QString& family : QFontDatabase::families(QFontDatabase::SimplifiedChinese)) {
        if (coversChinese(family)) {
            return {family};
        }
    }
    return {};
}

bool hasCharacters(const QString& text) {
    return std::ranges::any_of(text, [](QChar c) { return c.unicode() >= 0x2e80; });
}

} // namespace

struct Lettering::Line {
    struct Letter {
        QPainterPath shape; // on a base line through its middle
        double x;           // of that middle, from the middle of the line
    };

    std::vector<Letter> letters;
    double width = 0;
    double caps = 0; // as set
};

std::expected<Lettering, QString> Lettering::create(Language language, ChineseLettering chineseLettering) {
    QStringList chinese = installed(chineseFamilies);
    if (chinese.isEmpty()) {
        chinese = anyChinese();
    }
    if (language == Language::chinese && chinese.isEmpty()) {
        return std::unexpected(QStringLiteral(
            "no installed font covers Chinese; install one, such as the package fonts-noto-cjk on Debian"));
    }
    Lettering lettering;
    lettering.language = language;
    lettering.chineseLettering = chineseLettering;
    const bool isChinese = language == Language::chinese;
    lettering.families = isChinese ? chinese + installed(latinFamilies) : installed(latinFamilies) + chinese;
    if (lettering.families.isEmpty()) {
        lettering.families = {QStringLiteral("serif")};
    }
    const QStringList plainChinese = installed(plainChineseFamilies) + chinese;
    lettering.plainFamilies =
        isChinese ? plainChinese + installed(plainLatinFamilies) : installed(plainLatinFamilies) + plainChinese;
    if (lettering.plainFamilies.isEmpty()) {
        lettering.plainFamilies = {QStringLiteral("sans")};
    }
    return lettering;
}

QFont Lettering::font(double pixelSize) const {
    QFont font;
    font.setFamilies(families);
    font.setPixelSize(std::max(4, static_cast<int>(std::lround(pixelSize))));
    font.setWeight(QFont::Bold);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

QFont Lettering::clericalFont(double pixelSize) const {
    QFont thin = font(pixelSize);
    thin.setFamilies(plainFamilies);
    thin.setWeight(QFont::Light); // with strokes as thin as there are; their width is made equal in lineOf()
    return thin;
}

bool Lettering::isClerical(const QString& text) const {
    return chineseLettering == ChineseLettering::clerical && hasCharacters(text);
}

Lettering::Line Lettering::lineOf(const QString& text, double caps, double maximumWidth) const {
    // Shapes are taken from a large font and scaled: sizes of fonts are whole numbers, and letters 13 pixels high would
    // otherwise come in few sizes.
    constexpr double drawn = 200;
    constexpr double filled = 0.92; // of its square, by a character
    const bool chinese = hasCharacters(text);
    const bool clerical = isClerical(text);
    QFont large = clerical ? clericalFont(drawn) : font(drawn);
    const double capitals = QFontMetricsF(large).capHeight();
    // Letters that are set apart are never joined into one, which the game does not do either.
    const double apart = chinese ? 0 : tracking * capitals;
    large.setLetterSpacing(QFont::AbsoluteSpacing, apart);
    const QFontMetricsF metrics(large);
    const double height = clerical ? clericalHeight * caps : chinese ? printedHeight * caps : caps;
    // The pen for soft corners adds to the height of a capital.
    const double down = chinese ? height / (filled * drawn) : height * (1 - softness) / capitals;
    const double across = clerical ? down / squeeze : chinese ? down : down * widening;

    Line line;
    line.caps = caps;
    QTextBoundaryFinder clusters(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype from = 0, to = clusters.toNextBoundary(); to >= 0; from = to, to = clusters.toNextBoundary()) {
        const auto index = static_cast<double>(line.letters.size());
        // Widths of beginnings rather than of single letters, so that kerning stays.
        const double left = metrics.horizontalAdvance(text.left(from));
        const double right = metrics.horizontalAdvance(text.left(to)) - apart;
        QPainterPath shape;
        shape.addText(-(right - left) / 2, 0, large, text.mid(from, to - from));
        const double middle = clerical ? clericalPitch * height * (index + 0.5) : (left + right) / 2 * across;
        line.letters.push_back({QTransform::fromScale(across, down).map(shape), middle});
        line.width = clerical ? clericalPitch * height * (index + 1) : right * across;
    }
    // First tighter, then smaller: both by the same factor.
    const double fit = std::min(1.0, maximumWidth / line.width);
    const double smaller = fit < 0.8 ? fit / std::sqrt(0.8) : std::sqrt(fit);
    const double tighter = fit / smaller;
    line.caps *= smaller;
    // Characters have their middle where capital letters have it. In its square, a character hangs a little below the
    // base line; so do letters, by what the pen for soft corners adds.
    const double below = chinese ? (height - caps) / 2 - 0.07 * drawn * down : -softness / 2 * caps;
    for (Line::Letter& letter : line.letters) {
        letter.x = (letter.x - line.width / 2) * fit;
        letter.shape = QTransform::fromScale(smaller * tighter, smaller).map(letter.shape.translated(0, below));
    }
    line.width *= fit;
    return line;
}

void Lettering::paintOutlined(QPainter& painter, const QPainterPath& letters, const Style& style, bool chinese) const {
    const bool clerical = chinese && chineseLettering == ChineseLettering::clerical;
    const auto pen = [](const QColor& colour, double width) {
        return QPen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    };
    // Printed characters have strokes that run together when made bolder.
    const double soft = style.caps * (clerical ? clericalSoftness : chinese ? 0.0 : softness);
    const bool outlined = style.outlineWidth > 0;
    if (outlined) {
        const double outline = clerical ? std::max(clericalOutline, style.outlineWidth) : style.outlineWidth;
        const double width = soft + 2 * outline * style.caps;
        painter.strokePath(letters.translated(0, style.caps * 0.06), pen(QColor(0, 0, 0, 70), width * 1.08));
        painter.strokePath(letters, pen(style.outline, width));
    }
    const QColor fill = clerical && outlined ? clericalGrey : style.fill;
    painter.fillPath(letters, fill);
    if (soft > 0) {
        painter.strokePath(letters, pen(fill, soft));
    }
}

QPainterPath Lettering::drawAlong(QPainter& painter, const QString& text, QPointF base, double maximumWidth,
                                  const Curve& curve, const Style& style) const {
    const Line line = lineOf(text, style.caps, maximumWidth);
    QPainterPath letters;
    letters.setFillRule(Qt::WindingFill);
    for (const Line::Letter& letter : line.letters) {
        QTransform placed;
        placed.translate(base.x() + letter.x, base.y() + curve.y(letter.x));
        placed.rotate(curve.angle(letter.x));
        letters.addPath(placed.map(letter.shape));
    }
    Style set = style;
    set.caps = line.caps;
    paintOutlined(painter, letters, set, hasCharacters(text));
    return letters;
}

QPainterPath Lettering::draw(QPainter& painter, const QString& text, QPointF centre, double maximumWidth,
                             const Style& style) const {
    return drawAlong(painter, text, centre + QPointF(0, style.caps / 2), maximumWidth, Curve(), style);
}

void Lettering::drawFrom(QPainter& painter, const QString& text, QPointF left, double maximumWidth,
                         const Style& style) const {
    constexpr double anyWidth = 1e6;
    Line line = lineOf(text, style.caps, anyWidth);
    if (line.width > maximumWidth) {
        const auto room = maximumWidth - style.caps;
        while (!line.letters.empty() && line.letters.back().x + line.width / 2 > room) {
            line.letters.pop_back();
        }
    }
    QPainterPath letters;
    letters.setFillRule(Qt::WindingFill);
    for (const Line::Letter& letter : line.letters) {
        letters.addPath(letter.shape.translated(left.x() + line.width / 2 + letter.x, left.y() + style.caps / 2));
    }
    paintOutlined(painter, letters, style, hasCharacters(text));
}

void Lettering::drawParagraph(QPainter& painter, const QString& text, const QRectF& box, double pixelSize,
                              const QColor& colour) const {
    // As shapes, like all other letters: text that Qt draws itself under a transformation leaves the typeface in a
    // state in which the next shapes taken from it differ by a hundredth of a pixel, and equal pictures would not be
    // equal.
    constexpr double drawn = 100;
    QFont plain;
    plain.setFamilies(plainFamilies);
    plain.setPixelSize(static_cast<int>(drawn));
    plain.setWeight(QFont::Medium);
    plain.setHintingPreference(QFont::PreferNoHinting);
    QTextOption wrapping(Qt::AlignHCenter);
    wrapping.setWrapMode(QTextOption::WordWrap);
    for (double scale = pixelSize / drawn;; scale *= 0.92) {
        QTextLayout layout(text, plain);
        layout.setTextOption(wrapping);
        layout.beginLayout();
        double height = 0;
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(box.width() / scale);
            line.setPosition({0, height});
            height += line.height();
        }
        layout.endLayout();
        if (height * scale > box.height() && scale * drawn > 6) {
            continue;
        }
        QPainterPath letters;
        letters.setFillRule(Qt::WindingFill);
        for (const QGlyphRun& run : layout.glyphRuns()) {
            const QList<quint32> glyphs = run.glyphIndexes();
            const QList<QPointF> places = run.positions();
            for (qsizetype i = 0; i < glyphs.size(); ++i) {
                letters.addPath(run.rawFont().pathForGlyph(glyphs[i]).translated(places[i]));
            }
        }
        QTransform placed = QTransform::fromTranslate(box.left(), box.center().y() - height * scale / 2);
        painter.fillPath(placed.scale(scale, scale).map(letters), colour);
        return;
    }
}

} // namespace pelloran::stage
