// A back end that leaves out an operation of its seam: permission().
#include "platform/WindowServer.h"

namespace pelloran {

class HalfWindowServer final : public WindowServer {
public:
    std::optional<std::vector<WindowDescription>> describeWindows(WindowListing) override { return std::nullopt; }

    std::expected<QImage, WindowImageError> image(std::uint32_t) override { return QImage(); }
};

} // namespace pelloran
