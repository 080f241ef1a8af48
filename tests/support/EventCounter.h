#pragma once

#include <QEvent>
#include <QObject>

#include <utility>

namespace pelloran::testing {

// How many events of one kind an object receives.
class EventCounter final : public QObject {
public:
    EventCounter(QObject& watched, QEvent::Type counted)
        : type(counted) {
        watched.installEventFilter(this);
    }

    // Since the last time.
    int take() { return std::exchange(count, 0); }

protected:
    bool eventFilter(QObject* object, QEvent* event) override {
        count += event->type() == type;
        return QObject::eventFilter(object, event);
    }

private:
    QEvent::Type type;
    int count = 0;
};

} // namespace pelloran::testing
