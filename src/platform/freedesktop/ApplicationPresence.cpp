#include "platform/ApplicationPresence.h"

namespace pelloran {

namespace {

// These desktops know windows. A second start is noticed by the program itself.
class NoPresence final : public ApplicationPresence {
public:
    void begin() override {}

    void activate() override {}
};

} // namespace

std::unique_ptr<ApplicationPresence> ApplicationPresence::create() {
    return std::make_unique<NoPresence>();
}

} // namespace pelloran
