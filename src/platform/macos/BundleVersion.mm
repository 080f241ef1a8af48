#include "platform/BundleVersion.h"

#import <Foundation/Foundation.h>

namespace pelloran {

namespace {

std::optional<QString> entry(NSString* key) {
    const id found = [NSBundle.mainBundle objectForInfoDictionaryKey:key];
    if (![found isKindOfClass:[NSString class]]) {
        return std::nullopt;
    }
    return QString::fromNSString(static_cast<NSString*>(found));
}

} // namespace

BundleVersion BundleVersion::ofProgram() {
    @autoreleasepool {
        return {.version = entry(@"CFBundleShortVersionString"), .build = entry(@"CFBundleVersion")};
    }
}

} // namespace pelloran
