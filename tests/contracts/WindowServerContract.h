#pragma once

#include "platform/WindowServer.h"
#include "tests/contracts/BackEnd.h"

#include <memory>
#include <set>

namespace pelloran::testing {

// A window server in some state of its display.
struct ServedDisplay {
    std::shared_ptr<void> owned; // what has to live as long
    std::unique_ptr<WindowServer> server;
};

class WindowServerContract : public ::testing::TestWithParam<BackEnd<ServedDisplay>> {
protected:
    void SetUp() override {
        if (!given.server) {
            GTEST_SKIP() << "needs an X server of its own (Xvfb), which is not installed or not to be used here";
        }
    }

    const ServedDisplay given = GetParam().make();
};

TEST_P(WindowServerContract, ListsEachWindowOnceAndWhatIsOnScreenAmongAll) {
    std::set<std::int64_t> onScreen;
    for (const WindowListing listing : {WindowListing::onScreen, WindowListing::all}) {
        const auto windows = given.server->describeWindows(listing);
        if (!windows) {
            continue; // refused
        }
        std::set<std::int64_t> numbers;
        for (const WindowDescription& window : *windows) {
            if (window.number) {
                EXPECT_TRUE(numbers.insert(*window.number).second) << *window.number << " is listed twice";
            }
        }
        if (listing == WindowListing::onScreen) {
            onScreen = numbers;
        } else {
            for (const std::int64_t number : onScreen) {
                EXPECT_TRUE(numbers.contains(number)) << number << " is on screen, but not among all";
            }
        }
    }
}

TEST_P(WindowServerContract, TakesOpaquePicturesOfTheSizeItTells) {
    for (const WindowListing listing : {WindowListing::onScreen, WindowListing::all}) {
        const auto windows = given.server->describeWindows(listing);
        for (const WindowDescription& window : windows.value_or(std::vector<WindowDescription>())) {
            if (!window.number) {
                continue;
            }
            const auto image = given.server->image(static_cast<std::uint32_t>(*window.number));
            if (!image) {
                continue; // failed, and said so
            }
            EXPECT_FALSE(image->hasAlphaChannel()) << *window.number;
            EXPECT_EQ(image->devicePixelRatio(), 1) << *window.number;
            if (window.bounds) {
                EXPECT_EQ(image->width(), window.bounds->width.value_or(0)) << *window.number;
                EXPECT_EQ(image->height(), window.bounds->height.value_or(0)) << *window.number;
            }
        }
    }
}

TEST_P(WindowServerContract, HasNoPictureOfWhatIsNoWindow) {
    for (const std::uint32_t nothing : {0U, 0xffff'ffffU}) {
        EXPECT_FALSE(given.server->image(nothing)) << nothing;
    }
}

TEST_P(WindowServerContract, AsksForNothingThatChangesItsPermission) {
    const CapturePermission permission = given.server->permission();
    [[maybe_unused]] const auto listed = given.server->describeWindows(WindowListing::all);
    [[maybe_unused]] const auto image = given.server->image(1);
    EXPECT_EQ(given.server->permission(), permission);
    if (permission == CapturePermission::denied) {
        EXPECT_FALSE(given.server->image(1));
    }
}

} // namespace pelloran::testing
