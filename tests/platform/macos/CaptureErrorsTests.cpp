#include "platform/macos/CaptureErrors.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <limits>

namespace pelloran::macos {

namespace {

TEST(CaptureErrors, OnlyWhatIsSureIsMoreThanANumber) {
    struct Case {
        const char* why;
        bool ownDomain;
        std::int64_t code;
        std::size_t kind; // of WindowImageError
        int expectedCode;
    };

    constexpr std::size_t gone = 0;
    constexpr std::size_t denied = 1;
    constexpr std::size_t failed = 2;
    const Case cases[] = {
        {"the user has not consented, or no longer", true, -3801, denied, 0},
        {"nothing to capture any more", true, -3815, gone, 0},
        {"it did not start", true, -3802, failed, -3802},
        {"the number of another domain means something else", false, -3801, failed, -3801},
        {"and so does this one", false, -3815, failed, -3815},
        {"no error was given", false, 0, failed, 0},
        {"more than fits", true, 0x1'0000'0000, failed, std::numeric_limits<int>::max()},
        {"less than fits", true, -0x1'0000'0000, failed, std::numeric_limits<int>::min()},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const WindowImageError error = captureError("call", c.ownDomain, c.code);
        ASSERT_EQ(error.index(), c.kind);
        if (const auto* said = std::get_if<WindowServerFailed>(&error)) {
            EXPECT_EQ(said->call, "call");
            EXPECT_EQ(said->code, c.expectedCode);
        }
    }
}

TEST(CaptureErrors, SilenceIsTold) {
    const WindowImageError error = captureTimeOut("call");
    ASSERT_TRUE(std::holds_alternative<WindowServerFailed>(error));
    EXPECT_EQ(std::get<WindowServerFailed>(error).call, "call gives no answer");
    EXPECT_EQ(std::get<WindowServerFailed>(error).code, ETIMEDOUT);
}

TEST(CaptureErrors, AChangeOfSizeIsNoEndOfTheWindow) {
    EXPECT_TRUE(std::holds_alternative<WindowServerFailed>(sizeChanged()));
}

} // namespace

} // namespace pelloran::macos
