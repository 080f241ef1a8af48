#include "recognition/WindowCapture.h"

#include "tests/fakes/FakeWindowServer.h"
#include "tests/support/Printing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>

namespace pelloran {

namespace {

using ::testing::ElementsAre;
using testing::FakeWindowServer;
using ::testing::IsEmpty;

WindowDescription described(std::int64_t number, const QString& owner, const QString& title, double width,
                            double height) {
    return {number, owner, title, 0, WindowBounds{0, 0, width, height}};
}

WindowDescription described(std::int64_t number) {
    return described(number, QStringLiteral("Owner"), QStringLiteral("Title"), 800, 600);
}

std::vector<std::uint32_t> idsOf(const std::vector<HSWindowInfo>& windows) {
    std::vector<std::uint32_t> ids;
    std::ranges::transform(windows, std::back_inserter(ids), &HSWindowInfo::windowId);
    return ids;
}

std::optional<WindowCaptureError> captureError(FakeWindowServer& server, std::uint32_t windowId) {
    const auto image = WindowCapture::capture(server, windowId);
    return image ? std::nullopt : std::optional(image.error().error);
}

// Every pixel tells where it came from.
QImage gradient(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            image.setPixel(x, y, qRgb(x & 0xff, y & 0xff, (x >> 8) * 16 + (y >> 8)));
        }
    }
    return image;
}

TEST(WindowCaptureError, DescriptionsAreFixed) {
    EXPECT_EQ(localizedDescription(WindowCaptureError::noWindow), QStringLiteral("未找到 Hearthstone 窗口"));
    EXPECT_EQ(localizedDescription(WindowCaptureError::captureFailed),
              QStringLiteral("截屏失败：请在 系统设置 → 隐私与安全性 → 屏幕录制 中授权 Pelloran，并重启应用"));
    EXPECT_EQ(localizedDescription(WindowCaptureError::zeroSize), QStringLiteral("截到的窗口尺寸为 0"));
}

TEST(Parse, FillsEveryField) {
    const std::vector<WindowDescription> descriptions{
        {77, QStringLiteral("Hearthstone"), QStringLiteral("炉石传说"), 0, WindowBounds{-10.5, 20, 1920, 1080}}};
    const HSWindowInfo expected{77, QStringLiteral("Hearthstone"), QStringLiteral("炉石传说"),
                                QRectF(-10.5, 20, 1920, 1080), true};
    EXPECT_THAT(WindowCapture::parse(descriptions, true), ElementsAre(expected));
    EXPECT_FALSE(WindowCapture::parse(descriptions, false).at(0).onscreen);
}

