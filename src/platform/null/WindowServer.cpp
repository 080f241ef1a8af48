#include "platform/WindowServer.h"

namespace pelloran {

namespace {

class NullWindowServer final : public WindowServer {
public:
    std::optional<std::vector<WindowDescription>> describeWindows(WindowListing) override { return std::nullopt; }

    std::expected<QImage, WindowImageError> image(std::uint32_t) override {
        return std::unexpected(WindowServerFailed{"no window server in this build", 0});
    }

    CapturePermission permission() const override { return CapturePermission::denied; }
};

} // namespace

std::unique_ptr<WindowServer> WindowServer::create() {
    return std::make_unique<NullWindowServer>();
}

} // namespace pelloran
