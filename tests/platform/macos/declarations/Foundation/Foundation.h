#pragma once

#include <Availability.h>
#include <CoreFoundation/CoreFoundation.h>

#pragma clang assume_nonnull begin

typedef long NSInteger;           // objectivec/nsinteger
typedef unsigned long NSUInteger; // objectivec/nsuinteger
#ifdef __arm64__
typedef bool BOOL; // objectivec/bool
#else
typedef signed char BOOL;
#endif
#define YES __objc_yes
#define NO __objc_no
#define nil nullptr

// foundation/nsfastenumeration: what `for ... in` asks for
typedef struct {
    unsigned long state;
    __unsafe_unretained _Nullable id* _Nullable itemsPtr;
    unsigned long* _Nullable mutationsPtr;
    unsigned long extra[5];
} NSFastEnumerationState;

// objectivec/nsobject-swift.protocol, nsobject-swift.class
@protocol NSObject
- (BOOL)isKindOfClass:(Class)aClass;
@end

__attribute__((objc_root_class))
@interface NSObject<NSObject>
+ (instancetype)alloc;
- (instancetype)init;
+ (instancetype)new;
+ (Class)class;
@end

@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained _Nullable[_Nonnull])buffer
                                    count:(NSUInteger)count;
@end

// foundation/nscopying
@protocol NSCopying
@end

// foundation/nsstring
@interface NSString : NSObject <NSCopying>
- (BOOL)isEqualToString:(NSString*)aString;
@end

// foundation/nsnumber
@interface NSNumber : NSObject <NSCopying>
@property(readonly) double doubleValue;
@property(readonly) long long longLongValue;
@end

// foundation/nsarray
@interface NSArray<__covariant ObjectType> : NSObject <NSFastEnumeration>
@property(readonly) NSUInteger count;
@property(readonly, nullable) ObjectType firstObject;
+ (instancetype)arrayWithObjects:(const ObjectType _Nonnull[_Nullable])objects count:(NSUInteger)count;
- (ObjectType)objectAtIndexedSubscript:(NSUInteger)index;
@end

// foundation/nsdictionary
@interface NSDictionary<__covariant KeyType, __covariant ObjectType> : NSObject <NSFastEnumeration>
@property(readonly) NSUInteger count;
+ (instancetype)dictionaryWithObjects:(const ObjectType _Nonnull[_Nullable])objects
                              forKeys:(const KeyType<NSCopying> _Nonnull[_Nullable])keys
                                count:(NSUInteger)count;
- (nullable ObjectType)objectForKeyedSubscript:(KeyType)key;
@end

// foundation/nserror
@interface NSError : NSObject
@property(readonly) NSInteger code;
@property(readonly, copy) NSString* domain;
@property(readonly, copy) NSString* localizedDescription;
@end

// foundation/cfbridgingrelease(_:): the object's one reference goes to the caller
static inline id _Nullable CFBridgingRelease(CFTypeRef __attribute__((cf_consumed)) _Nullable object) {
    return (__bridge_transfer id)object;
}

#pragma clang assume_nonnull end
