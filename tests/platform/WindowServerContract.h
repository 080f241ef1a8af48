#pragma once

#include "platform/WindowServer.h"

#include <gtest/gtest.h>

#include <set>

namespace pelloran::testing {

// What every window server owes its callers, in whatever state its display is.
inline void expectKeepsContract(WindowServer& server) {
    const CapturePermission permission = server.permission();
    std::set<std::int64_t> onScreen;
    for (const WindowListing listing : {WindowListing::onScreen, WindowListing::all}) {
        const auto windows = server.describeWindows(listing);
        if (!windows) {
            continue; // refused
        }
        std::set<std::int64_t> numbers;
        for (const WindowDescription& window : *windows) {
            if (!window.number) {
                continue;
            }
            EXPECT_TRUE(numbers.insert(*window.number).second) << *window.number << " is listed twice";
            const auto image = server.image(static_cast<std::uint32_t>(*window.number));
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
        if (listing == WindowListing::onScreen) {
            onScreen = numbers;
        } else {
            for (const std::int64_t number : onScreen) {
                EXPECT_TRUE(numbers.contains(number)) << number << " is on screen, but not among all";
            }
        }
    }
    for (const std::uint32_t nothing : {0U, 0xffff'ffffU}) {
        EXPECT_FALSE(server.image(nothing)) << nothing;
    }
    EXPECT_EQ(server.permission(), permission) << "asking must not change it";
}

} // namespace pelloran::testing
