#pragma once

#include "platform/WindowServer.h"

#include <atomic>
#include <functional>

namespace pelloran::macos {

// The user's consent to recordings of the screen, which takes in other programs' windows. The system tells whether it
// is given, and not whether it was ever asked for; so until this program has asked it counts as not asked, and
// afterwards as denied: what the user can do then is the same whether the question is still on the screen, was answered
// with no, or was answered in an earlier run. Any thread.
class CaptureConsent {
public:
    // `isGiven` only looks. `ask` may put a question to the user, without waiting for the answer; true: there is
    // consent already.
    CaptureConsent(std::function<bool()> isGiven, std::function<bool()> ask);

    CapturePermission current() const;

    // Asks where there is no consent, but once only in this object's life.
    CapturePermission askOnce();

private:
    const std::function<bool()> isGiven;
    const std::function<bool()> ask;
    std::atomic<bool> asked = false;
};

} // namespace pelloran::macos
