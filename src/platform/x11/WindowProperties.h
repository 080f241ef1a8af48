#pragma once

#include <QByteArrayView>
#include <QString>

#include <xcb/xcb_ewmh.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

// What a window says of itself. Any program may write properties of any type, format and length: what is not as it
// should be says nothing.
namespace pelloran::x11 {

// A property as the server hands it over.
struct Property {
    int format = 0; // bits of an item: 8, 16 or 32
    QByteArrayView bytes;
};

// Absent: the window has no such property.
struct WindowProperties {
    std::optional<Property> name;
    std::optional<Property> oldName; // the name before there was UTF-8
    std::optional<Property> windowClass;
    std::optional<Property> processId;
    std::optional<Property> types;
    std::optional<Property> states;
    std::optional<Property> desktop;
};

// The items of a list of numbers, in this machine's byte order. A last one that is not whole is none.
std::vector<std::uint32_t> numbersOf(const std::optional<Property>& property);
std::optional<std::uint32_t> firstNumberOf(const std::optional<Property>& property);

// Titles of old programs may be in any encoding, whatever type they claim: UTF-8 where it fits, else Latin-1.
std::optional<QString> titleOf(const WindowProperties& window);

// The window's class, or what its process is called where the class names what started it; `programOf` tells that of a
// process, where it can.
std::optional<QString> ownerOf(const WindowProperties& window,
                               const std::function<std::optional<QString>(std::uint32_t)>& programOf);

// Layers beside the normal one; only "not 0" counts, the numbers tell them apart in diagnostics.
enum Layer { desktopLayer = -1, normalLayer = 0, floatingLayer = 3, dockLayer = 20, popUpLayer = 101 };

Layer layerOf(const WindowProperties& window, bool bypassesManager, const xcb_ewmh_connection_t& atoms);

// As a number of a desktop.
inline constexpr std::uint32_t onAllDesktops = 0xffffffff;

// Not hidden, and on that desktop. A window that names no desktop is on all.
bool isOnScreen(const WindowProperties& window, const xcb_ewmh_connection_t& atoms, std::uint32_t currentDesktop);

} // namespace pelloran::x11
