// Since when something is there. Qt's headers include this one, too.
#pragma once

#define SINCE(version) __attribute__((availability(macos, introduced = version)))

// As sources write it: API_AVAILABLE(macos(14.0)).
#define API_AVAILABLE(system) __attribute__((SINCE_##system))
#define SINCE_macos(version) availability(macos, introduced = version)
