#pragma once

#include <Qt>

#include <functional>
#include <memory>

class QWindow;

namespace pelloran {

// Makes one window float: above every other window, a full-screen game included, on every desktop, and never with the
// keyboard. Of several, those made later stay above those made earlier. What all that takes differs from system to
// system. Main thread, with a QGuiApplication.
class PanelWindow {
public:
    static std::unique_ptr<PanelWindow> create();

    virtual ~PanelWindow() = default;

    // What the window must be made with.
    virtual Qt::WindowFlags windowFlags() const = 0;

    // Takes charge of `window`, which must be known to the window server and outlive this object. Once per object.
    virtual void attach(QWindow& window) = 0;

    // Above every other window, without taking the keyboard. Nothing happens while the window is hidden.
    virtual void raise() = 0;

    // Whether the desktop lets what lies behind a translucent window show through. Without it the window must be opaque
    // and have its corners cut.
    virtual bool isComposited() const = 0;

    // Radius of the window's corners in device-independent pixels: what lies behind is blurred inside of them, where
    // the desktop offers it. Call it again after the window's size has changed.
    virtual void blurBehind(double cornerRadius) = 0;

    // Called when isComposited() has changed.
    std::function<void()> compositingChanged;
};

} // namespace pelloran
