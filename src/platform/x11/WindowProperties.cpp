#include "platform/x11/WindowProperties.h"

#include "platform/x11/WindowOwner.h"

#include <QByteArrayList>
#include <QStringDecoder>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

namespace pelloran::x11 {

namespace {

QByteArrayView textOf(const Property& property) {
    return property.format == 8 ? property.bytes : QByteArrayView();
}

QString decoded(QByteArrayView bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(bytes);
    return decoder.hasError() ? QString::fromLatin1(bytes) : text;
}

} // namespace

std::vector<std::uint32_t> numbersOf(const std::optional<Property>& property) {
    if (!property || property->format != 32) {
        return {};
    }
    std::vector<std::uint32_t> numbers(static_cast<std::size_t>(property->bytes.size()) / sizeof(std::uint32_t));
    if (!numbers.empty()) {
        std::memcpy(numbers.data(), property->bytes.data(), numbers.size() * sizeof(std::uint32_t));
    }
    return numbers;
}

std::optional<std::uint32_t> firstNumberOf(const std::optional<Property>& property) {
    const std::vector<std::uint32_t> numbers = numbersOf(property);
    return numbers.empty() ? std::nullopt : std::optional(numbers.front());
}

std::optional<QString> titleOf(const WindowProperties& window) {
    if (window.name) {
        return QString::fromUtf8(textOf(*window.name));
    }
    return window.oldName ? std::optional(decoded(textOf(*window.oldName))) : std::nullopt;
}

std::optional<QString> ownerOf(const WindowProperties& window,
                               const std::function<std::optional<QString>(std::uint32_t)>& programOf) {
    if (!window.windowClass) {
        return std::nullopt;
    }
    // Instance and class, each ended by a NUL.
    const QByteArrayList names = textOf(*window.windowClass).toByteArray().split('\0');
    if (names.size() < 2) {
        return std::nullopt;
    }
    QString windowClass = decoded(names[1]);
    if (isLauncher(windowClass)) {
        if (const auto processId = firstNumberOf(window.processId)) {
            return programOf(*processId).value_or(windowClass);
        }
    }
    return windowClass;
}

Layer layerOf(const WindowProperties& window, bool bypassesManager, const xcb_ewmh_connection_t& atoms) {
    const std::pair<xcb_atom_t, Layer> layers[] = {
        {atoms._NET_WM_WINDOW_TYPE_NORMAL, normalLayer},       {atoms._NET_WM_WINDOW_TYPE_DIALOG, normalLayer},
        {atoms._NET_WM_WINDOW_TYPE_DESKTOP, desktopLayer},     {atoms._NET_WM_WINDOW_TYPE_DOCK, dockLayer},
        {atoms._NET_WM_WINDOW_TYPE_TOOLBAR, floatingLayer},    {atoms._NET_WM_WINDOW_TYPE_UTILITY, floatingLayer},
        {atoms._NET_WM_WINDOW_TYPE_SPLASH, floatingLayer},     {atoms._NET_WM_WINDOW_TYPE_MENU, popUpLayer},
        {atoms._NET_WM_WINDOW_TYPE_DROPDOWN_MENU, popUpLayer}, {atoms._NET_WM_WINDOW_TYPE_POPUP_MENU, popUpLayer},
        {atoms._NET_WM_WINDOW_TYPE_TOOLTIP, popUpLayer},       {atoms._NET_WM_WINDOW_TYPE_NOTIFICATION, popUpLayer},
        {atoms._NET_WM_WINDOW_TYPE_COMBO, popUpLayer},         {atoms._NET_WM_WINDOW_TYPE_DND, popUpLayer},
    };
    // A window names its types in the order of its preference; those we do not know are passed over.
    for (const std::uint32_t type : numbersOf(window.types)) {
        const auto* const known = std::ranges::find(layers, type, &std::pair<xcb_atom_t, Layer>::first);
        if (known != std::end(layers)) {
            return known->second;
        }
    }
    return bypassesManager ? popUpLayer : normalLayer;
}

bool isOnScreen(const WindowProperties& window, const xcb_ewmh_connection_t& atoms, std::uint32_t currentDesktop) {
    const std::vector<std::uint32_t> states = numbersOf(window.states);
    if (std::ranges::find(states, atoms._NET_WM_STATE_HIDDEN) != states.end()) {
        return false;
    }
    const std::uint32_t own = firstNumberOf(window.desktop).value_or(onAllDesktops);
    return own == onAllDesktops || currentDesktop == onAllDesktops || own == currentDesktop;
}

} // namespace pelloran::x11
