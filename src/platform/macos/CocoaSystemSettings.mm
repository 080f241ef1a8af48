#include "platform/macos/CocoaSystemSettings.h"

#include "platform/macos/LocaleNames.h"
#include "platform/macos/PreferenceNews.h"

#import <AppKit/AppKit.h>

#include <functional>
#include <utility>

namespace {

NSString* const effectiveAppearanceKey = @"effectiveAppearance";

} // namespace

// Receives the system's notices of the user's preferences. Main thread.
@interface PelloranPreferenceObserver : NSObject

- (instancetype)initWithListener:(std::function<void()>)toTell;

// Nothing is told any more when it returns.
- (void)stop;

@end

@implementation PelloranPreferenceObserver {
    std::function<void()> listener;
    NSApplication* watchedApplication; // nil: there is none, as in a program without windows
}

- (instancetype)initWithListener:(std::function<void()>)toTell {
    self = [super init];
    if (self) {
        listener = std::move(toTell);
        [NSWorkspace.sharedWorkspace.notificationCenter
            addObserver:self
               selector:@selector(optionsChanged:)
                   name:NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification
                 object:nil];
        watchedApplication = NSApp;
        [watchedApplication addObserver:self forKeyPath:effectiveAppearanceKey options:0 context:nullptr];
    }
    return self;
}

- (void)stop {
    listener = nullptr;
    [NSWorkspace.sharedWorkspace.notificationCenter removeObserver:self];
    [watchedApplication removeObserver:self forKeyPath:effectiveAppearanceKey];
    watchedApplication = nil;
}

- (void)optionsChanged:(NSNotification*)notification {
    (void)notification;
    [self passOn];
}

- (void)observeValueForKeyPath:(NSString*)keyPath
                      ofObject:(id)object
                        change:(NSDictionary*)change
                       context:(void*)context {
    (void)keyPath; // nothing else is observed
    (void)object;
    (void)change;
    (void)context;
    [self passOn];
}

// Neither of the two promises the main thread.
- (void)passOn {
    [self performSelectorOnMainThread:@selector(tell) withObject:nil waitUntilDone:NO];
}

- (void)tell {
    if (listener) {
        listener();
    }
}

@end

namespace pelloran {

namespace macos {

namespace {

QStringList stringsOf(NSArray* array) {
    QStringList strings;
    for (id element in array) {
        if ([element isKindOfClass:[NSString class]]) {
            strings << QString::fromNSString(static_cast<NSString*>(element));
        }
    }
    return strings;
}

bool motionIsReduced() {
    return NSWorkspace.sharedWorkspace.accessibilityDisplayShouldReduceMotion;
}

std::optional<Appearance> appearanceOfApplication() {
    if (!NSApp) {
        return std::nullopt;
    }
    NSString* const nearest = [NSApp.effectiveAppearance
        bestMatchFromAppearancesWithNames:@[ NSAppearanceNameAqua, NSAppearanceNameDarkAqua ]];
    return [nearest isEqualToString:NSAppearanceNameDarkAqua] ? Appearance::dark : Appearance::light;
}

Preferences preferencesNow() {
    return {.reducesMotion = motionIsReduced(), .appearance = appearanceOfApplication()};
}

} // namespace

// Owns what listens to the system, and with it ends the listening.
class CocoaSystemSettings::Follower {
public:
    explicit Follower(std::function<void()> tellChange)
        : changed(std::move(tellChange))
        , news(preferencesNow())
        , observer([[PelloranPreferenceObserver alloc] initWithListener:[this] {
            if (news.tell(preferencesNow())) {
                changed();
            }
        }]) {}

    ~Follower() { [observer stop]; }

    Follower(const Follower&) = delete;
    Follower& operator=(const Follower&) = delete;

private:
    std::function<void()> changed;
    PreferenceNews news;
    PelloranPreferenceObserver* const observer;
};

CocoaSystemSettings::CocoaSystemSettings() = default;

CocoaSystemSettings::~CocoaSystemSettings() = default;

QStringList CocoaSystemSettings::preferredLanguages() const {
    @autoreleasepool { // any thread
        return languageTagsOf(stringsOf(NSLocale.preferredLanguages));
    }
}

QString CocoaSystemSettings::localeIdentifier() const {
    @autoreleasepool {
        return localeIdentifierOf(QString::fromNSString(NSLocale.currentLocale.localeIdentifier));
    }
}

bool CocoaSystemSettings::reducesMotion() const {
    follow();
    return motionIsReduced();
}

std::optional<Appearance> CocoaSystemSettings::appearance() const {
    follow();
    return appearanceOfApplication();
}

void CocoaSystemSettings::follow() const {
    if (!follower) {
        follower = std::make_unique<Follower>([this] {
            if (changed) {
                changed();
            }
        });
    }
}

} // namespace macos

std::unique_ptr<SystemSettings> SystemSettings::create() {
    return std::make_unique<macos::CocoaSystemSettings>();
}

} // namespace pelloran
