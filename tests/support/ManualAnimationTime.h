#pragma once

#include <QAnimationDriver>
#include <QCoreApplication>

#include <algorithm>

namespace pelloran::testing {

// Everything that was posted, and what that posted in its turn. Not a step of any animation.
inline void turnEventLoop() {
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

// While it lives, animations move only when the test says that time passes.
class ManualAnimationTime final : public QAnimationDriver {
public:
    ManualAnimationTime() { install(); }

    ~ManualAnimationTime() override { uninstall(); }

    // In frames of `frameLength`, with a turn of the event loop after each.
    void pass(int milliseconds, int frameLength = 16) {
        turnEventLoop(); // animations begin in a later turn than their start()
        while (milliseconds > 0) {
            const int frame = std::min(milliseconds, frameLength);
            milliseconds -= frame;
            now += frame;
            if (isRunning()) {
                advance();
            }
            turnEventLoop();
        }
    }

    qint64 elapsed() const override { return now - began; }

protected:
    void start() override {
        began = now;
        QAnimationDriver::start();
    }

private:
    qint64 now = 0;
    qint64 began = 0;
};

} // namespace pelloran::testing
