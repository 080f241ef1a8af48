#pragma once

#include <Availability.h>

#ifdef __cplusplus
extern "C" {
#endif

#pragma clang assume_nonnull begin

// objectivec/bool-swift.struct and objectivec: on arm64 BOOL is bool, on x86_64 a signed char; clang knows which.
typedef unsigned char Boolean; // corefoundation/boolean
typedef double CGFloat;        // corefoundation/cgfloat, on 64-bit systems

// corefoundation/cftype and the types' own pages: bridged with NSString, NSArray, NSDictionary, NSNumber.
typedef const void* CFTypeRef;
typedef const struct __attribute__((objc_bridge(NSString))) __CFString* CFStringRef;
typedef const struct __attribute__((objc_bridge(NSArray))) __CFArray* CFArrayRef;
typedef const struct __attribute__((objc_bridge(NSDictionary))) __CFDictionary* CFDictionaryRef;
typedef const struct __attribute__((objc_bridge(NSNumber))) __CFNumber* CFNumberRef;

// corefoundation/cfnumberisfloattype(_:)
Boolean CFNumberIsFloatType(CFNumberRef number);

// corefoundation/cfdata, cfdatagetbyteptr(_:), cfdatagetlength(_:), cfrelease: the object must be there
typedef long CFIndex;
typedef unsigned char UInt8;
typedef const struct __attribute__((objc_bridge(NSData))) __CFData* CFDataRef;
const UInt8* _Nullable CFDataGetBytePtr(CFDataRef data);
CFIndex CFDataGetLength(CFDataRef data);
void CFRelease(CFTypeRef object);

// corefoundation/cgpoint, cgsize, cgrect
struct CGPoint {
    CGFloat x;
    CGFloat y;
};
typedef struct CGPoint CGPoint;

struct CGSize {
    CGFloat width;
    CGFloat height;
};
typedef struct CGSize CGSize;

struct CGRect {
    CGPoint origin;
    CGSize size;
};
typedef struct CGRect CGRect;

// corefoundation/cfpreferencesappsynchronize(_:), kcfpreferencescurrentapplication
extern const CFStringRef kCFPreferencesCurrentApplication;
Boolean CFPreferencesAppSynchronize(CFStringRef applicationID);

#pragma clang assume_nonnull end

#ifdef __cplusplus
}
#endif
