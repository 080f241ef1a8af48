#pragma once

#include <QColor>
#include <QFont>
#include <QTextLayout>
#include <QWidget>

namespace pelloran {

// A line or a paragraph of plain text. Beside what a label of the toolkit does it breaks words that are longer than a
// line, stops after so many lines with an ellipsis, gives every script the same line height, so that a Chinese name
// does not push its tile apart, and asks for a new layout only when one is needed.
class TextLabel final : public QWidget {
public:
    explicit TextLabel(QWidget* parent);

    const QString& text() const { return shownText; }

    void setText(const QString& text);

    const QFont& textFont() const { return font; }

    void setTextFont(const QFont& textFont);

    const QColor& color() const { return textColor; }

    void setColor(const QColor& color);

    // 0: as many as the text takes. It asks for no layout: a tile tries several while it makes one.
    void setMaximumLines(int lines);

    // The first character's ink, rather than its square, begins at the left edge.
    void setHangsPunctuation(bool hangs);

    // Of the text where nothing makes it break, in whole pixels.
    int naturalWidth() const;

    // Of the text broken to lines of that width.
    int heightForWidth(int width) const override;

    // From the top of a line.
    int lineHeight() const;
    double baseline() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void lay(int width) const;
    int breakIntoLines(const QString& text, double width) const;
    void askForLayout();

    QString shownText;
    QFont font;
    QColor textColor;
    int maximumLines = 0;
    bool hangsPunctuation = false;

    mutable QTextLayout layout; // of the text as broken for `laidWidth`
    mutable int laidWidth = -1; // -1: must be laid anew
    mutable int natural = -1;   // -1: must be measured anew
};

} // namespace pelloran
