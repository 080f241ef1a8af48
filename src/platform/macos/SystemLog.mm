#include "platform/SystemLog.h"

#include "base/Log.h"

#import <Foundation/Foundation.h>

namespace pelloran::SystemLog {

std::function<void(const QString&)> sink() {
    return [](const QString& message) {
        @autoreleasepool {                               // any thread
            NSLog(@"%@", logLine(message).toNSString()); // it writes to standard error as well, where there is one
        }
    };
}

} // namespace pelloran::SystemLog
