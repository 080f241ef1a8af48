#include "platform/macos/PreferenceNews.h"

#include <gtest/gtest.h>

namespace pelloran::macos {

namespace {

TEST(PreferenceNews, AreToldOnce) {
    const Preferences atFirst{.reducesMotion = false, .appearance = Appearance::light};

    struct Case {
        const char* why;
        Preferences now;
        bool news;
    };

    // In this order.
    const Case cases[] = {
        {"another option of the same panel has changed", atFirst, false},
        {"motion", {true, Appearance::light}, true},
        {"told already", {true, Appearance::light}, false},
        {"colours", {true, Appearance::dark}, true},
        {"both at once", {false, Appearance::light}, true},
        {"the desktop says no more", {false, std::nullopt}, true},
        {"and still does not", {false, std::nullopt}, false},
        {"back to what it was at first is a change too", atFirst, true},
    };
    PreferenceNews news(atFirst);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(news.tell(c.now), c.news);
    }
}

} // namespace

} // namespace pelloran::macos
