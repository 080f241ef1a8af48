#pragma once

#include <QPoint>
#include <QProcessEnvironment>
#include <QStringList>

#include <functional>

namespace pelloran::testing {

// The user's hand on mouse and keyboard of a display, by xdotool. What it does has reached the server when a function
// returns.
class Hand {
public:
    explicit Hand(const QProcessEnvironment& displayEnvironment)
        : environment(displayEnvironment) {}

    static bool isInstalled();

    void moveTo(QPoint point) const;
    void press(QPoint at) const;
    void release() const;
    void click(QPoint at, int button = 1) const;
    void key(const char* combination) const; // such as "ctrl+q"

    // Takes hold at `from` and goes to `to` in steps, as a mouse does; the button stays down.
    void pull(QPoint from, QPoint to) const;

private:
    void run(const QStringList& arguments) const;

    QProcessEnvironment environment;
};

} // namespace pelloran::testing
