#pragma once

#include <QObject>
#include <QPointer>
#include <QWindow>

#include <functional>

namespace pelloran::macos {

// Tells when the native window behind a QWindow may be another one than before, and when it goes. Qt makes native
// windows anew as it sees fit, so what was asked of one has to be asked again, and nobody may keep one from one call to
// the next. Main thread.
class WindowWatch final : public QObject {
public:
    // Follows `followed`, which may go first.
    explicit WindowWatch(QWindow& followed);

    // Null once it is gone.
    QWindow* window() const { return followedWindow; }

    // The window has been made, made anew, or has come on screen: of what it was told before, nothing need hold.
    std::function<void()> came;

    // It has been hidden, or is about to be destroyed. The native window is still there.
    std::function<void()> leaves;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    static void tell(const std::function<void()>& listener);

    QPointer<QWindow> followedWindow;
    bool comes = false; // shown, but not yet seen on screen
};

} // namespace pelloran::macos
