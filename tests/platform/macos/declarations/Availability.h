// Since when something is there. Qt's headers include this one, too.
#pragma once

#define SINCE(version) __attribute__((availability(macos, introduced = version)))
