#pragma once

#include "platform/macos/DefaultsStore.h"

#include <QString>

namespace pelloran::macos {

// The defaults of `suite`, or the program's own where it is empty. Keys are what they are: dots mean nothing here.
SystemDefaults cocoaDefaults(const QString& suite);

// Forgets all that `suite` holds, for tests that have one of their own.
void forgetSuite(const QString& suite);

} // namespace pelloran::macos
