#pragma once

#include "platform/ApplicationPresence.h"

#include <memory>

namespace pelloran::macos {

// A regular application of the Mac, with a place in the Dock, whose timers go on while the game is in front. Where Qt
// does not run on the Mac's own desktop it is nothing.
class CocoaApplicationPresence final : public ApplicationPresence {
public:
    CocoaApplicationPresence();
    ~CocoaApplicationPresence() override;

    void begin() override;
    void activate() override;

private:
    class Native;

    std::unique_ptr<Native> native; // null: not begun, or there is no application object of the Mac's
};

} // namespace pelloran::macos
