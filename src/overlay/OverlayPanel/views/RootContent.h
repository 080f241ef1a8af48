#pragma once

#include <QWidget>

namespace pelloran {

class CardsStack;
class TextLabel;

// Constants of the edges between the panel's parts, in device-independent pixels: an edge stands where its neighbour's
// does plus the constant, so trailing and bottom ones are negative.
struct ContentConstraints {
    double titleTop = 12;
    double titleLeading = 14;
    double titleTrailing = -14;
    double messageTop = 10;
    double messageLeading = 14;
    double messageTrailing = -14;
    double stackTop = 10;
    double stackLeading = 12;
    double stackTrailing = -12;
    double stackBottom = -12;

    bool operator==(const ContentConstraints&) const = default;
};

// What stands on the panel's sheet: the title, below it either the message or the tiles.
class RootContent final : public QWidget {
public:
    explicit RootContent(QWidget* parent);

    void setConstraints(const ContentConstraints& constraints);

    // Kept free at the right end of the title's first line.
    void setTitleReserve(int width);

    void layoutSubviews();

    TextLabel* const titleLabel;
    TextLabel* const messageLabel;
    CardsStack* const cardsStack;

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;

private:
    ContentConstraints constraints;
    int titleReserve = 0;
};

} // namespace pelloran
