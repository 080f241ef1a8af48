#pragma once

#include <CoreGraphics/CoreGraphics.h>
#include <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

// screencapturekit/scwindow
SINCE(12.3)
@interface SCWindow : NSObject
@property(readonly, assign) CGWindowID windowID;
@property(readonly, assign) CGRect frame;
@end

// screencapturekit/scshareablecontent,
// screencapturekit/scshareablecontent/getexcludingdesktopwindows(_:onscreenwindowsonly:completionhandler:)
SINCE(12.3)
@interface SCShareableContent : NSObject
@property(readonly) NSArray<SCWindow*>* windows;
+ (void)getShareableContentExcludingDesktopWindows:(BOOL)excludeDesktopWindows
                               onScreenWindowsOnly:(BOOL)onScreenWindowsOnly
                                 completionHandler:(void (^)(SCShareableContent* _Nullable shareableContent,
                                                             NSError* _Nullable error))completionHandler;
@end

// screencapturekit/sccontentfilter, screencapturekit/sccontentfilter/init(desktopindependentwindow:)
SINCE(12.3)
@interface SCContentFilter : NSObject
- (instancetype)initWithDesktopIndependentWindow:(SCWindow*)window;
@end

// screencapturekit/sccaptureresolutiontype: named by the system since 12.3, used by the property since 14.0
typedef enum SCCaptureResolutionType : NSInteger {
    SCCaptureResolutionAutomatic,
    SCCaptureResolutionBest,
    SCCaptureResolutionNominal,
} SCCaptureResolutionType SINCE(12.3);

// screencapturekit/scstreamerrordomain
extern NSString* const SCStreamErrorDomain SINCE(12.3);

// screencapturekit/scstreamconfiguration and its members' pages
SINCE(12.3)
@interface SCStreamConfiguration : NSObject
@property(nonatomic, assign) __SIZE_TYPE__ width;
@property(nonatomic, assign) __SIZE_TYPE__ height;
@property(nonatomic, assign) BOOL scalesToFit;
@property(nonatomic, assign) BOOL showsCursor;
@property(nonatomic, assign) SCCaptureResolutionType captureResolution SINCE(14.0);
@property(nonatomic, assign) BOOL ignoreShadowsSingleWindow SINCE(14.0);
@end

// screencapturekit/scscreenshotmanager,
// screencapturekit/scscreenshotmanager/captureimage(contentfilter:configuration:completionhandler:)
SINCE(14.0)
@interface SCScreenshotManager : NSObject
+ (void)captureImageWithFilter:(SCContentFilter*)contentFilter
                 configuration:(SCStreamConfiguration*)config
             completionHandler:
                 (void (^_Nullable)(CGImageRef _Nullable image, NSError* _Nullable error))completionHandler;
@end

#pragma clang assume_nonnull end
