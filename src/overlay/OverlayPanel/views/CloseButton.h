#pragma once

#include <QAbstractButton>
#include <QColor>

namespace pelloran {

// A small cross that hides the panel; a disc appears under the pointer.
class CloseButton final : public QAbstractButton {
    Q_OBJECT

public:
    static constexpr int margin = 4; // around the cross; it belongs to the button, so that it is easy to hit

    explicit CloseButton(QWidget* parent);

    void setColor(const QColor& color);

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    QColor cross = Qt::white;
};

} // namespace pelloran
