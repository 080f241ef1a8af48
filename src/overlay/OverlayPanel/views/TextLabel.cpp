#include "overlay/OverlayPanel/views/TextLabel.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace pelloran {

namespace {

constexpr double leading = 1.25;  // line height over font size
constexpr double unlimited = 1e6; // pixels

// Text layouts know only their own kind of line break.
QString withLineSeparators(QString text) {
    text.replace(QStringLiteral("\r\n"), QString(QChar::LineSeparator));
    text.replace(u'\n', QChar::LineSeparator);
    text.replace(u'\r', QChar::LineSeparator);
    return text;
}

} // namespace

TextLabel::TextLabel(QWidget* parent)
    : QWidget(parent) {
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.setCacheEnabled(true);
}

void TextLabel::setText(const QString& text) {
    if (text == shownText) {
        return;
    }
    shownText = text;
    setAccessibleName(text);
    askForLayout();
}

void TextLabel::setTextFont(const QFont& textFont) {
    if (textFont == font) {
        return;
    }
    font = textFont;
    askForLayout();
}

void TextLabel::setColor(const QColor& color) {
    if (color != textColor) {
        textColor = color;
        update();
    }
}

void TextLabel::setMaximumLines(int lines) {
    if (lines != maximumLines) {
        maximumLines = lines;
        laidWidth = -1;
        natural = -1;
        update();
    }
}

void TextLabel::setHangsPunctuation(bool hangs) {
    hangsPunctuation = hangs;
    update();
}

int TextLabel::naturalWidth() const {
    if (natural < 0) {
        laidWidth = -1;
        layout.setFont(font);
        breakIntoLines(withLineSeparators(shownText), unlimited);
        double widest = 0;
        for (int index = 0; index < layout.lineCount(); ++index) {
            widest = std::max(widest, layout.lineAt(index).naturalTextWidth());
        }
        natural = static_cast<int>(std::ceil(widest));
    }
    return natural;
}

int TextLabel::heightForWidth(int width) const {
    lay(width);
    return std::max(layout.lineCount(), 1) * lineHeight();
}

int TextLabel::lineHeight() const {
    return static_cast<int>(std::lround(font.pixelSize() * leading));
}

double TextLabel::baseline() const {
    // Capitals stand in the middle of the line, and Chinese characters nearly so.
    return std::round((lineHeight() + QFontMetricsF(font).capHeight()) / 2);
}

QSize TextLabel::sizeHint() const {
    return {naturalWidth(), heightForWidth(naturalWidth())};
}

void TextLabel::paintEvent(QPaintEvent*) {
    lay(width());
    QPainter painter(this);
    painter.setPen(textColor);
    // A full-width bracket keeps its ink in the right half of its square.
    const double hang = hangsPunctuation ? QFontMetricsF(font).boundingRect(shownText.left(1)).left() : 0;
    for (int index = 0; index < layout.lineCount(); ++index) {
        const QTextLine line = layout.lineAt(index);
        line.draw(&painter, QPointF(-hang, index * lineHeight() + baseline() - line.ascent() - line.y()));
    }
}

void TextLabel::lay(int width) const {
    if (width == laidWidth) {
        return;
    }
    laidWidth = width;
    layout.setFont(font);
    const QString text = withLineSeparators(shownText);
    const int begin = breakIntoLines(text, width);
    if (begin >= 0) {
        // What does not fit into the last line ends in an ellipsis there.
        QString rest = text.mid(begin);
        rest.replace(QChar::LineSeparator, u' ');
        const QString elided = QFontMetricsF(font).elidedText(rest, Qt::ElideRight, width);
        breakIntoLines(begin == 0 ? elided : text.left(begin).trimmed() + QChar::LineSeparator + elided, width);
    }
}

// The position at which the last permitted line begins when the text goes on after it, else -1.
int TextLabel::breakIntoLines(const QString& text, double width) const {
    layout.setText(text);
    layout.beginLayout();
    int lastBegin = 0;
    bool goesOn = false;
    while (true) {
        QTextLine line = layout.createLine();
        if (!line.isValid()) {
            break;
        }
        if (maximumLines > 0 && layout.lineCount() > maximumLines) {
            goesOn = true;
            break;
        }
        line.setLineWidth(std::max(width, 1.0));
        lastBegin = line.textStart();
    }
    layout.endLayout();
    return goesOn ? lastBegin : -1;
}

void TextLabel::askForLayout() {
    laidWidth = -1;
    natural = -1;
    update();
    // A hidden label takes part in the layout once it is shown.
    if (!isHidden() && parentWidget()) {
        QCoreApplication::postEvent(parentWidget(), new QEvent(QEvent::LayoutRequest));
    }
}

} // namespace pelloran
