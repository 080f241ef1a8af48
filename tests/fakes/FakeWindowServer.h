#pragma once

#include "platform/WindowServer.h"

#include <deque>
#include <functional>
#include <map>

namespace pelloran::testing {

// Shows the windows it is given; refuses or fails as told.
class FakeWindowServer final : public WindowServer {
public:
    std::optional<std::vector<WindowDescription>> describeWindows(WindowListing listing) override {
        if (beforeListing) {
            beforeListing();
        }
        return listing == WindowListing::onScreen ? onScreen : all;
    }

    std::expected<QImage, WindowImageError> image(std::uint32_t windowId) override {
        ++captures;
        if (!failures.empty()) {
            const WindowImageError failure = failures.front();
            failures.pop_front();
            return std::unexpected(failure);
        }
        const auto found = images.find(windowId);
        if (found == images.end()) {
            return std::unexpected(WindowGone{});
        }
        return found->second;
    }

    CapturePermission permission() const override { return allowed; }

    void failNext(WindowImageError failure) { failures.push_back(std::move(failure)); }

    std::optional<std::vector<WindowDescription>> onScreen = std::vector<WindowDescription>{};
    std::optional<std::vector<WindowDescription>> all = std::vector<WindowDescription>{};
    std::map<std::uint32_t, QImage> images;
    int captures = 0;
    std::function<void()> beforeListing; // as windows come and go
    CapturePermission allowed = CapturePermission::granted;

private:
    std::deque<WindowImageError> failures;
};

} // namespace pelloran::testing
