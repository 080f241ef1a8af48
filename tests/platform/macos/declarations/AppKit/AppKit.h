#pragma once

#include <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

@class CALayer;

// foundation/nsrect, nsmakerect(_:_:_:_:)
typedef CGRect NSRect;

static inline NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat w, CGFloat h) {
    return {{x, y}, {w, h}};
}

// appkit/nscolor/clear
@interface NSColor : NSObject
@property(class, readonly, strong) NSColor* clearColor;
@end

// appkit/nsappearance, its names, and bestmatch(from:)
typedef NSString* NSAppearanceName;
extern const NSAppearanceName NSAppearanceNameAqua SINCE(10.9);
extern const NSAppearanceName NSAppearanceNameDarkAqua SINCE(10.14);
extern const NSAppearanceName NSAppearanceNameVibrantDark SINCE(10.10);

SINCE(10.9)
@interface NSAppearance : NSObject
+ (nullable NSAppearance*)appearanceNamed:(NSAppearanceName)name;
- (nullable NSAppearanceName)bestMatchFromAppearancesWithNames:(NSArray<NSAppearanceName>*)appearances SINCE(10.14);
@end

@class NSWindow;

// appkit/nsview and the pages of window, wantslayer, layer, appearance
@interface NSView : NSObject
@property(nullable, readonly, assign) NSWindow* window;
@property BOOL wantsLayer;
@property(nullable, strong) CALayer* layer;
@property(nullable, strong) NSAppearance* appearance SINCE(10.9);
- (instancetype)initWithFrame:(NSRect)frameRect;
@end

// appkit/nsvisualeffectview and its three enumerations' pages
typedef enum NSVisualEffectMaterial : NSInteger {
    NSVisualEffectMaterialHUDWindow SINCE(10.14) = 13,
} NSVisualEffectMaterial;

typedef enum NSVisualEffectBlendingMode : NSInteger {
    NSVisualEffectBlendingModeBehindWindow,
} NSVisualEffectBlendingMode;

typedef enum NSVisualEffectState : NSInteger {
    NSVisualEffectStateFollowsWindowActiveState,
    NSVisualEffectStateActive,
} NSVisualEffectState;

SINCE(10.10)
@interface NSVisualEffectView : NSView
@property NSVisualEffectMaterial material;
@property NSVisualEffectBlendingMode blendingMode;
@property NSVisualEffectState state;
@end

// appkit/nswindow/stylemask-swift.struct, nswindow/collectionbehavior-swift.struct: sets, which C has as numbers
typedef NSUInteger NSWindowStyleMask;

enum : NSWindowStyleMask {
    NSWindowStyleMaskBorderless = 0,
    NSWindowStyleMaskNonactivatingPanel = 1 << 7,
};

typedef NSUInteger NSWindowCollectionBehavior;

enum : NSWindowCollectionBehavior {
    NSWindowCollectionBehaviorCanJoinAllSpaces SINCE(10.5) = 1 << 0,
    NSWindowCollectionBehaviorFullScreenAuxiliary SINCE(10.7) = 1 << 8,
};

// appkit/nswindow/animationbehavior-swift.enum, nswindow/orderingmode, nswindow/backingstoretype
typedef enum NSWindowAnimationBehavior : NSInteger {
    NSWindowAnimationBehaviorDefault = 0,
    NSWindowAnimationBehaviorNone = 2,
    NSWindowAnimationBehaviorDocumentWindow = 3,
} NSWindowAnimationBehavior;

typedef enum NSWindowOrderingMode : NSInteger {
    NSWindowAbove = 1,
    NSWindowBelow = -1,
    NSWindowOut = 0,
} NSWindowOrderingMode;

typedef enum NSBackingStoreType : NSUInteger {
    NSBackingStoreBuffered = 2,
} NSBackingStoreType;

// appkit/nswindow/level-swift.struct
typedef NSInteger NSWindowLevel;
extern const NSWindowLevel NSFloatingWindowLevel;
extern const NSWindowLevel NSModalPanelWindowLevel;

// appkit/nswindow and its members' pages
@interface NSWindow : NSObject
@property(nullable, strong) NSView* contentView;
@property(nullable, weak) NSWindow* parentWindow;
@property(readonly) NSRect frame;
@property NSWindowStyleMask styleMask;
@property NSWindowCollectionBehavior collectionBehavior SINCE(10.5);
@property NSWindowAnimationBehavior animationBehavior SINCE(10.7);
@property NSWindowLevel level;
@property(nullable, copy) NSColor* backgroundColor;
@property(getter=isOpaque) BOOL opaque;
@property(getter=isVisible, readonly) BOOL visible;
@property(getter=isReleasedWhenClosed) BOOL releasedWhenClosed;
@property(getter=isExcludedFromWindowsMenu) BOOL excludedFromWindowsMenu;
@property BOOL hasShadow;
@property BOOL hidesOnDeactivate;
@property BOOL ignoresMouseEvents;
- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backingStoreType
                              defer:(BOOL)flag;
- (void)addChildWindow:(NSWindow*)childWin ordered:(NSWindowOrderingMode)place;
- (void)removeChildWindow:(NSWindow*)childWin;
- (void)close;
- (void)invalidateShadow;
- (void)orderFrontRegardless;
- (void)orderOut:(nullable id)sender;
- (void)setFrame:(NSRect)frameRect display:(BOOL)flag;
@end

// appkit/nspanel
@interface NSPanel : NSWindow
@property(getter=isFloatingPanel) BOOL floatingPanel;
@property BOOL becomesKeyOnlyIfNeeded;
@end

// appkit/nsapplication, nsapplication/activationpolicy-swift.enum, nsapplication/activate(ignoringotherapps:)
typedef enum NSApplicationActivationPolicy : NSInteger {
    NSApplicationActivationPolicyRegular,
} NSApplicationActivationPolicy;

@interface NSApplication : NSObject
@property(readonly, strong) NSAppearance* effectiveAppearance SINCE(10.14);
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)activationPolicy SINCE(10.6);
- (void)activateIgnoringOtherApps:(BOOL)ignoreOtherApps __attribute__((availability(macos, deprecated = 27.0)));
@end

// appkit/nsapp: nil until there is one
extern __kindof NSApplication* _Null_unspecified NSApp;

// appkit/nsworkspace and the pages of shared, notificationcenter, accessibilitydisplayshouldreducemotion,
// accessibilitydisplayoptionsdidchangenotification
@interface NSWorkspace : NSObject
@property(class, readonly, strong) NSWorkspace* sharedWorkspace;
@property(readonly, strong) NSNotificationCenter* notificationCenter;
@property(readonly) BOOL accessibilityDisplayShouldReduceMotion SINCE(10.12);
@end

extern const NSNotificationName NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification SINCE(10.10);

#pragma clang assume_nonnull end