TEST(Parse, KeepsOnlyWindowsThatCouldHoldAGame) {
    const WindowBounds large{0, 0, 800, 600};
    const double notANumber = std::numeric_limits<double>::quiet_NaN();

    struct Case {
        const char* why;
        WindowDescription description;
        bool kept;
    };

    const Case cases[] = {
        {"ordinary", {1, {}, {}, 0, large}, true},
        {"no number", {{}, {}, {}, 0, large}, false},
        {"number 0 is a number", {0, {}, {}, 0, large}, true},
        {"no layer counts as the normal one", {1, {}, {}, {}, large}, true},
        {"floating layer", {1, QStringLiteral("Hearthstone"), QStringLiteral("Hearthstone"), 3, large}, false},
        {"below the normal layer", {1, {}, {}, -1, large}, false},
        {"just large enough", {1, {}, {}, 0, WindowBounds{0, 0, 400, 300}}, true},
        {"too narrow", {1, {}, {}, 0, WindowBounds{0, 0, 399, 800}}, false},
        {"too narrow by less than a point", {1, {}, {}, 0, WindowBounds{0, 0, 399.999, 800}}, false},
        {"too low", {1, {}, {}, 0, WindowBounds{0, 0, 800, 299}}, false},
        {"no bounds", {1, {}, {}, 0, {}}, false},
        {"no width", {1, {}, {}, 0, WindowBounds{0, 0, {}, 600}}, false},
        {"no height", {1, {}, {}, 0, WindowBounds{0, 0, 800, {}}}, false},
        {"no position", {1, {}, {}, 0, WindowBounds{{}, {}, 800, 600}}, true},
        {"negative size", {1, {}, {}, 0, WindowBounds{0, 0, -800, -600}}, false},
        {"size is not a number", {1, {}, {}, 0, WindowBounds{0, 0, notANumber, notANumber}}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(WindowCapture::parse({{c.description}}, true).size(), c.kept ? 1U : 0U);
    }
}

TEST(Parse, AbsentTextsAreEmptyAndAbsentPositionsZero) {
    const std::vector<WindowDescription> descriptions{{1, {}, {}, {}, WindowBounds{{}, {}, 800, 600}}};
    EXPECT_THAT(WindowCapture::parse(descriptions, true),
                ElementsAre(HSWindowInfo{1, QString(), QString(), QRectF(0, 0, 800, 600), true}));
}

TEST(Parse, TruncatesNumbersTo32Bits) {
    const std::vector<WindowDescription> descriptions{described(0x1'0000'0007), described(-1)};
    EXPECT_THAT(idsOf(WindowCapture::parse(descriptions, true)), ElementsAre(7U, 0xffff'ffffU));
}

TEST(ListWindows, KeepsTheServersOrder) {
    FakeWindowServer server;
    server.onScreen = {described(3), described(1), described(2)};
    EXPECT_THAT(idsOf(WindowCapture::listWindows(server, false)), ElementsAre(3U, 1U, 2U));
}

TEST(ListWindows, AddsOffscreenWindowsOnlyWhenAsked) {
    FakeWindowServer server;
    server.onScreen = {described(2)};
    server.all = {described(1), described(2), described(3)};
    EXPECT_THAT(idsOf(WindowCapture::listWindows(server, false)), ElementsAre(2U));

    const auto windows = WindowCapture::listWindows(server, true);
    EXPECT_THAT(idsOf(windows), ElementsAre(2U, 1U, 3U));
    EXPECT_TRUE(windows[0].onscreen);
    EXPECT_FALSE(windows[1].onscreen);
    EXPECT_FALSE(windows[2].onscreen);
}

TEST(ListWindows, ListsAWindowOfBothListingsOnceAsOnScreen) {
    FakeWindowServer server;
    server.onScreen = {described(9)};
    server.all = {described(9)};
    const auto windows = WindowCapture::listWindows(server, true);
    ASSERT_EQ(windows.size(), 1U);
    EXPECT_TRUE(windows[0].onscreen);
}

TEST(ListWindows, AWindowDroppedFromTheFirstListingCanComeFromTheSecond) {
    FakeWindowServer server;
    server.onScreen = {described(5, {}, {}, 100, 100)}; // grew between the two listings
    server.all = {described(5)};
    const auto windows = WindowCapture::listWindows(server, true);
    ASSERT_EQ(windows.size(), 1U);
    EXPECT_FALSE(windows[0].onscreen);
}

TEST(ListWindows, ARefusedListingAddsNothing) {
    FakeWindowServer server;
    server.onScreen = std::nullopt;
    server.all = {described(1)};
    EXPECT_THAT(WindowCapture::listWindows(server, false), IsEmpty());
    EXPECT_THAT(idsOf(WindowCapture::listWindows(server, true)), ElementsAre(1U));

    server.onScreen = {described(2)};
    server.all = std::nullopt;
    EXPECT_THAT(idsOf(WindowCapture::listWindows(server, true)), ElementsAre(2U));

    server.onScreen = std::nullopt;
    EXPECT_THAT(WindowCapture::listWindows(server, true), IsEmpty());
}

TEST(ChooseHearthstone, KnowsTheGameByHintOrName) {
    struct Case {
        const char* why;
        const char* hint;
        const char* owner;
        const char* title;
        bool found;
    };

    const Case cases[] = {
        {"owner is the game", "Hearthstone", "Hearthstone", "", true},
        {"title is the game", "Hearthstone", "wine", "Hearthstone", true},
        {"hint in any case", "hEARTHSTONE", "HeartHStone", "", true},
        {"part of a name", "stone", "Gladstone", "", true},
        {"hint in the title", "炉石", "Wine", "炉石传说", true},
        {"hint across owner and title", "game window", "My Game", "Window 1", true},
        {"the game's name counts under any hint", "solitaire", "hearthstone.exe", "", true},
        {"another program", "Hearthstone", "Editor", "Notes", false},
        {"the name across owner and title is cut by the space", "x", "Hearth", "stone", false},
        {"empty hint matches nothing by itself", "", "Editor", "Notes", false},
        {"empty hint still leaves the game's name", "", "Editor", "Hearthstone", true},
        {"nothing to go by", "Hearthstone", "", "", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const std::vector<HSWindowInfo> windows{
            {1, QString::fromUtf8(c.owner), QString::fromUtf8(c.title), QRectF(0, 0, 800, 600), true}};
        EXPECT_EQ(WindowCapture::chooseHearthstone(windows, QString::fromUtf8(c.hint)).has_value(), c.found);
    }
}

TEST(ChooseHearthstone, PrefersByTitleThenScreenThenAreaThenOrder) {
    const QString game = QStringLiteral("Hearthstone");
    const QString none;
    const QRectF small(0, 0, 400, 300);
    const QRectF large(0, 0, 1920, 1080);
    const QRectF tall(0, 0, 300, 400); // as large as `small`

    struct Case {
        const char* why;
        std::vector<HSWindowInfo> windows;
        std::uint32_t chosen;
    };

    const Case cases[] = {
        {"titled beats a bigger untitled one before it",
         {{1, game, none, large, true}, {2, game, game, small, true}},
         2},
        {"titled stays before a bigger untitled one", {{1, game, game, small, true}, {2, game, none, large, true}}, 1},
        {"titled off screen beats untitled on screen",
         {{1, game, none, large, true}, {2, game, game, small, false}},
         2},
        {"any case and place in the title counts",
         {{1, game, none, large, true}, {2, game, QStringLiteral("the HEARTHSTONE game"), small, true}},
         2},
        {"on screen beats larger off screen", {{1, game, game, large, false}, {2, game, game, small, true}}, 2},
        {"on screen stays before larger off screen", {{1, game, game, small, true}, {2, game, game, large, false}}, 1},
        {"larger wins", {{1, game, none, small, true}, {2, game, none, large, true}}, 2},
        {"larger stays", {{1, game, none, large, true}, {2, game, none, small, true}}, 1},
        {"earlier of equals stays", {{1, game, game, small, true}, {2, game, game, small, true}}, 1},
        {"equal area in another shape", {{1, game, game, small, true}, {2, game, game, tall, true}}, 1},
        {"others never come into it",
         {{1, QStringLiteral("Editor"), none, large, true}, {2, game, none, small, false}},
         2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const auto chosen = WindowCapture::chooseHearthstone(c.windows, game);
        ASSERT_TRUE(chosen);
        EXPECT_EQ(chosen->windowId, c.chosen);
    }
}

// The pairwise rule is an order (title, screen, area), so walking must come to its first maximum.
TEST(ChooseHearthstone, IsTheFirstMaximumOfAnyList) {
    std::mt19937 random(20240607);
    const auto pick = [&random](const auto&... choices) {
        const std::common_type_t<std::remove_cvref_t<decltype(choices)>...> all[] = {choices...};
        return all[random() % std::size(all)];
    };
    const auto key = [](const HSWindowInfo& window) {
        return std::tuple(window.title.toLower().contains(QStringLiteral("hearthstone")), window.onscreen,
                          window.bounds.width() * window.bounds.height());
    };
    for (int round = 0; round < 500; ++round) {
        std::vector<HSWindowInfo> windows(1 + random() % 6);
        for (std::size_t i = 0; i < windows.size(); ++i) {
            windows[i] = {static_cast<std::uint32_t>(i), QStringLiteral("Hearthstone"),
                          pick(QString(), QStringLiteral("HearthStone"), QStringLiteral("Update")),
                          QRectF(0, 0, pick(400.0, 800.0), pick(300.0, 600.0)), pick(true, false)};
        }
        const auto chosen = WindowCapture::chooseHearthstone(windows, QString());
        const auto expected = std::ranges::max_element(windows, {}, key);
        ASSERT_TRUE(chosen);
        ASSERT_EQ(*chosen, *expected) << "round " << round;
    }
}

TEST(FindHearthstone, LooksThroughBothListings) {
    FakeWindowServer server;
    EXPECT_FALSE(WindowCapture::findHearthstone(server, QStringLiteral("Hearthstone")));

    server.all = {described(8, QStringLiteral("Hearthstone"), QString(), 1920, 1080)};
    auto found = WindowCapture::findHearthstone(server, QStringLiteral("Hearthstone"));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->windowId, 8U);
    EXPECT_FALSE(found->onscreen);

    server.onScreen = {described(9, QStringLiteral("Hearthstone"), QString(), 400, 300)};
    found = WindowCapture::findHearthstone(server, QStringLiteral("Hearthstone"));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->windowId, 9U);
    EXPECT_TRUE(found->onscreen);
}

TEST(FindHearthstone, IgnoresTheGamesOwnFloatingAndSmallWindows) {
    FakeWindowServer server;
    WindowDescription floating = described(1, QStringLiteral("Hearthstone"), QStringLiteral("Hearthstone"), 800, 600);
    floating.layer = 3;
    server.onScreen = {floating, described(2, QStringLiteral("Hearthstone"), QStringLiteral("Hearthstone"), 399, 800),
                       described(3, QStringLiteral("Hearthstone"), QStringLiteral("Hearthstone"), 800, 299)};
    EXPECT_FALSE(WindowCapture::findHearthstone(server, QStringLiteral("Hearthstone")));
}

TEST(Capture, HandsOverThePictureAtOnePixelAPoint) {
    FakeWindowServer server;
    QImage picture = gradient(640, 480);
    picture.setDevicePixelRatio(2);
    server.images[4] = picture;
    const auto image = WindowCapture::capture(server, 4);
    ASSERT_TRUE(image);
    EXPECT_EQ(*image, gradient(640, 480));
    EXPECT_EQ(image->devicePixelRatio(), 1);
}

TEST(Capture, TranslatesEveryFailure) {
    FakeWindowServer server;
    server.images[1] = gradient(10, 10);
    server.images[2] = QImage();
    server.failNext(WindowGone{});
    server.failNext(CaptureDenied{});
    server.failNext(WindowServerFailed{"GetImage", 8});
    server.failNext(WindowServerLost{"GetGeometry"});
    for (int i = 0; i < 4; ++i) {
        const auto image = WindowCapture::capture(server, 1);
        ASSERT_FALSE(image);
        EXPECT_EQ(image.error().error, WindowCaptureError::captureFailed);
        ASSERT_TRUE(image.error().cause) << "what the server said must not get lost";
        EXPECT_EQ(image.error().cause->index(), std::size_t(i)) << "in the order in which the causes are declared";
    }
    EXPECT_EQ(captureError(server, 1), std::nullopt) << "a failure must not last";
    EXPECT_EQ(captureError(server, 2), WindowCaptureError::zeroSize);
    EXPECT_EQ(captureError(server, 3), WindowCaptureError::captureFailed);
}

TEST(Explanation, NamesTheCauseAndWhatCanBeDone) {
    struct Row {
        const char* why;
        CaptureFailure failure;
        CapturePermission permission;
        QStringList named;
    };

    constexpr auto granted = CapturePermission::granted;
    constexpr auto failed = WindowCaptureError::captureFailed;
    const QString settings = QStringLiteral("Screen Recording");
    const Row table[] = {
        {"none found", {WindowCaptureError::noWindow, {}}, granted, {QStringLiteral("--window-owner")}},
        {"none can be listed",
         {WindowCaptureError::noWindow, WindowServerFailed{"", 0}},
         granted,
         {QStringLiteral("desktop")}},
        {"no size", {WindowCaptureError::zeroSize, {}}, granted, {QStringLiteral("size"), QStringLiteral("larger")}},
        {"closed meanwhile", {failed, WindowGone{}}, granted, {QStringLiteral("closed")}},
        {"denied by the capture itself", {failed, CaptureDenied{}}, granted, {settings}},
        {"the system's own words",
         {failed, WindowServerFailed{"NameWindowPixmap", 8}},
         granted,
         {QStringLiteral("NameWindowPixmap"), QStringLiteral("error 8"), QStringLiteral("minimised")}},
        {"the desktop went away",
         {failed, WindowServerLost{"GetGeometry"}},
         granted,
         {QStringLiteral("desktop"), QStringLiteral("gone"), QStringLiteral("GetGeometry"), QStringLiteral("again")}},
        {"a cause that nobody told", {failed, {}}, granted, {localizedDescription(failed)}},
        {"denied, which looks like a failure",
         {failed, WindowServerFailed{"GetImage", 8}},
         CapturePermission::denied,
         {settings}},
        {"denied, which looks like no window",
         {WindowCaptureError::noWindow, {}},
         CapturePermission::denied,
         {settings}},
        {"not asked yet",
         {WindowCaptureError::noWindow, {}},
         CapturePermission::notAsked,
         {QStringLiteral("answer its question")}},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const QString text = explanation(row.failure, row.permission);
        for (const QString& part : row.named) {
            EXPECT_TRUE(text.contains(part)) << text.toStdString();
        }
    }
    EXPECT_FALSE(explanation({failed, WindowServerLost{"GetGeometry"}}, granted).contains(QStringLiteral("minimised")))
        << "nothing is the matter with the game";
}

TEST(Crop, RoundsOutwardsAndClips) {
    const double infinity = std::numeric_limits<double>::infinity();
    const double notANumber = std::numeric_limits<double>::quiet_NaN();

    struct Case {
        const char* why;
        QRectF frac;
        std::optional<QRect> expected; // in a picture of 100 x 50
    };

    const Case cases[] = {
        {"everything", {0, 0, 1, 1}, QRect(0, 0, 100, 50)},
        {"whole pixels stay", {0.25, 0.5, 0.5, 0.5}, QRect(25, 25, 50, 25)},
        {"the top is 0", {0, 0, 1, 0.2}, QRect(0, 0, 100, 10)},
        {"origin down, far edge up", {0.105, 0.11, 0.1, 0.1}, QRect(10, 5, 11, 6)},
        {"over the far edges", {0.9, 0.8, 0.5, 0.5}, QRect(90, 40, 10, 10)},
        {"over the near edges", {-0.5, -0.5, 0.6, 0.7}, QRect(0, 0, 10, 10)},
        {"over all edges", {-1, -1, 3, 3}, QRect(0, 0, 100, 50)},
        {"outside on the right", {1, 0, 0.5, 1}, std::nullopt},
        {"outside below", {0, 1.5, 1, 1}, std::nullopt},
        {"outside on the left", {-0.6, 0, 0.5, 1}, std::nullopt},
        {"outside above", {0, -2, 1, 1}, std::nullopt},
        {"3 pixels are enough", {0.5, 0.5, 0.03, 0.06}, QRect(50, 25, 3, 3)},
        {"2 pixels wide", {0.5, 0.5, 0.02, 0.5}, std::nullopt},
        {"2 pixels high", {0.5, 0.5, 0.5, 0.04}, std::nullopt},
        {"2.5 pixels wide come to 3", {0.5, 0.5, 0.025, 0.5}, QRect(50, 25, 3, 25)},
        {"2 pixels wide after clipping", {0.98, 0, 0.5, 1}, std::nullopt},
        {"no size", {0.5, 0.5, 0, 0}, std::nullopt},
        {"negative size", {0.8, 0.8, -0.5, -0.5}, QRect(30, 15, 50, 25)},
        {"negative width alone", {0.8, 0.2, -0.5, 0.5}, QRect(30, 10, 50, 25)},
        {"negative height alone", {0.2, 0.8, 0.5, -0.5}, QRect(20, 15, 50, 25)},
        {"negative, to the outside of the pixels", {0.805, 0.81, -0.1, -0.1}, QRect(70, 35, 11, 6)},
        {"negative, over the near edges", {0.1, 0.2, -0.5, -0.7}, QRect(0, 0, 10, 10)},
        {"negative, over the far edges", {1.4, 1.3, -0.5, -0.5}, QRect(90, 40, 10, 10)},
        {"negative, from the edge outwards", {0, 0, -0.5, -0.5}, std::nullopt},
        {"negative, 2 pixels wide", {0.52, 0.5, -0.02, -0.5}, std::nullopt},
        {"negative, without end", {1, 1, -infinity, -infinity}, QRect(0, 0, 100, 50)},
        {"far beyond any number of pixels", {-1e300, -1e300, 2e300, 2e300}, QRect(0, 0, 100, 50)},
        {"without end", {0, 0, infinity, infinity}, QRect(0, 0, 100, 50)},
        {"not a number", {notANumber, 0, 1, 1}, std::nullopt},
        {"size is not a number", {0, 0, 1, notANumber}, std::nullopt},
    };
    const QImage image = gradient(100, 50);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const auto piece = WindowCapture::crop(image, c.frac);
        ASSERT_EQ(piece.has_value(), c.expected.has_value());
        if (piece) {
            EXPECT_EQ(*piece, image.copy(*c.expected));
        }
    }
}

// x·W + w·W and (x + w)·W round differently; the first is the rule.
TEST(Crop, AddsTheFarEdgeAfterScaling) {
    const double x = 0.2;
    const double width = 0.4;
    int differing = 0;
    for (int size = 4; size < 4000; ++size) {
        const double far = x * size + width * size;
        differing += std::ceil(far) != std::ceil((x + width) * size);
        const auto piece = WindowCapture::crop(QImage(size, 4, QImage::Format_RGB32), {x, 0, width, 1});
        const int expected = static_cast<int>(std::ceil(far)) - static_cast<int>(std::floor(x * size));
        ASSERT_EQ(piece ? piece->width() : 0, expected > 2 ? expected : 0) << size;
    }
    EXPECT_GT(differing, 0) << "no size tells the two apart: choose other fractions";
}

TEST(Crop, TakesAnyPicture) {
    EXPECT_FALSE(WindowCapture::crop(QImage(), {0, 0, 1, 1}));
    EXPECT_FALSE(WindowCapture::crop(gradient(1, 1), {0, 0, 1, 1}));
    EXPECT_FALSE(WindowCapture::crop(gradient(2, 100), {0, 0, 1, 1}));
    EXPECT_TRUE(WindowCapture::crop(gradient(16384, 3), {0, 0, 1, 1}));
    QImage dense = gradient(100, 50);
    dense.setDevicePixelRatio(2);
    const auto piece = WindowCapture::crop(dense, {0, 0, 0.5, 0.5});
    ASSERT_TRUE(piece);
    EXPECT_EQ(piece->size(), QSize(50, 25));
    EXPECT_EQ(piece->devicePixelRatio(), 1);
}

} // namespace

} // namespace pelloran
