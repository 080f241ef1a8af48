#pragma once

#include <CoreGraphics/CoreGraphics.h>
#include <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

// vision/vnconfidence
typedef float VNConfidence;

// vision/vnimageoption
typedef NSString* VNImageOption;

// vision/vnrequest, vision/vnimagebasedrequest
SINCE(10.13)
@interface VNRequest : NSObject
- (instancetype)init;
@end

SINCE(10.13)
@interface VNImageBasedRequest : VNRequest
@end

// vision/vnobservation, vision/vndetectedobjectobservation, vision/vnrectangleobservation
SINCE(10.13)
@interface VNObservation : NSObject
@property(readonly, nonatomic, assign) VNConfidence confidence;
@end

SINCE(10.13)
@interface VNDetectedObjectObservation : VNObservation
@property(readonly, nonatomic, assign) CGRect boundingBox;
@end

SINCE(10.13)
@interface VNRectangleObservation : VNDetectedObjectObservation
@end

// vision/vnrecognizedtext
SINCE(10.15)
@interface VNRecognizedText : NSObject
@property(readonly, nonatomic, copy) NSString* string;
@property(readonly, nonatomic, assign) VNConfidence confidence;
@end

// vision/vnrecognizedtextobservation, topcandidates(_:)
SINCE(10.15)
@interface VNRecognizedTextObservation : VNRectangleObservation
- (NSArray<VNRecognizedText*>*)topCandidates:(NSUInteger)maxCandidateCount;
@end

// vision/vnrequesttextrecognitionlevel
typedef enum VNRequestTextRecognitionLevel : NSInteger {
    VNRequestTextRecognitionLevelAccurate,
    VNRequestTextRecognitionLevelFast,
} VNRequestTextRecognitionLevel SINCE(10.15);

// vision/vnrecognizetextrequest and its members' pages
SINCE(10.15)
@interface VNRecognizeTextRequest : VNImageBasedRequest
@property(readwrite, nonatomic, copy) NSArray<NSString*>* recognitionLanguages;
@property(readwrite, nonatomic, assign) VNRequestTextRecognitionLevel recognitionLevel;
@property(readwrite, nonatomic, assign) BOOL usesLanguageCorrection;
@property(readonly, nonatomic, copy, nullable) NSArray<VNRecognizedTextObservation*>* results;
@end

// vision/vnimagerequesthandler, init(cgimage:options:), perform(_:)
SINCE(10.13)
@interface VNImageRequestHandler : NSObject
- (instancetype)initWithCGImage:(CGImageRef)image options:(NSDictionary<VNImageOption, id>*)options;
- (BOOL)performRequests:(NSArray<VNRequest*>*)requests error:(NSError* _Nullable* _Nullable)error;
@end

#pragma clang assume_nonnull end
