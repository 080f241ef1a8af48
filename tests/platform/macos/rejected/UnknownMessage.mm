// No number understands it.
#import <Foundation/Foundation.h>

double valueOf(NSNumber* number) {
    return [number dubbleValue];
}
