#include "platform/x11/WindowProperties.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <vector>

namespace pelloran::x11 {

namespace {

constexpr xcb_atom_t normalType = 11;
constexpr xcb_atom_t dockType = 12;
constexpr xcb_atom_t unknownType = 13;
constexpr xcb_atom_t hiddenState = 14;

xcb_ewmh_connection_t someAtoms() {
    xcb_ewmh_connection_t atoms{};
    atoms._NET_WM_WINDOW_TYPE_NORMAL = normalType;
    atoms._NET_WM_WINDOW_TYPE_DOCK = dockType;
    atoms._NET_WM_STATE_HIDDEN = hiddenState;
    return atoms;
}

// As items of 32 bits.
QByteArray bytesOf(std::initializer_list<std::uint32_t> numbers) {
    QByteArray bytes;
    for (const std::uint32_t number : numbers) {
        bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
    }
    return bytes;
}

TEST(WindowProperties, NumbersAreWholeItemsOf32Bits) {
    struct Case {
        const char* why;
        std::optional<int> format;
        QByteArray bytes;
        std::vector<std::uint32_t> expected;
    };

    const Case cases[] = {
        {"no such property", {}, {}, {}},      {"a list", 32, bytesOf({1, 0xffffffff}), {1, 0xffffffff}},
        {"an empty list", 32, {}, {}},         {"an item that is cut off", 32, bytesOf({7, 8}).chopped(1), {7}},
        {"less than one item", 32, "abc", {}}, {"items of 16 bits", 16, bytesOf({1}), {}},
        {"bytes", 8, bytesOf({1}), {}},        {"a format that there is none of", 0, bytesOf({1}), {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const auto property = c.format ? std::optional(Property{*c.format, c.bytes}) : std::nullopt;
        EXPECT_EQ(numbersOf(property), c.expected);
        EXPECT_EQ(firstNumberOf(property), c.expected.empty() ? std::nullopt : std::optional(c.expected.front()));
    }
    // A reply's bytes may begin anywhere.
    const QByteArray shifted = 'x' + bytesOf({0x01020304});
    EXPECT_EQ(firstNumberOf(Property{32, QByteArrayView(shifted).sliced(1)}), 0x01020304U);
}

TEST(WindowProperties, TitlesOfTheWrongFormatAreEmpty) {
    EXPECT_EQ(titleOf({}), std::nullopt);
    WindowProperties window;
    window.oldName = Property{8, "caf\xE9"};
    EXPECT_EQ(titleOf(window), QStringLiteral("caf\u00E9")) << "what is no UTF-8 is Latin-1";
    window.name = Property{32, "Hearthstone"};
    EXPECT_EQ(titleOf(window), QString()) << "the new name counts, whatever it is";
    window.name = Property{8, "\xE7\x82"};
    EXPECT_TRUE(titleOf(window)->isValidUtf16()) << "the beginning of a character";
}

TEST(WindowProperties, TheOwnerIsTheClassOrTheProgramBehindALauncher) {
    struct Case {
        const char* why;
        QByteArray windowClass;
        int format;
        std::optional<QString> expected;
        std::optional<std::uint32_t> asked;
    };

    const std::uint32_t process = 77;
    const Case cases[] = {
        {"instance and class", QByteArrayLiteral("game\0Game\0"), 8, QStringLiteral("Game"), {}},
        {"the class not ended", QByteArrayLiteral("game\0Game"), 8, QStringLiteral("Game"), {}},
        {"an empty class", QByteArrayLiteral("game\0\0"), 8, QString(), {}},
        {"one text alone", "Game", 8, std::nullopt, {}},
        {"nothing", "", 8, std::nullopt, {}},
        {"texts of another format", QByteArrayLiteral("game\0Game\0"), 32, std::nullopt, {}},
        {"a launcher", QByteArrayLiteral("x\0steam_app_1\0"), 8, QStringLiteral("Hearthstone"), process},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const QByteArray processId = bytesOf({process, 5});
        WindowProperties window;
        window.windowClass = Property{c.format, c.windowClass};
        window.processId = Property{32, processId};
        std::optional<std::uint32_t> asked;
        const auto owner = ownerOf(window, [&](std::uint32_t number) {
            asked = number;
            return QStringLiteral("Hearthstone");
        });
        EXPECT_EQ(owner, c.expected);
        EXPECT_EQ(asked, c.asked);
    }
    WindowProperties launcher;
    const QByteArray windowClass = QByteArrayLiteral("x\0wine\0");
    launcher.windowClass = Property{8, windowClass};
    const auto unknown = [](std::uint32_t) -> std::optional<QString> { return std::nullopt; };
    EXPECT_EQ(ownerOf(launcher, unknown), QStringLiteral("wine")) << "no process is named";
    launcher.processId = Property{16, "ab"};
    EXPECT_EQ(ownerOf(launcher, unknown), QStringLiteral("wine")) << "a number of another format";
    EXPECT_EQ(ownerOf({}, unknown), std::nullopt);
}

TEST(WindowProperties, TheLayerIsThatOfTheFirstKnownType) {
    struct Case {
        const char* why;
        int format;
        QByteArray types;
        bool bypasses;
        Layer expected;
    };

    const Case cases[] = {
        {"a known type", 32, bytesOf({dockType}), false, dockLayer},
        {"unknown ones before it", 32, bytesOf({unknownType, 0, normalType, dockType}), true, normalLayer},
        {"unknown ones alone", 32, bytesOf({unknownType}), false, normalLayer},
        {"unknown ones alone, past the manager", 32, bytesOf({unknownType}), true, popUpLayer},
        {"a list of another format", 8, bytesOf({dockType}), false, normalLayer},
        {"an empty list", 32, {}, true, popUpLayer},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        WindowProperties window;
        window.types = Property{c.format, c.types};
        EXPECT_EQ(layerOf(window, c.bypasses, someAtoms()), c.expected);
    }
}

TEST(WindowProperties, AWindowIsOnItsDesktopUnlessHidden) {
    struct Case {
        const char* why;
        QByteArray states;
        std::optional<QByteArray> desktop;
        std::uint32_t current;
        bool expected;
    };

    const Case cases[] = {
        {"here", {}, bytesOf({2}), 2, true},
        {"on another desktop", {}, bytesOf({2}), 1, false},
        {"on all of them", {}, bytesOf({onAllDesktops}), 1, true},
        {"it names none", {}, {}, 1, true},
        {"no number at all", {}, QByteArray("ab"), 1, true},
        {"nobody knows which is current", {}, bytesOf({2}), onAllDesktops, true},
        {"hidden", bytesOf({unknownType, hiddenState}), bytesOf({2}), 2, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        WindowProperties window;
        window.states = Property{32, c.states};
        if (c.desktop) {
            window.desktop = Property{32, *c.desktop};
        }
        EXPECT_EQ(isOnScreen(window, someAtoms(), c.current), c.expected);
    }
}

} // namespace

} // namespace pelloran::x11
