#include "platform/macos/CocoaUserDefaults.h"

#import <Foundation/Foundation.h>

namespace pelloran {

namespace macos {

namespace {

NSUserDefaults* defaultsOf(const QString& suite) {
    return suite.isEmpty() ? NSUserDefaults.standardUserDefaults
                           : [[NSUserDefaults alloc] initWithSuiteName:suite.toNSString()];
}

// The defaults object takes a value at once and has it written when it likes, and tells nobody of a failure. This waits
// for it, which choices are rare enough for.
bool writeOut(const QString& suite) {
    if (suite.isEmpty()) {
        return CFPreferencesAppSynchronize(kCFPreferencesCurrentApplication) != 0;
    }
    return CFPreferencesAppSynchronize((__bridge CFStringRef)suite.toNSString()) != 0;
}

} // namespace

SystemDefaults cocoaDefaults(const QString& suite) {
    NSUserDefaults* const defaults = defaultsOf(suite);
    return {
        .read = [defaults](const QString& key) -> std::optional<QString> {
            @autoreleasepool {
                // Asked for a string, it makes one of a number as well.
                const id found = [defaults objectForKey:key.toNSString()];
                if (![found isKindOfClass:[NSString class]]) {
                    return std::nullopt;
                }
                return QString::fromNSString(static_cast<NSString*>(found));
            }
        },
        .write =
            [defaults, suite](const QString& key, const std::optional<QString>& value) {
                @autoreleasepool {
                    if (value) {
                        [defaults setObject:value->toNSString() forKey:key.toNSString()];
                    } else {
                        [defaults removeObjectForKey:key.toNSString()];
                    }
                    return writeOut(suite);
                }
            },
        .name = QStringLiteral("the user defaults"),
    };
}

void forgetSuite(const QString& suite) {
    [NSUserDefaults.standardUserDefaults removePersistentDomainForName:suite.toNSString()];
}

} // namespace macos

std::unique_ptr<UserDefaults> UserDefaults::create() {
    return std::make_unique<macos::DefaultsStore>(macos::cocoaDefaults(QString()));
}

} // namespace pelloran
