#include "platform/x11/WindowList.h"

#include "tests/platform/x11/X11Test.h"
#include "tests/support/OtherProcess.h"
#include "tests/support/Printing.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <thread>
#include <utility>

namespace pelloran::testing {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class WindowListTest : public X11Test {
protected:
    // Speaks as a window manager that composes the screen: other desktops stay mapped.
    void manage(const std::vector<std::uint32_t>& bottomToTop, std::uint32_t desktop = 0) {
        client->setNumbers(client->root(), "_NET_CLIENT_LIST_STACKING", "WINDOW", bottomToTop);
        client->setNumbers(client->root(), "_NET_CURRENT_DESKTOP", "CARDINAL", {desktop});
    }

    void setDesktop(xcb_window_t window, std::uint32_t desktop) {
        client->setNumbers(window, "_NET_WM_DESKTOP", "CARDINAL", {desktop});
    }
};

using ManagedWindowListTest = ManagedX11Test;

TEST_F(WindowListTest, AnEmptyDesktopHasNoWindows) {
    EXPECT_THAT(ids(), IsEmpty());
    EXPECT_THAT(ids(WindowListing::all), IsEmpty());
}

TEST_F(WindowListTest, AServerThatHangsIsNoEmptyDesktop) {
    using std::chrono::milliseconds;
    const x11::Patience brief{.usual = milliseconds(200), .whileStalled = milliseconds(1)};
    const auto connection = connectWith(brief);
    ASSERT_TRUE(connection);
    const auto window = client->create({});
    {
        const Suspended hangs(display->processId());
        for (const WindowListing listing : {WindowListing::onScreen, WindowListing::all}) {
            EXPECT_FALSE(x11::describeWindows(*connection, listing)) << "the game may run all the same";
        }
    }
    EXPECT_TRUE(eventually([&] {
        const auto windows = x11::describeWindows(*connection, WindowListing::onScreen);
        return windows && windows->size() == 1 && windows->front().number == window;
    })) << "it does not go on with the server";
}

TEST_F(WindowListTest, AServerThatGoesOnAmidAListHasNotToldOfAll) {
    using namespace std::chrono_literals;
    const auto here = client->create({});
    const auto elsewhere = client->create({});
    manage({here, elsewhere});
    setDesktop(elsewhere, 1);
    const auto listed = [here](const auto& windows) {
        return windows && windows->size() == 1 && windows->front().number == here;
    };
    // Which desktop is shown is asked first, and given up long before the server goes on; it answers all the rest.
    const auto connection = connectWith({.usual = 50ms, .whileStalled = 60s});
    ASSERT_TRUE(connection);
    {
        std::optional<Suspended> hangs(std::in_place, display->processId());
        const std::jthread goesOn([&] {
            std::this_thread::sleep_for(300ms);
            hangs.reset();
        });
        const auto windows = x11::describeWindows(*connection, WindowListing::onScreen);
        EXPECT_TRUE(!windows || listed(windows)) << windows->size() << " windows, where one is shown";
    }
    EXPECT_TRUE(eventually([&] { return listed(x11::describeWindows(*connection, WindowListing::onScreen)); }))
        << "it does not go on with the server";
}

TEST_F(WindowListTest, WithoutAManagerListsTopLevelWindowsFrontToBack) {
    const auto back = client->create({});
    const auto middle = client->create({});
    const auto front = client->create({});
    client->create({.mapped = false});
    client->create({.inputOnly = true});
    client->create({.bounds = {0, 0, 10, 10}, .parent = front});
    EXPECT_THAT(ids(), ElementsAre(front, middle, back));
    EXPECT_THAT(ids(WindowListing::all), ElementsAre(front, middle, back));

    client->raise(back);
    EXPECT_THAT(ids(), ElementsAre(back, front, middle));
    client->destroy(front);
    client->unmap(middle);
    EXPECT_THAT(ids(), ElementsAre(back));
}

TEST_F(WindowListTest, FindsClientsMarkedByAManagerThatKeepsNoList) {
    const auto frame = client->create({.bounds = {50, 60, 700, 500}});
    const auto inner = client->create({.bounds = {3, 4, 680, 490}, .parent = frame});
    const auto back = client->create({.bounds = {10, 20, 640, 480}, .parent = inner});
    const auto front = client->create({});
    client->create({.overrideRedirect = true}); // a menu: no one's client
    client->setNumbers(back, "WM_STATE", "WM_STATE", {1, 0});
    client->setNumbers(front, "WM_STATE", "WM_STATE", {1, 0});
    EXPECT_THAT(ids(), ElementsAre(front, back));
    EXPECT_EQ(describe(back)->bounds, (WindowBounds{63, 84, 640, 480}));
}

TEST_F(WindowListTest, TakesTheManagersStackingOrder) {
    const auto first = client->create({});
    const auto second = client->create({});
    const auto unlisted = client->create({.overrideRedirect = true});
    manage({second, first});
    EXPECT_THAT(ids(), ElementsAre(first, second));
    EXPECT_FALSE(describe(unlisted));
}

TEST_F(WindowListTest, TakesTheManagersListWhenItKeepsNoStackingOrder) {
    const auto first = client->create({});
    const auto second = client->create({});
    client->setNumbers(client->root(), "_NET_CLIENT_LIST", "WINDOW", {first, second});
    EXPECT_THAT(ids(), ElementsAre(second, first));
}

TEST_F(WindowListTest, SkipsWindowsThatAreGoneOrUnmapped) {
    const auto alive = client->create({});
    const auto gone = client->create({});
    const auto minimised = client->create({.mapped = false});
    manage({gone, alive, minimised, 0, 0xffffffff, client->root()});
    client->destroy(gone);
    const auto windows = ids(WindowListing::all);
    EXPECT_EQ(std::ranges::count(windows, gone), 0);
    EXPECT_EQ(std::ranges::count(windows, minimised), 0);
    EXPECT_EQ(std::ranges::count(windows, alive), 1);
}

TEST_F(WindowListTest, IgnoresTheListOfADeadManager) {
    const auto check = client->create({.mapped = false});
    const auto listed = client->create({});
    const auto later = client->create({});
    manage({listed});
    client->setNumbers(client->root(), "_NET_SUPPORTING_WM_CHECK", "WINDOW", {check});
    client->setNumbers(check, "_NET_SUPPORTING_WM_CHECK", "WINDOW", {check});
    EXPECT_THAT(ids(), ElementsAre(listed));
    client->destroy(check);
    EXPECT_THAT(ids(), ElementsAre(later, listed));
}

TEST_F(WindowListTest, OtherDesktopsAndHiddenWindowsAreOnlyInTheFullListing) {
    const auto here = client->create({});
    const auto elsewhere = client->create({});
    const auto everywhere = client->create({});
    const auto hidden = client->create({});
    const auto unsaid = client->create({});
    manage({here, elsewhere, everywhere, hidden, unsaid}, 1);
    setDesktop(here, 1);
    setDesktop(elsewhere, 0);
    setDesktop(everywhere, 0xffffffff);
    setDesktop(hidden, 1);
    client->setAtoms(hidden, "_NET_WM_STATE", {"_NET_WM_STATE_ABOVE", "_NET_WM_STATE_HIDDEN"});
    EXPECT_THAT(ids(), ElementsAre(unsaid, everywhere, here));
    EXPECT_THAT(ids(WindowListing::all), ElementsAre(unsaid, hidden, everywhere, elsewhere, here));

    manage({here, elsewhere, everywhere, hidden, unsaid}, 0);
    EXPECT_THAT(ids(), ElementsAre(unsaid, everywhere, elsewhere));
}

TEST_F(WindowListTest, BoundsAreThoseOfTheContentsOnTheScreen) {
    const auto framed = client->create({.bounds = {-20, 30, 500, 400}, .border = 7});
    EXPECT_EQ(describe(framed)->bounds, (WindowBounds{-13, 37, 500, 400}));
}

TEST_F(WindowListTest, ReadsTitlesInEveryEncoding) {
    struct Case {
        const char* why;
        std::optional<QByteArray> name;
        std::optional<QByteArray> oldName;
        std::optional<QString> expected;
    };

    const Case cases[] = {
        {"UTF-8", "炉石传说", std::nullopt, QStringLiteral("炉石传说")},
        {"the newer property goes first", "new", "old", QStringLiteral("new")},
        {"empty is a title", "", "old", QString()},
        {"old, ASCII", std::nullopt, "Hearthstone", QStringLiteral("Hearthstone")},
        {"old, Latin-1", std::nullopt, "Caf\xe9", QStringLiteral("Café")},
        {"old, but UTF-8", std::nullopt, "炉石传说", QStringLiteral("炉石传说")},
        {"none", std::nullopt, std::nullopt, std::nullopt},
        {"longer than any title", QByteArray(1 << 20, 'x'), std::nullopt, QString(4096, u'x')},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const auto window = client->create({});
        if (c.name) {
            client->setText(window, "_NET_WM_NAME", "UTF8_STRING", *c.name);
        }
        if (c.oldName) {
            client->setText(window, "WM_NAME", "STRING", *c.oldName);
        }
        const auto description = describe(window);
        ASSERT_TRUE(description);
        EXPECT_EQ(description->name.has_value(), c.expected.has_value());
        EXPECT_EQ(description->name.value_or(QString()), c.expected.value_or(QString()));
        client->destroy(window);
    }
}

TEST_F(WindowListTest, OwnerIsTheClass) {
    struct Case {
        const char* why;
        std::optional<QByteArray> property;
        std::optional<QString> expected;
    };

    const Case cases[] = {
        {"instance and class", QByteArrayLiteral("instance\0Hearthstone\0"), QStringLiteral("Hearthstone")},
        {"not ended", QByteArrayLiteral("instance\0Hearthstone"), QStringLiteral("Hearthstone")},
        {"empty class", QByteArrayLiteral("instance\0\0"), QString()},
        {"only one text", QByteArrayLiteral("instance"), std::nullopt},
        {"empty", QByteArrayLiteral(""), std::nullopt},
        {"UTF-8", QByteArrayLiteral("x\0炉石\0"), QStringLiteral("炉石")},
        {"none", std::nullopt, std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const auto window = client->create({});
        if (c.property) {
            client->setText(window, "WM_CLASS", "STRING", *c.property);
        }
        const auto description = describe(window);
        ASSERT_TRUE(description);
        EXPECT_EQ(description->ownerName.value_or(QStringLiteral("(none)")),
                  c.expected.value_or(QStringLiteral("(none)")));
        client->destroy(window);
    }
    const auto odd = client->create({});
    client->setNumbers(odd, "WM_CLASS", "CARDINAL", {1, 2, 3});
    client->setNumbers(odd, "_NET_WM_NAME", "CARDINAL", {1, 2, 3});
    ASSERT_TRUE(describe(odd));
    EXPECT_EQ(describe(odd)->ownerName, std::nullopt) << "numbers are no text";
}

TEST_F(WindowListTest, OwnerBehindALauncherIsTheProgram) {
    // A process that bears the name that Wine gives it.
    QProcess game;
    game.start(QStringLiteral("bash"),
               {QStringLiteral("-c"),
                QStringLiteral("exec -a 'C:\\Program Files (x86)\\Hearthstone\\Hearthstone.exe' sleep 60")});
    ASSERT_TRUE(game.waitForStarted());
    const auto window = client->create({});
    client->setText(window, "WM_CLASS", "STRING", QByteArrayLiteral("steam_app_0\0steam_app_0\0"));
    EXPECT_EQ(describe(window)->ownerName, QStringLiteral("steam_app_0")) << "no process known";

    client->setNumbers(window, "_NET_WM_PID", "CARDINAL", {static_cast<std::uint32_t>(game.processId())});
    EXPECT_TRUE(eventually([&] { return describe(window)->ownerName == QStringLiteral("Hearthstone"); }))
        << describe(window)->ownerName->toStdString(); // bash first has to become it

    client->setText(window, "WM_CLASS", "STRING", QByteArrayLiteral("x\0Solitaire\0"));
    EXPECT_EQ(describe(window)->ownerName, QStringLiteral("Solitaire")) << "only launchers are looked behind";

    client->setText(window, "WM_CLASS", "STRING", QByteArrayLiteral("explorer.exe\0explorer.exe\0"));
    EXPECT_EQ(describe(window)->ownerName, QStringLiteral("Hearthstone"));
    game.kill();
    game.waitForFinished();
    EXPECT_EQ(describe(window)->ownerName, QStringLiteral("explorer.exe")) << "the process is gone";
}

TEST_F(WindowListTest, LayerFollowsTheWindowType) {
    struct Case {
        const char* why;
        std::vector<const char*> types;
        bool overrideRedirect;
        bool normal;
    };

    const Case cases[] = {
        {"no type", {}, false, true},
        {"normal", {"_NET_WM_WINDOW_TYPE_NORMAL"}, false, true},
        {"dialog", {"_NET_WM_WINDOW_TYPE_DIALOG"}, false, true},
        {"dock", {"_NET_WM_WINDOW_TYPE_DOCK"}, false, false},
        {"desktop", {"_NET_WM_WINDOW_TYPE_DESKTOP"}, false, false},
        {"notification", {"_NET_WM_WINDOW_TYPE_NOTIFICATION"}, false, false},
        {"tooltip", {"_NET_WM_WINDOW_TYPE_TOOLTIP"}, true, false},
        {"menu", {"_NET_WM_WINDOW_TYPE_MENU"}, false, false},
        {"menu that dropped down", {"_NET_WM_WINDOW_TYPE_DROPDOWN_MENU"}, true, false},
        {"utility", {"_NET_WM_WINDOW_TYPE_UTILITY"}, false, false},
        {"splash", {"_NET_WM_WINDOW_TYPE_SPLASH"}, false, false},
        {"no type and past the manager", {}, true, false},
        {"past the manager, but an application's", {"_NET_WM_WINDOW_TYPE_NORMAL"}, true, true},
        {"first type counts", {"_NET_WM_WINDOW_TYPE_DOCK", "_NET_WM_WINDOW_TYPE_NORMAL"}, false, false},
        {"unknown types are passed over", {"_KDE_X", "_NET_WM_WINDOW_TYPE_NORMAL"}, true, true},
        {"nothing but unknown types", {"_KDE_X"}, false, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const auto window = client->create({.overrideRedirect = c.overrideRedirect});
        client->setAtoms(window, "_NET_WM_WINDOW_TYPE", c.types);
        const auto description = describe(window);
        ASSERT_TRUE(description);
        EXPECT_EQ(description->layer == 0, c.normal) << description->layer.value_or(-99);
        client->destroy(window);
    }
}

TEST_F(WindowListTest, TheDesktopItselfIsNotOnScreen) {
    const auto wallpaper = client->create({});
    client->setAtoms(wallpaper, "_NET_WM_WINDOW_TYPE", {"_NET_WM_WINDOW_TYPE_DESKTOP"});
    EXPECT_THAT(ids(), IsEmpty());
    EXPECT_THAT(ids(WindowListing::all), ElementsAre(wallpaper));
}

TEST_F(ManagedWindowListTest, ListsClientsFrontToBackWithoutTheirFrames) {
    const auto back = createManaged({});
    const auto front = createManaged({.bounds = {200, 180, 640, 480}});
    EXPECT_TRUE(eventually([&] { return ids() == std::vector<std::int64_t>{front, back}; }));
    client->sendToRoot(back, "_NET_ACTIVE_WINDOW", 2);
    EXPECT_TRUE(eventually([&] { return ids() == std::vector<std::int64_t>{back, front}; }));
    EXPECT_EQ(describe(back)->bounds->width, 640);
    EXPECT_EQ(describe(back)->bounds->height, 480);
}

TEST_F(ManagedWindowListTest, AWindowOnAnotherDesktopLeavesTheScreen) {
    const auto stays = createManaged({});
    const auto leaves = createManaged({});
    EXPECT_TRUE(eventually([&] { return ids().size() == 2; }));
    client->sendToRoot(leaves, "_NET_WM_DESKTOP", 1, 2);
    EXPECT_TRUE(eventually([&] { return ids() == std::vector<std::int64_t>{stays}; }));
    client->sendToRoot(client->root(), "_NET_CURRENT_DESKTOP", 1);
    EXPECT_TRUE(eventually([&] { return ids() == std::vector<std::int64_t>{leaves}; }));
}

TEST_F(ManagedWindowListTest, AMinimisedWindowIsInNeitherListing) {
    const auto window = createManaged({});
    EXPECT_TRUE(eventually([&] { return ids().size() == 1; }));
    client->sendToRoot(window, "WM_CHANGE_STATE", 3);
    EXPECT_TRUE(eventually([&] { return ids(WindowListing::all).empty(); }));
    client->sendToRoot(window, "_NET_ACTIVE_WINDOW", 2);
    EXPECT_TRUE(eventually([&] { return ids() == std::vector<std::int64_t>{window}; }));
}

TEST_F(ManagedWindowListTest, SurvivesItsManager) {
    const auto window = createManaged({});
    EXPECT_TRUE(eventually([&] { return ids().size() == 1; }));
    display->stopPrograms();
    EXPECT_TRUE(eventually([&] { return client->parent(window) == client->root(); }));
    EXPECT_TRUE(eventually([&] { return ids() == std::vector<std::int64_t>{window}; }));
}

} // namespace

} // namespace pelloran::testing
