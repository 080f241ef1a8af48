#include "platform/macos/BundledFiles.h"

#include <QCoreApplication>
#include <QDir>

#import <Foundation/Foundation.h>

namespace pelloran {

namespace {

std::optional<QString> textOf(NSString* found) {
    return found ? std::optional(QString::fromNSString(found)) : std::nullopt;
}

} // namespace

std::unique_ptr<ApplicationFiles> ApplicationFiles::create() {
    @autoreleasepool {
        NSArray* const support =
            NSSearchPathForDirectoriesInDomains(NSApplicationSupportDirectory, NSUserDomainMask, YES);
        return std::make_unique<macos::BundledFiles>(macos::NativePlaces{
            .applicationSupport = textOf(support.firstObject),
            // Its own search prefers localised copies, which there are none of, and finds folders too.
            .bundleResources = textOf(NSBundle.mainBundle.resourcePath),
            .executableFolder = QCoreApplication::applicationDirPath(),
            .home = QDir::homePath(),
        });
    }
}

} // namespace pelloran
