#include "platform/GuiSession.h"

#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>

namespace pelloran::GuiSession {

std::expected<void, QString> prepare() {
    if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        return {}; // somebody wants windows elsewhere
    }
    @autoreleasepool {
        NSDictionary* const session = CFBridgingRelease(CGSessionCopyCurrentDictionary());
        if (!session) {
            return std::unexpected(
                QStringLiteral("No desktop to show the panel on: this is no session of the window server's."));
        }
        return {};
    }
}

QString display() {
    return {}; // a user has one; what X11 programs go by here differs with how they were started
}

} // namespace pelloran::GuiSession
