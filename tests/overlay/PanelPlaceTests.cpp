#include "overlay/OverlayPanel/layout/PanelPlace.h"

#include "tests/overlay/RectPrinting.h"

#include <gtest/gtest.h>

namespace pelloran {
namespace {

using namespace Qt::StringLiterals;

constexpr UpwardRect desk{0, 0, 1920, 1040};       // the visible part of a screen
constexpr UpwardRect beside{1920, 100, 1280, 984}; // of one to its right
constexpr UpwardRect tiny{0, 0, 240, 160};

PanelPlace place(const QString& screens, const UpwardRect& frame, std::optional<QSizeF> userSize = {},
                 bool isShown = true) {
    return {screens, frame, userSize, isShown};
}

TEST(PanelPlace, KnowsAnArrangementByItsScreens) {
    const ScreenInUse left{u"DP-1"_s, {0, 0, 1920, 1080}};
    const ScreenInUse right{u"HDMI-1"_s, {1920, 0, 1280, 1024}};
    EXPECT_EQ(arrangementOf({left}), u"DP-1 0,0 1920x1080"_s);
    EXPECT_EQ(arrangementOf({left, right}), arrangementOf({right, left}));
    EXPECT_NE(arrangementOf({left, right}), arrangementOf({left}));
    EXPECT_NE(arrangementOf({{u"DP-1"_s, {0, 0, 1280, 720}}}), arrangementOf({left})) << "another resolution";
    EXPECT_NE(arrangementOf({{u"DP-2"_s, {0, 0, 1920, 1080}}}), arrangementOf({left})) << "another screen";
    const ScreenInUse mainLeft{left.name, left.geometry, true};
    const ScreenInUse mainRight{right.name, right.geometry, true};
    EXPECT_EQ(arrangementOf({mainLeft, right}), u"DP-1 0,0 1920x1080; HDMI-1 1920,0 1280x1024"_s)
        << "the main screen mostly is where the others begin, and that was never told";
    EXPECT_EQ(arrangementOf({left, mainRight}), u"DP-1 0,0 1920x1080; HDMI-1 1920,0 1280x1024 main"_s)
        << "the same numbers are another place";
    EXPECT_EQ(arrangementOf({mainRight, left}), arrangementOf({left, mainRight}));
    EXPECT_EQ(arrangementOf({}), QString());
    EXPECT_EQ(arrangementOf({{u"%1 %4"_s, {0, 0, 1280, 720}}}), u"%1 %4 0,0 1280x720"_s)
        << "a name that looks like a place for a number";
}

TEST(PanelPlace, OpensWhereItWasLeft) {
    struct Case {
        const char* why;
        PanelPlaces places;
        std::vector<UpwardRect> visible;
        UpwardRect frame;
    };

    const UpwardRect right{2500, 300, 360, 420};
    const Case cases[] = {
        {"the first run", {}, {desk}, initialFrame},
        {"the first run, on whatever screens", {}, {}, initialFrame},
        {"as it was", {place(u"A"_s, {700, 500, 360, 420})}, {desk}, {700, 500, 360, 420}},
        {"on the second screen", {place(u"A"_s, right)}, {desk, beside}, right},
        {"of these screens, not the latest",
         {place(u"B"_s, {1, 2, 360, 420}), place(u"A"_s, {700, 500, 360, 420})},
         {desk},
         {700, 500, 360, 420}},
        {"of other screens the latest",
         {place(u"B"_s, {1, 2, 360, 420}), place(u"C"_s, right)},
         {desk},
         {1, 2, 360, 420}},
        {"its screen is gone: to the edge of the one that is left",
         {place(u"B"_s, right)},
         {desk},
         {1920 - 360, 300, 360, 420}},
        {"only that far: it was half on the screen",
         {place(u"A"_s, {1700, 300, 360, 420})},
         {desk},
         {1920 - 360, 300, 360, 420}},
        {"above the top", {place(u"A"_s, {700, 1000, 360, 420})}, {desk}, {700, 1040 - 420, 360, 420}},
        {"below and left", {place(u"A"_s, {-5000, -5000, 360, 420})}, {desk}, {0, 0, 360, 420}},
        {"to the screen that has more of it",
         {place(u"A"_s, {1900, 300, 360, 420})},
         {desk, beside},
         {1920, 300, 360, 420}},
        {"to the nearest of two that have nothing of it",
         {place(u"A"_s, {5000, 300, 360, 420})},
         {desk, beside},
         {1920 + 1280 - 360, 300, 360, 420}},
        {"larger than the screen", {place(u"A"_s, {10, 10, 3000, 2000})}, {desk}, {0, 0, 1920, 1040}},
        {"a screen smaller than any panel", {place(u"A"_s, {10, 10, 360, 420})}, {tiny}, {0, 0, 280, 200}},
        {"no screen at all", {place(u"A"_s, {-5000, 10, 360, 420})}, {}, {-5000, 10, 360, 420}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const PanelPlace opened = placeToOpen(c.places, u"A"_s, c.visible);
        EXPECT_EQ(opened.frame, c.frame);
        EXPECT_EQ(opened.screens, u"A"_s);
        EXPECT_TRUE(opened.isShown);
        EXPECT_EQ(opened.userSize, std::nullopt);
    }
    const PanelPlace hidden = placeToOpen({place(u"A"_s, {1, 2, 500, 400}, QSizeF(500, 300), false)}, u"A"_s, {desk});
    EXPECT_FALSE(hidden.isShown);
    EXPECT_EQ(hidden.userSize, QSizeF(500, 300));
}

TEST(PanelPlace, IsNoLargerThanTheScreenAlsoWhenItsContentChanges) {
    const PanelPlace wide = place(u"B"_s, {100, 100, 2400, 500}, QSizeF(2400, 500));
    EXPECT_EQ(placeToOpen({wide}, u"A"_s, {desk}).userSize, QSizeF(1920, 500)) << "what it takes at the next offer";
    EXPECT_EQ(placeToOpen({wide}, u"A"_s, {tiny}).userSize, QSizeF(280, 200)) << "as small as it can be dragged";
    EXPECT_EQ(placeToOpen({wide}, u"A"_s, {tiny, {0, 0, 3000, 2000}}).userSize, QSizeF(2400, 500))
        << "the screen that it opens on";
    const PanelPlace there = place(u"A"_s, {10, 10, 1920, 500}, QSizeF(1920, 500));
    EXPECT_EQ(placeToOpen(withPlace({wide}, there), u"B"_s, {{0, 0, 2560, 1440}}), wide)
        << "back on the large screen it is as it was";
}

TEST(PanelPlace, FollowsTheScreensWhileItRuns) {
    struct Case {
        const char* why;
        PanelPlaces places;
        UpwardRect frame; // on A
        QString screens;
        VisibleScreens visible;
        UpwardRect expected;
    };

    const UpwardRect right{2500, 300, 360, 420};
    const PanelPlace onA = place(u"A"_s, right);
    const PanelPlace onB = place(u"B"_s, {700, 500, 360, 420});
    const VisibleScreens one{.all = {desk}, .main = desk, .own = desk};
    const VisibleScreens two{.all = {desk, beside}, .main = desk, .own = beside};
    const Case cases[] = {
        {"nothing has changed", {onA, onB}, right, u"A"_s, two, right},
        {"nor is it put back where the program moved it from",
         {onA},
         {2000, 300, 360, 420},
         u"A"_s,
         two,
         {2000, 300, 360, 420}},
        {"to where it was left on these screens", {onA, onB}, right, u"B"_s, one, onB.frame},
        {"though it could be reached where it is", {onA, onB}, {100, 100, 360, 420}, u"B"_s, one, onB.frame},
        {"on screens that are new to it, as far as it must", {onA}, right, u"C"_s, one, {1920 - 360, 300, 360, 420}},
        {"it can be reached there", {onA}, {1800, 300, 360, 420}, u"C"_s, one, {1800, 300, 360, 420}},
        {"lost on the screens that it was left on", {onB, onA}, {-5000, 300, 360, 420}, u"A"_s, two, right},
        {"lost, and never put anywhere", {}, right, u"C"_s, one, {40, 60, 360, 420}},
        {"lost and too large, and never put anywhere", {}, {2500, 300, 3000, 2000}, u"C"_s, one, {0, 0, 1920, 1040}},
        {"wider than the screen that is left", {onB}, {100, 300, 2000, 420}, u"C"_s, one, {0, 300, 1920, 420}},
        {"higher", {onB}, {100, 300, 360, 1300}, u"C"_s, one, {100, 0, 360, 1040}},
        {"than its own of two", {onB}, {2000, 200, 1800, 420}, u"C"_s, two, {1920, 200, 1280, 420}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        for (const bool isShown : {true, false}) {
            const PanelPlace now = place(u"A"_s, c.frame, {}, isShown);
            EXPECT_EQ(placeAfterChange(c.places, now, c.screens, c.visible), place(c.screens, c.expected, {}, isShown));
        }
    }
}

TEST(PanelPlace, TakesTheUsersSizeAlongToOtherScreens) {
    struct Case {
        const char* why;
        PanelPlaces places;
        std::optional<QSizeF> userSize; // on A
        std::optional<QSizeF> expected; // on B
    };

    const PanelPlace narrow = place(u"B"_s, {0, 0, 500, 400}, QSizeF(500, 400));
    const Case cases[] = {
        {"as large", {}, QSizeF(700, 500), QSizeF(700, 500)},
        {"no larger than the screen", {}, QSizeF(2400, 1300), QSizeF(1920, 1040)},
        {"none", {}, {}, {}},
        {"the one that these screens have", {narrow}, QSizeF(2400, 1300), QSizeF(500, 400)},
        {"none where they have none", {place(u"B"_s, {0, 0, 360, 420})}, QSizeF(2400, 1300), {}},
    };
    const VisibleScreens one{.all = {desk}, .main = desk, .own = desk};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const PanelPlace now = place(u"A"_s, {100, 100, 360, 420}, c.userSize);
        EXPECT_EQ(placeAfterChange(c.places, now, u"B"_s, one).userSize, c.expected);
    }
}

TEST(PanelPlace, KeepsTheLatestArrangements) {
    PanelPlaces places;
    for (int i = 0; i < 10; ++i) {
        places = withPlace(places, place(QString::number(i), {double(i), 0, 360, 420}));
    }
    ASSERT_EQ(places.size(), 8U);
    EXPECT_EQ(places.front().screens, u"9"_s);
    EXPECT_EQ(places.back().screens, u"2"_s);
    places = withPlace(places, place(u"5"_s, {77, 0, 360, 420}));
    ASSERT_EQ(places.size(), 8U);
    EXPECT_EQ(places.front(), place(u"5"_s, {77, 0, 360, 420}));
    EXPECT_EQ(std::ranges::count(places, u"5"_s, &PanelPlace::screens), 1);
}

TEST(PanelPlace, IsStoredAndReadBack) {
    const PanelPlaces places{place(u"DP-1 0,0 1920x1080; \"屏\" 1920,0 10x10"_s, {-12.5, 60, 360, 420}),
                             place(u""_s, {0, 0, 900, 300}, QSizeF(901, 299), false),
                             place(u"made wider while it showed a message"_s, {0, 0, 500, 160}, QSizeF(500, 160))};
    EXPECT_EQ(placesFrom(textOf(places)), places);
    EXPECT_EQ(placesFrom(textOf({})), PanelPlaces());
}

TEST(PanelPlace, IsForgottenWhereTheTextIsNoneOfOurs) {
    const QString good = u"{\"screens\":\"A\",\"x\":1,\"y\":2,\"width\":360,\"height\":420,\"shown\":true"_s;
    const auto with = [&](const char* more) { return good + QString::fromUtf8(more); };

    struct Case {
        const char* why;
        QString text;
        std::size_t places;
    };

    const Case cases[] = {
        {"one that is", u"["_s + good + u"}]"_s, 1},
        {"more than we know of", with(",\"colour\":3}]").prepend(u'['), 1},
        {"nothing", {}, 0},
        {"no JSON", u"[{"_s, 0},
        {"no list", good + u"}"_s, 0},
        {"a text for a number", with(",\"user_width\":\"x\"}]").prepend(u'['), 0},
        {"something is missing", u"[{\"screens\":\"A\",\"x\":1}]"_s, 0},
        {"beyond all screens", with(",\"x\":1e300}]").prepend(u'['), 0},
        {"no size", with(",\"width\":0}]").prepend(u'['), 0},
        {"larger than all screens", with(",\"height\":1e9}]").prepend(u'['), 0},
        {"larger than any window", with(",\"width\":99999}]").prepend(u'['), 0},
        {"made larger than any window", with(",\"user_width\":400,\"user_height\":99999}]").prepend(u'['), 0},
        {"smaller than it can be dragged", with(",\"user_width\":10,\"user_height\":300}]").prepend(u'['), 0},
        {"half a size is none", with(",\"user_width\":400}]").prepend(u'['), 1},
        {"the others stay", u"["_s + good + u",\"width\":-1},"_s + good + u"}]"_s, 1},
        {"endless", u"["_s + (good + u"},"_s).repeated(20'000) + good + u"}]"_s, 0},
        {"more than are kept", u"["_s + (good + u"},"_s).repeated(20) + good + u"}]"_s, 8},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const PanelPlaces places = placesFrom(c.text);
        EXPECT_EQ(places.size(), c.places);
        for (const PanelPlace& each : places) {
            EXPECT_EQ(each, place(u"A"_s, {1, 2, 360, 420}));
        }
    }
}

} // namespace
} // namespace pelloran
