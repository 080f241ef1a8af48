#pragma once

#include "platform/PanelWindow.h"

#include <memory>

namespace pelloran::macos {

class WindowWatch;

// A window of the Mac's floating level, on every space and beside full-screen windows. Qt owns the native window and
// makes it anew at times; this owns only the material behind it, which is a window of its own: it comes and goes with
// the native one, and is taken off before that is destroyed. Where Qt does not run on the Mac's own desktop, as in
// tests without a display, nothing is asked of any window.
class CocoaPanelWindow final : public PanelWindow {
public:
    CocoaPanelWindow();
    ~CocoaPanelWindow() override;

    Qt::WindowFlags windowFlags() const override;
    void attach(QWindow& window) override;
    void raise() override;

    // Always: there is no desktop here that does not.
    bool isComposited() const override { return true; }

    void blurBehind(double cornerRadius) override;

private:
    class Backdrop;

    void settle();
    void placeBackdrop();

    std::unique_ptr<WindowWatch> watch; // null: nothing has been attached
    std::unique_ptr<Backdrop> backdrop; // null: nobody has asked for it
};

} // namespace pelloran::macos
