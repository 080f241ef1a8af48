#include "platform/macos/CocoaApplicationPresence.h"

#import <AppKit/AppKit.h>

#include <functional>
#include <utility>

// Receives the event by which the Finder and the Dock open a program that runs already. Main thread.
@interface PelloranReopenHandler : NSObject

- (instancetype)initWithListener:(std::function<void()>)toTell;

// Nothing is told any more when it returns.
- (void)stop;

@end

@implementation PelloranReopenHandler {
    std::function<void()> listener;
}

- (instancetype)initWithListener:(std::function<void()>)toTell {
    self = [super init];
    if (self) {
        listener = std::move(toTell);
        // In place of the application delegate, which is Qt's and takes the event for one more activation. AppKit sets
        // its own handler up when the event loop starts; whoever comes later is asked.
        [NSAppleEventManager.sharedAppleEventManager setEventHandler:self
                                                         andSelector:@selector(reopen:withReplyEvent:)
                                                       forEventClass:kCoreEventClass
                                                          andEventID:kAEReopenApplication];
    }
    return self;
}

- (void)stop {
    listener = nullptr;
    [NSAppleEventManager.sharedAppleEventManager removeEventHandlerForEventClass:kCoreEventClass
                                                                      andEventID:kAEReopenApplication];
}

- (void)reopen:(NSAppleEventDescriptor*)event withReplyEvent:(NSAppleEventDescriptor*)reply {
    (void)event; // there is one kind of it
    (void)reply; // nothing more to say
    if (listener) {
        listener();
    }
}

@end

namespace pelloran {

namespace macos {

// What the system has been told, taken back at the end.
class CocoaApplicationPresence::Native {
public:
    explicit Native(std::function<void()> reopened)
        : handler([[PelloranReopenHandler alloc] initWithListener:std::move(reopened)])
        , activity([NSProcessInfo.processInfo
              beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                                reason:@"Following the draft while the game is in front"]) {
        // Qt does so too for a program outside of a bundle.
        [NSApp setActivationPolicy:NSApplicationActivationPolicyRegular];
    }

    ~Native() {
        [NSProcessInfo.processInfo endActivity:activity];
        [handler stop];
    }

    Native(const Native&) = delete;
    Native& operator=(const Native&) = delete;

private:
    PelloranReopenHandler* const handler;
    id<NSObject> const activity;
};

CocoaApplicationPresence::CocoaApplicationPresence() = default;

CocoaApplicationPresence::~CocoaApplicationPresence() = default;

void CocoaApplicationPresence::begin() {
    if (NSApp) {
        native = std::make_unique<Native>([this] {
            if (reopened) {
                reopened();
            }
        });
    }
}

void CocoaApplicationPresence::activate() {
    if (native) {
        // Not its newer kin, which leaves the program in front where it is unless that one yields. From macOS 27 on the
        // two are alike.
        [NSApp activateIgnoringOtherApps:YES];
    }
}

} // namespace macos

std::unique_ptr<ApplicationPresence> ApplicationPresence::create() {
    return std::make_unique<macos::CocoaApplicationPresence>();
}

} // namespace pelloran
