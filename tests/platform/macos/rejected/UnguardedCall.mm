// Newer than the oldest macOS that the program runs on, and nobody asked whether it is there.
#import <ScreenCaptureKit/ScreenCaptureKit.h>

void take(SCContentFilter* filter, SCStreamConfiguration* configuration) {
    [SCScreenshotManager captureImageWithFilter:filter
                                  configuration:configuration
                              completionHandler:^(CGImageRef, NSError*){
                              }];
}
