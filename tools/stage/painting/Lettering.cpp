#include "tools/stage/painting/Lettering.h"

#include "tools/stage/painting/Centreline.h"

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

// Regular script, written with a brush: of the free typefaces those that come closest to the letters of inscriptions,
// whose strokes part and join in the same places. Where none is installed the plain ones serve.
const QStringList brushFamilies{QStringLiteral("AR PL UKai CN"), QStringLiteral("LXGW WenKai"),
                                QStringLiteral("LXGW WenKai Light"), QStringLiteral("Kaiti SC"),
                                QStringLiteral("STKaiti")};

// Letters with sharp corners are drawn with a round pen of this width (in heights of a capital), which makes them
// bolder and their corners soft, as the game's are; and they are made wider and set apart, as far as the game's are.
constexpr double softness = 0.08;
constexpr double widening = 1.1;
constexpr double tracking = 0.055; // in heights of a capital

// Chinese characters are this much higher than capital letters.
constexpr double printedHeight = 1.5;

// The lettering of inscriptions: characters so much wider than high, unless they would then touch when set tightly;
// and the tightest that they are set, in heights of a character.
constexpr double flatness = 1.3;
constexpr double leastGap = 0.04;
constexpr double tightestPitch = 1.15;

// Shapes are taken from a large font and scaled: sizes of fonts are whole numbers, and letters 13 pixels high would
// otherwise come in few sizes.
constexpr double drawn = 200;

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
    lettering.thinFamilies = installed(brushFamilies) + lettering.plainFamilies;
    if (chineseLettering == ChineseLettering::clerical) {
        lettering.thinBuild = buildOf(lettering.clericalFont());
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

QFont Lettering::clericalFont() const {
    QFont thin = font(drawn);
    thin.setFamilies(thinFamilies);
    thin.setWeight(QFont::Light); // the middles of thin strokes are better defined
    return thin;
}

Lettering::Build Lettering::buildOf(const QFont& font) {
    Build build;
    // As thick with strokes as most; those of few are often smaller.
    const QString usual = QStringLiteral("战龙法师魔术暗影");
    for (const QChar character : usual) {
        QPainterPath shape;
        shape.addText(0, 0, font, character);
        const QRectF box = shape.boundingRect();
        build.width += box.width() / static_cast<double>(usual.size());
        build.height += box.height() / static_cast<double>(usual.size());
        build.middle += box.center().y() / static_cast<double>(usual.size());
    }
    // A typeface without outlines has none to paint either.
    build.width = std::max(1.0, build.width);
    build.height = std::max(1.0, build.height);
    return build;
}

bool Lettering::isClerical(const QString& text) const {
    return chineseLettering == ChineseLettering::clerical && hasCharacters(text);
}

Lettering::Line Lettering::lineOf(const QString& text, const Style& style, double maximumWidth) const {
    if (isClerical(text)) {
        return clericalLineOf(text, style, maximumWidth);
    }
    constexpr double filled = 0.92; // of its square, by a character
    const double caps = style.caps;
    const bool chinese = hasCharacters(text);
    QFont large = font(drawn);
    const double capitals = QFontMetricsF(large).capHeight();
    // Letters that are set apart are never joined into one, which the game does not do either.
    const double apart = chinese ? 0 : tracking * capitals;
    large.setLetterSpacing(QFont::AbsoluteSpacing, apart);
    const QFontMetricsF metrics(large);
    const double height = chinese ? printedHeight * caps : caps;
    // The pen for soft corners adds to the height of a capital.
    const double down = chinese ? height / (filled * drawn) : height * (1 - softness) / capitals;
    const double across = chinese ? down : down * widening;

    Line line;
    line.caps = caps;
    QTextBoundaryFinder clusters(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype from = 0, to = clusters.toNextBoundary(); to >= 0; from = to, to = clusters.toNextBoundary()) {
        // Widths of beginnings rather than of single letters, so that kerning stays.
        const double left = metrics.horizontalAdvance(text.left(from));
        const double right = metrics.horizontalAdvance(text.left(to)) - apart;
        QPainterPath shape;
        shape.addText(-(right - left) / 2, 0, large, text.mid(from, to - from));
        line.letters.push_back({QTransform::fromScale(across, down).map(shape), (left + right) / 2 * across});
        line.width = right * across;
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

Lettering::Line Lettering::clericalLineOf(const QString& text, const Style& style, double maximumWidth) const {
    QStringList clusters;
    QTextBoundaryFinder boundaries(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype from = 0, to = boundaries.toNextBoundary(); to >= 0; from = to, to = boundaries.toNextBoundary()) {
        clusters.append(text.mid(from, to - from));
    }
    const Hand& hand = style.hand;
    const auto count = static_cast<double>(clusters.size());
    // First tighter, then smaller.
    const double room = maximumWidth / (count * hand.height * style.caps);
    const double pitch = std::clamp(room, std::min(tightestPitch, hand.pitch), hand.pitch);
    Line line;
    line.caps = style.caps * std::min(1.0, room / pitch);
    const double height = hand.height * line.caps;
    line.width = count * pitch * height;

    const QFont large = clericalFont();
    const QFontMetricsF metrics(large);
    const double stroke = hand.stroke * line.caps;
    const double down = (height - stroke) / thinBuild.height;
    const double across = (std::min(flatness, pitch - leastGap) * height - stroke) / thinBuild.width;
    // The lines in the middle are sought on characters some hundred units high.
    constexpr double fine = 112;
    const double size = fine / height;
    constexpr double shortest = 0.06 * fine;
    // Characters of many strokes have thinner ones, or nothing could be seen between them: at most this share of a
    // character is covered.
    constexpr double densest = 0.42;
    const double area = thinBuild.width * across * thinBuild.height * down * size * size;
    QPainterPathStroker pen{QPen(Qt::black, 1, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin)};
    const QTransform flattened = QTransform::fromScale(across * size, down * size);
    for (const QString& cluster : std::as_const(clusters)) {
        QPainterPath shape;
        shape.addText(-metrics.horizontalAdvance(cluster) / 2, 0, large, cluster);
        const QPainterPath lines = centreline(flattened.map(shape.translated(0, -thinBuild.middle)), shortest);
        pen.setWidth(std::min(stroke * size, densest * area / std::max(1.0, lines.length())));
        // Characters have their middle where capital letters have it.
        shape = QTransform::fromScale(1 / size, 1 / size).map(pen.createStroke(lines)).translated(0, -line.caps / 2);
        const auto index = static_cast<double>(line.letters.size());
        line.letters.push_back({shape, pitch * height * (index + 0.5) - line.width / 2});
    }
    return line;
}

void Lettering::paintOutlined(QPainter& painter, const QPainterPath& letters, const Style& style,
                              const QString& text) const {
    const bool clerical = isClerical(text);
    const auto pen = [](const QColor& colour, double width) {
        return QPen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    };
    // Printed characters have strokes that run together when made bolder, clerical ones are as bold as they are to be.
    const double soft = style.caps * (hasCharacters(text) ? 0.0 : softness);
    const bool outlined = style.outlineWidth > 0;
    if (outlined) {
        const double outline = clerical ? std::max(style.hand.outline, style.outlineWidth) : style.outlineWidth;
        const double width = soft + 2 * outline * style.caps;
        painter.strokePath(letters.translated(0, style.caps * 0.06), pen(QColor(0, 0, 0, 70), width * 1.08));
        painter.strokePath(letters, pen(style.outline, width));
    }
    const QColor fill = clerical && outlined ? style.hand.grey : style.fill;
    painter.fillPath(letters, fill);
    if (soft > 0) {
        painter.strokePath(letters, pen(fill, soft));
    }
}

QPainterPath Lettering::drawAlong(QPainter& painter, const QString& text, QPointF base, double maximumWidth,
                                  const Curve& curve, const Style& style) const {
    const Line line = lineOf(text, style, maximumWidth);
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
    paintOutlined(painter, letters, set, text);
    return letters;
}

QPainterPath Lettering::draw(QPainter& painter, const QString& text, QPointF centre, double maximumWidth,
                             const Style& style) const {
    return drawAlong(painter, text, centre + QPointF(0, style.caps / 2), maximumWidth, Curve(), style);
}

void Lettering::drawFrom(QPainter& painter, const QString& text, QPointF left, double maximumWidth,
                         const Style& style) const {
    constexpr double anyWidth = 1e6;
    Line line = lineOf(text, style, anyWidth);
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
    paintOutlined(painter, letters, style, text);
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
