#pragma once

#include <QTimer>

#include <chrono>
#include <functional>

namespace pelloran::x11 {

// The time that X11Panel goes by, with one alarm. Handed in, so that a test says how late it is.
class PanelClock {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    virtual ~PanelClock() = default;

    virtual TimePoint now() const = 0;

    // Rings once from the event loop when `due` has come, which may be now or past. Of several the last counts.
    virtual void setAlarm(TimePoint due) = 0;
    virtual void clearAlarm() = 0;

    // Set, and has not rung yet.
    virtual bool hasAlarm() const = 0;

    std::function<void()> alarm;
};

// Real time, in the event loop of the thread that made it.
class EventLoopClock final : public PanelClock {
public:
    EventLoopClock();

    TimePoint now() const override { return std::chrono::steady_clock::now(); }

    void setAlarm(TimePoint due) override;

    void clearAlarm() override { timer.stop(); }

    bool hasAlarm() const override { return timer.isActive(); }

private:
    QTimer timer;
};

} // namespace pelloran::x11
