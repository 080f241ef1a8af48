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

// foundation/nslog: the format's arguments are checked as the system's compiler does
extern "C" void NSLog(NSString* format, ...) __attribute__((format(__NSString__, 1, 2)));

// foundation/nssearchpathfordirectoriesindomains(_:_:_:), with its two enumerations' pages
typedef enum NSSearchPathDirectory : NSUInteger {
    NSApplicationSupportDirectory = 14,
} NSSearchPathDirectory;

typedef NSUInteger NSSearchPathDomainMask;

enum : NSSearchPathDomainMask {
    NSUserDomainMask = 1,
};

extern "C" NSArray<NSString*>* NSSearchPathForDirectoriesInDomains(NSSearchPathDirectory directory,
                                                                   NSSearchPathDomainMask domainMask, BOOL expandTilde);

// foundation/bundle and the pages of main, resourcepath, object(forinfodictionarykey:)
@interface NSBundle : NSObject
@property(class, readonly, strong) NSBundle* mainBundle;
@property(nullable, readonly, copy) NSString* resourcePath;
- (nullable id)objectForInfoDictionaryKey:(NSString*)key;
@end

// foundation/userdefaults and its members' pages
@interface NSUserDefaults : NSObject
@property(class, readonly, strong) NSUserDefaults* standardUserDefaults;
- (nullable instancetype)initWithSuiteName:(nullable NSString*)suitename SINCE(10.9);
- (nullable id)objectForKey:(NSString*)defaultName;
- (void)setObject:(nullable id)value forKey:(NSString*)defaultName;
- (void)removeObjectForKey:(NSString*)defaultName;
- (void)removePersistentDomainForName:(NSString*)domainName;
@end

// foundation/nslocale and the pages of preferredlanguages, current, localeidentifier
@interface NSLocale : NSObject
@property(class, readonly, copy) NSArray<NSString*>* preferredLanguages SINCE(10.5);
@property(class, readonly, copy) NSLocale* currentLocale;
@property(readonly, copy) NSString* localeIdentifier;
@end

// foundation/nsnotification, notificationcenter
typedef NSString* NSNotificationName;

@interface NSNotification : NSObject
@end

@interface NSNotificationCenter : NSObject
- (void)addObserver:(id)observer
           selector:(SEL)aSelector
               name:(nullable NSNotificationName)aName
             object:(nullable id)anObject;
- (void)removeObserver:(id)observer;
@end

// objectivec/nsobject-swift.class: key-value observing, and another thread's turn
typedef NSUInteger NSKeyValueObservingOptions;
typedef NSString* NSKeyValueChangeKey;

@interface NSObject (Observing)
- (void)addObserver:(NSObject*)observer
         forKeyPath:(NSString*)keyPath
            options:(NSKeyValueObservingOptions)options
            context:(nullable void*)context;
- (void)removeObserver:(NSObject*)observer forKeyPath:(NSString*)keyPath;
- (void)observeValueForKeyPath:(nullable NSString*)keyPath
                      ofObject:(nullable id)object
                        change:(nullable NSDictionary<NSKeyValueChangeKey, id>*)change
                       context:(nullable void*)context;
- (void)performSelectorOnMainThread:(SEL)aSelector withObject:(nullable id)arg waitUntilDone:(BOOL)wait;
@end

// foundation/processinfo, processinfo/beginactivity(options:reason:), processinfo/activityoptions
typedef __UINT64_TYPE__ NSActivityOptions;

enum : NSActivityOptions {
    NSActivityUserInitiatedAllowingIdleSystemSleep SINCE(10.9) = 0x00EFFFFFULL,
};

@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
- (id<NSObject>)beginActivityWithOptions:(NSActivityOptions)options reason:(NSString*)reason SINCE(10.9);
- (void)endActivity:(id<NSObject>)activity SINCE(10.9);
@end

// foundation/nsappleeventmanager, coreservices: kCoreEventClass, kAEReopenApplication
typedef unsigned int FourCharCode;
typedef FourCharCode AEEventClass;
typedef FourCharCode AEEventID;

enum : AEEventClass {
    kCoreEventClass = 0x61657674, // 'aevt'
};

enum : AEEventID {
    kAEReopenApplication = 0x72617070, // 'rapp'
};

@interface NSAppleEventDescriptor : NSObject
@end

@interface NSAppleEventManager : NSObject
+ (NSAppleEventManager*)sharedAppleEventManager;
- (void)setEventHandler:(id)handler
            andSelector:(SEL)handleEventSelector
          forEventClass:(AEEventClass)eventClass
             andEventID:(AEEventID)eventID;
- (void)removeEventHandlerForEventClass:(AEEventClass)eventClass andEventID:(AEEventID)eventID;
@end

// foundation/cfbridgingrelease(_:): the object's one reference goes to the caller
static inline id _Nullable CFBridgingRelease(CFTypeRef __attribute__((cf_consumed)) _Nullable object) {
    return (__bridge_transfer id)object;
}

#pragma clang assume_nonnull end
