#include "platform/macos/CaptureConsent.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace pelloran::macos {

namespace {

// Steps: 'g' the user consents and 'w' withdraws it in the settings, 'l' we look, 'a' we ask. The system's answer when
// it is asked is whether there is consent.
struct Case {
    const char* why;
    std::string steps;
    CapturePermission expected; // in the end
    int questions;
};

TEST(CaptureConsent, IsAskedForOnceInTheLifeOfTheProgram) {
    const Case cases[] = {
        {"nobody has asked yet", "l", CapturePermission::notAsked, 0},
        {"looking asks nothing", "lll", CapturePermission::notAsked, 0},
        {"given in an earlier run", "ga", CapturePermission::granted, 0},
        {"given without a question of ours", "lgl", CapturePermission::granted, 0},
        {"asked for, and the user has not answered", "al", CapturePermission::denied, 1},
        {"asked again by another window server", "aaa", CapturePermission::denied, 1},
        {"given after the question", "agl", CapturePermission::granted, 1},
        {"given, then withdrawn", "gawl", CapturePermission::notAsked, 0},
        {"given, then withdrawn, then asked for", "gawa", CapturePermission::denied, 1},
        {"asked for, given, withdrawn: no second question", "agwa", CapturePermission::denied, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        bool given = false;
        int questions = 0;
        CaptureConsent consent([&] { return given; },
                               [&] {
                                   ++questions;
                                   return given;
                               });
        for (const char step : c.steps) {
            if (step == 'l') {
                std::ignore = consent.current();
            } else if (step == 'a') {
                consent.askOnce();
            } else {
                given = step == 'g';
            }
        }
        EXPECT_EQ(consent.current(), c.expected);
        EXPECT_EQ(questions, c.questions);
    }
}

TEST(CaptureConsent, BelievesTheAnswerToItsQuestion) {
    CaptureConsent consent([] { return false; }, [] { return true; });
    EXPECT_EQ(consent.askOnce(), CapturePermission::granted);
}

} // namespace

} // namespace pelloran::macos
