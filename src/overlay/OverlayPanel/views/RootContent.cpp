#include "overlay/OverlayPanel/views/RootContent.h"

#include "overlay/OverlayPanel/views/CardsStack.h"
#include "overlay/OverlayPanel/views/TextLabel.h"

#include <QEvent>

#include <algorithm>
#include <cmath>

namespace pelloran {

RootContent::RootContent(QWidget* parent)
    : QWidget(parent)
    , titleLabel(new TextLabel(this)) // all owned by this
    , messageLabel(new TextLabel(this))
    , cardsStack(new CardsStack(this)) {}

void RootContent::setConstraints(const ContentConstraints& newConstraints) {
    if (newConstraints != constraints) {
        constraints = newConstraints;
        layoutSubviews();
    }
}

void RootContent::setTitleReserve(int width) {
    titleReserve = width;
}

void RootContent::layoutSubviews() {
    // Places `view` between two edges and gives the place of its bottom edge.
    const auto place = [this](QWidget* view, double top, double leading, double trailing, auto heightFor) {
        const int left = static_cast<int>(std::lround(leading));
        const int right = static_cast<int>(std::lround(width() + trailing));
        const int y = static_cast<int>(std::lround(top));
        const int lineWidth = std::max(right - left, 1);
        const int height = heightFor(lineWidth, y);
        view->setGeometry(left, y, lineWidth, height);
        return static_cast<double>(y + height);
    };
    const auto textHeight = [](TextLabel* label) {
        return [label](int width, int) { return label->heightForWidth(width); };
    };
    double bottom = place(titleLabel, constraints.titleTop, constraints.titleLeading,
                          constraints.titleTrailing - titleReserve, textHeight(titleLabel));
    if (!messageLabel->isHidden()) { // a hidden one leaves no gap
        bottom = place(messageLabel, bottom + constraints.messageTop, constraints.messageLeading,
                       constraints.messageTrailing, textHeight(messageLabel));
    }
    place(cardsStack, bottom + constraints.stackTop, constraints.stackLeading, constraints.stackTrailing,
          [this](int, int top) {
              return std::max(static_cast<int>(std::lround(height() + constraints.stackBottom)) - top, 0);
          });
}

void RootContent::resizeEvent(QResizeEvent*) {
    layoutSubviews();
}

bool RootContent::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest) {
        layoutSubviews();
        return true;
    }
    return QWidget::event(event);
}

} // namespace pelloran
