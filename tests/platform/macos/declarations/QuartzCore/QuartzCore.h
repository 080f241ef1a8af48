#pragma once

#include <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

// quartzcore/calayercornercurve, calayercornercurve/continuous
typedef NSString* CALayerCornerCurve;
extern const CALayerCornerCurve kCACornerCurveContinuous SINCE(10.15);

// quartzcore/calayer and the pages of cornerradius, cornercurve, maskstobounds
@interface CALayer : NSObject
@property CGFloat cornerRadius;
@property BOOL masksToBounds;
@property(copy) CALayerCornerCurve cornerCurve SINCE(10.15);
@end

#pragma clang assume_nonnull end
