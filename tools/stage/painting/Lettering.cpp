#include "stage/painting/Lettering.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QRawFont>
#include <QTextBoundaryFinder>
#include <QTextLayout>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace pelloran::stage {

namespace {

const QStringList latinFamilies{QStringLiteral("Linux Libertine O"), QStringLiteral("Libertinus Serif"),
                                QStringLiteral("EB Garamond"),       QStringLiteral("P052"),
                                QStringLiteral("Caladea"),           QStringLiteral("DejaVu Serif"),
                                QStringLiteral("Palatino"),          QStringLiteral("Times New Roman")};
const QStringList chineseFamilies{QStringLiteral("Noto Serif CJK SC"), QStringLiteral("Source Han Serif SC"),
                                  QStringLiteral("AR PL UMing CN"),    QStringLiteral("Noto Sans CJK SC"),
                                  QStringLiteral("WenQuanYi Zen Hei"), QStringLiteral("AR PL UKai CN"),
                                  QStringLiteral("Songti SC"),         QStringLiteral("PingFang SC")};

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

// Distance from the base line up to the middle of a line's letters.
double middle(const QFontMetricsF& metrics, const QString& text) {
    const bool ideographs = std::ranges::any_of(text, [](QChar c) { return c.unicode() >= 0x2e80; });
    return ideographs ? (metrics.ascent() - metrics.descent()) * 0.45 : metrics.capHeight() / 2;
}

void paintOutlined(QPainter& painter, const QPainterPath& letters, const Lettering::Style& style, double pixelSize) {
    const double width = 2 * style.outlineWidth * pixelSize;
    painter.strokePath(letters.translated(0, pixelSize * 0.05),
                       QPen(QColor(0, 0, 0, 150), width * 1.25, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.strokePath(letters, QPen(style.outline, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.fillPath(letters, style.fill);
}

} // namespace

double Curve::y(double x) const {
    const double t = 2 * x / width;
    switch (shape) {
    case straight:
        return 0;
    case arch:
        return rise * t * t;
    case wave:
        return -rise * 0.75 * std::sin(t * std::numbers::pi * 0.62) - rise * 0.2 * (1 - t * t);
    }
    return 0;
}

double Curve::angle(double x) const {
    return std::atan2(y(x + 1) - y(x - 1), 2) * 180 / std::numbers::pi;
}

QPainterPath Curve::band(QPointF centre, double height) const {
    constexpr int pieces = 24;
    QPolygonF outline;
    for (int i = 0; i <= pieces; ++i) {
        const double x = width * (static_cast<double>(i) / pieces - 0.5);
        outline << centre + QPointF(x, y(x) - height / 2);
    }
    for (int i = pieces; i >= 0; --i) {
        const double x = width * (static_cast<double>(i) / pieces - 0.5);
        outline << centre + QPointF(x, y(x) + height / 2);
    }
    QPainterPath path;
    path.addPolygon(outline);
    path.closeSubpath();
    return path;
}

std::expected<Lettering, QString> Lettering::create(Language language) {
    QStringList chinese = installed(chineseFamilies);
    if (chinese.isEmpty()) {
        chinese = anyChinese();
    }
    if (language == Language::chinese && chinese.isEmpty()) {
        return std::unexpected(QStringLiteral(
            "no installed font covers Chinese; install one, such as the package fonts-noto-cjk on Debian"));
    }
    Lettering lettering;
    lettering.families =
        language == Language::chinese ? chinese + installed(latinFamilies) : installed(latinFamilies) + chinese;
    if (lettering.families.isEmpty()) {
        lettering.families = {QStringLiteral("serif")};
    }
    return lettering;
}

QFont Lettering::font(double pixelSize, QFont::Weight weight) const {
    QFont font;
    font.setFamilies(families);
    font.setPixelSize(std::max(4, static_cast<int>(std::lround(pixelSize))));
    font.setWeight(weight);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

void Lettering::drawAlong(QPainter& painter, const QString& text, QPointF centre, double maximumWidth,
                          const Curve& curve, const Style& style) const {
    double pixelSize = style.pixelSize;
    const double natural = QFontMetricsF(font(pixelSize)).horizontalAdvance(text);
    if (natural > maximumWidth) {
        pixelSize *= maximumWidth / natural;
    }
    const QFont lettersFont = font(pixelSize);
    const QFontMetricsF metrics(lettersFont);
    const double rise = middle(metrics, text);
    const double start = -metrics.horizontalAdvance(text) / 2;

    QPainterPath letters;
    letters.setFillRule(Qt::WindingFill);
    QTextBoundaryFinder clusters(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype from = 0, to = clusters.toNextBoundary(); to >= 0; from = to, to = clusters.toNextBoundary()) {
        const QString cluster = text.mid(from, to - from);
        // Widths of beginnings rather than of single letters, so that kerning stays.
        const double left = start + metrics.horizontalAdvance(text.left(from));
        const double half = (metrics.horizontalAdvance(text.left(to)) - metrics.horizontalAdvance(text.left(from))) / 2;
        QPainterPath letter;
        letter.addText(-half, rise, lettersFont, cluster);
        QTransform placed;
        placed.translate(centre.x() + left + half, centre.y() + curve.y(left + half));
        placed.rotate(curve.angle(left + half));
        letters.addPath(placed.map(letter));
    }
    paintOutlined(painter, letters, style, pixelSize);
}

void Lettering::draw(QPainter& painter, const QString& text, QPointF centre, double maximumWidth,
                     const Style& style) const {
    drawAlong(painter, text, centre, maximumWidth, Curve(Curve::straight, 1, 0), style);
}

void Lettering::drawFrom(QPainter& painter, const QString& text, QPointF left, double maximumWidth,
                         const Style& style) const {
    const QFont lettersFont = font(style.pixelSize);
    const QFontMetricsF metrics(lettersFont);
    const QString shown = metrics.elidedText(text, Qt::ElideRight, maximumWidth);
    QPainterPath letters;
    letters.setFillRule(Qt::WindingFill);
    letters.addText(left.x(), left.y() + middle(metrics, shown), lettersFont, shown);
    paintOutlined(painter, letters, style, style.pixelSize);
}

void Lettering::drawParagraph(QPainter& painter, const QString& text, const QRectF& box, double pixelSize,
                              const QColor& colour) const {
    painter.setPen(colour);
    for (double size = pixelSize;; size *= 0.92) {
        painter.setFont(font(size, QFont::Medium));
        const QRectF needed = painter.boundingRect(box, Qt::AlignCenter | Qt::TextWordWrap, text);
        if (needed.height() <= box.height() || size < 6) {
            painter.drawText(box, Qt::AlignCenter | Qt::TextWordWrap, text);
            return;
        }
    }
}

} // namespace pelloran::stage
