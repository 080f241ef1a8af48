#include "platform/x11/Obscuring.h"

#include <gtest/gtest.h>

#include <array>
#include <ostream>
#include <vector>

namespace pelloran::x11 {

void PrintTo(PanelView view, std::ostream* out) {
    *out << (view == PanelView::free ? "free" : view == PanelView::obscured ? "obscured" : "locked");
}

namespace {

constexpr QRect panel(1500, 100, 360, 420);
constexpr std::array screens{QRect(0, 0, 1920, 1080), QRect(1920, 0, 1280, 1024)};
constexpr QRect wholeScreen = screens[0];
constexpr QRect partOfPanel(1400, 0, 200, 200);

TEST(PanelView, TellsWhatIsInTheWay) {
    struct Case {
        const char* why;
        std::vector<StackedWindow> above;
        PanelView expected;
    };

    const Case cases[] = {
        {"nothing above", {}, PanelView::free},
        {"a window over a part", {{.bounds = partOfPanel}}, PanelView::obscured},
        {"a window over all of it", {{.bounds = panel}}, PanelView::obscured},
        {"one pixel", {{.bounds = {1859, 519, 100, 100}}}, PanelView::obscured},
        {"side by side", {{.bounds = {1860, 100, 100, 420}}}, PanelView::free},
        {"elsewhere", {{.bounds = {0, 0, 800, 600}}}, PanelView::free},
        {"a full-screen game", {{.bounds = wholeScreen}}, PanelView::obscured},
        {"not on the screen", {{.bounds = partOfPanel, .viewable = false}}, PanelView::free},
        {"cannot be seen, as what catches clicks", {{.bounds = wholeScreen, .inputOnly = true}}, PanelView::free},
        {"a menu of ours", {{.bounds = partOfPanel, .bypassesManager = true, .ours = true}}, PanelView::free},
        {"ours, as large as the screen",
         {{.bounds = wholeScreen, .bypassesManager = true, .ours = true}},
         PanelView::free},
        {"another program's menu", {{.bounds = partOfPanel, .bypassesManager = true}}, PanelView::free},
        {"a menu above its program's window",
         {{.bounds = wholeScreen}, {.bounds = partOfPanel, .bypassesManager = true}},
         PanelView::obscured},
        {"a screen locker", {{.bounds = wholeScreen, .bypassesManager = true}}, PanelView::locked},
        {"a locker over all screens", {{.bounds = {0, 0, 3200, 1080}, .bypassesManager = true}}, PanelView::locked},
        {"a locker with a border", {{.bounds = {-2, -2, 1924, 1084}, .bypassesManager = true}}, PanelView::locked},
        {"a locker of a screen the panel is not on",
         {{.bounds = screens[1], .bypassesManager = true}},
         PanelView::free},
        {"a locker not yet shown",
         {{.bounds = wholeScreen, .viewable = false, .bypassesManager = true}},
         PanelView::free},
        {"less than a screen", {{.bounds = {0, 0, 1920, 1000}, .bypassesManager = true}}, PanelView::free},
        {"size of a scaled screen is rounded",
         {{.bounds = {0, 0, 1918, 1078}, .bypassesManager = true}},
         PanelView::locked},
        {"a locker above another window",
         {{.bounds = partOfPanel}, {.bounds = wholeScreen, .bypassesManager = true}},
         PanelView::locked},
        {"another window above the locker",
         {{.bounds = wholeScreen, .bypassesManager = true}, {.bounds = partOfPanel}},
         PanelView::locked},
        {"ours below another program's",
         {{.bounds = partOfPanel, .ours = true}, {.bounds = partOfPanel}},
         PanelView::obscured},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(panelView(panel, c.above, screens), c.expected);
    }
}

TEST(PanelView, WithoutScreensNothingIsALocker) {
    const std::array windows{StackedWindow{.bounds = wholeScreen},
                             StackedWindow{.bounds = wholeScreen, .bypassesManager = true}};
    EXPECT_EQ(panelView(panel, windows, {}), PanelView::obscured);
    const QRect none;
    EXPECT_EQ(panelView(panel, windows, std::span(&none, 1)), PanelView::obscured);
}

} // namespace

} // namespace pelloran::x11
