#include "platform/macos/CocoaPanelWindow.h"

#include "platform/macos/WindowWatch.h"

#include <QGuiApplication>
#import <QuartzCore/QuartzCore.h>
#include <QWindow>

#import <AppKit/AppKit.h>

namespace pelloran {

namespace macos {

namespace {

constexpr NSWindowCollectionBehavior everywhere =
    NSWindowCollectionBehaviorCanJoinAllSpaces | NSWindowCollectionBehaviorFullScreenAuxiliary;

// Nil where there is none yet, or none of the Mac's. Not to be kept, since Qt replaces it.
NSWindow* nativeWindow(const QWindow* window) {
    if (!window || !window->handle() || QGuiApplication::platformName() != QStringLiteral("cocoa")) {
        return nil; // asking a window without a handle for its number would make one
    }
    NSView* const view = (__bridge NSView*)reinterpret_cast<void*>(window->winId());
    return view.window;
}

} // namespace

// What shines through the panel: a window right behind it that shows the system's material and nothing else. Within the
// panel's own window there is no place for it, because Qt's view is that window's content, and draws below its
// subviews.
class CocoaPanelWindow::Backdrop {
public:
    Backdrop()
        : window([[NSPanel alloc] initWithContentRect:NSMakeRect(0, 0, 1, 1)
                                            styleMask:NSWindowStyleMaskBorderless | NSWindowStyleMaskNonactivatingPanel
                                              backing:NSBackingStoreBuffered
                                                defer:NO])
        , material([[NSVisualEffectView alloc] initWithFrame:NSMakeRect(0, 0, 1, 1)]) {
        material.material = NSVisualEffectMaterialHUDWindow;
        material.blendingMode = NSVisualEffectBlendingModeBehindWindow;
        material.state = NSVisualEffectStateActive; // the program is hardly ever the active one
        // The panel is a dark sheet on a light desktop too.
        material.appearance = [NSAppearance appearanceNamed:NSAppearanceNameVibrantDark];
        material.wantsLayer = YES;
        material.layer.cornerCurve = kCACornerCurveContinuous;
        material.layer.masksToBounds = YES;

        window.releasedWhenClosed = NO; // this object does that
        window.opaque = NO;
        window.backgroundColor = NSColor.clearColor;
        window.hasShadow = NO; // the panel has one
        window.ignoresMouseEvents = YES;
        window.hidesOnDeactivate = NO;
        window.animationBehavior = NSWindowAnimationBehaviorNone;
        window.excludedFromWindowsMenu = YES;
        window.contentView = material;
    }

    ~Backdrop() {
        takeOff();
        [window close];
    }

    Backdrop(const Backdrop&) = delete;
    Backdrop& operator=(const Backdrop&) = delete;

    void setCornerRadius(double radius) { material.layer.cornerRadius = radius; }

    // `panel` is on screen: a window that gets a child is put there by that alone.
    void putBehind(NSWindow* panel) {
        [window setFrame:panel.frame display:YES];
        if (window.parentWindow == panel) {
            return;
        }
        takeOff();
        window.level = panel.level;
        window.collectionBehavior = panel.collectionBehavior;
        [panel addChildWindow:window ordered:NSWindowBelow]; // and it moves along with the panel from now on
    }

    void takeOff() {
        [window.parentWindow removeChildWindow:window];
        [window orderOut:nil];
    }

private:
    NSPanel* const window;
    NSVisualEffectView* const material;
};

CocoaPanelWindow::CocoaPanelWindow() = default;

CocoaPanelWindow::~CocoaPanelWindow() = default;

Qt::WindowFlags CocoaPanelWindow::windowFlags() const {
    // A tool window is a panel of the floating level to Qt. Its hint to stay on top would lift it to the level of modal
    // panels, and so beside our own alerts.
    return Qt::Tool | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus;
}

void CocoaPanelWindow::attach(QWindow& window) {
    watch = std::make_unique<WindowWatch>(window);
    watch->came = [this] {
        settle();
        placeBackdrop();
    };
    watch->leaves = [this] {
        if (backdrop) {
            backdrop->takeOff();
        }
    };
    settle();
}

void CocoaPanelWindow::raise() {
    if (!watch || !watch->window() || !watch->window()->isVisible()) {
        return;
    }
    settle(); // Qt has just put it on screen, perhaps as another one
    [nativeWindow(watch->window()) orderFrontRegardless];
    placeBackdrop();
}

void CocoaPanelWindow::blurBehind(double cornerRadius) {
    if (QGuiApplication::platformName() != QStringLiteral("cocoa")) {
        return;
    }
    if (!backdrop) {
        backdrop = std::make_unique<Backdrop>();
    }
    backdrop->setCornerRadius(cornerRadius);
    placeBackdrop();
}

// What Qt does not know of, or would have otherwise. All of it may be said again at any time.
void CocoaPanelWindow::settle() {
    NSWindow* const native = watch ? nativeWindow(watch->window()) : nil;
    if (!native) {
        return;
    }
    // In place of Qt's, which has tool windows follow to the active space: a window cannot do that and be on all.
    native.collectionBehavior = everywhere;
    native.hidesOnDeactivate = NO; // Qt has tool windows do it, and the game is in front nearly all the time
    native.animationBehavior = NSWindowAnimationBehaviorDocumentWindow;
    if (!watch->window()->flags().testFlag(Qt::WindowDoesNotAcceptFocus)) {
        // An alert: it takes the keyboard, and stands above the panel.
        native.level = NSModalPanelWindowLevel;
        return;
    }
    if ([native isKindOfClass:[NSPanel class]]) {
        NSPanel* const panel = static_cast<NSPanel*>(native);
        panel.floatingPanel = YES;
        panel.becomesKeyOnlyIfNeeded = YES;
        if (!(panel.styleMask & NSWindowStyleMaskNonactivatingPanel)) {
            panel.styleMask |= NSWindowStyleMaskNonactivatingPanel; // or a click on it would activate the program
        }
    }
    // After the two that AppKit checks it against.
    native.level = NSFloatingWindowLevel;
}

void CocoaPanelWindow::placeBackdrop() {
    NSWindow* const native = watch ? nativeWindow(watch->window()) : nil;
    if (backdrop && native.visible) {
        backdrop->putBehind(native);
        [native invalidateShadow]; // its outline has changed with the corners
    }
}

} // namespace macos

std::unique_ptr<PanelWindow> PanelWindow::create() {
    return std::make_unique<macos::CocoaPanelWindow>();
}

} // namespace pelloran
