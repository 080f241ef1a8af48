// Any properties of windows on an X11 desktop, and any bytes as pixels of one. What is told of the windows has to be
// what a plain look at the bytes finds, and of such windows the game's has to be the one that is chosen.

#include "fuzz/Bytes.h"
#include "fuzz/Require.h"
#include "platform/x11/PixelLayout.h"
#include "platform/x11/WindowOwner.h"
#include "platform/x11/WindowProperties.h"
#include "recognition/WindowCapture.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

using namespace pelloran;
using fuzzing::Bytes;
using fuzzing::require;

// Each atom a number of its own, so that bytes name them easily.
const xcb_ewmh_connection_t& atoms() {
    static const xcb_ewmh_connection_t numbered = [] {
        xcb_ewmh_connection_t made{};
        std::uint32_t next = 1;
        for (xcb_atom_t* atom :
             {&made._NET_WM_WINDOW_TYPE_NORMAL, &made._NET_WM_WINDOW_TYPE_DIALOG, &made._NET_WM_WINDOW_TYPE_DESKTOP,
              &made._NET_WM_WINDOW_TYPE_DOCK, &made._NET_WM_WINDOW_TYPE_TOOLBAR, &made._NET_WM_WINDOW_TYPE_UTILITY,
              &made._NET_WM_WINDOW_TYPE_SPLASH, &made._NET_WM_WINDOW_TYPE_MENU, &made._NET_WM_WINDOW_TYPE_DROPDOWN_MENU,
              &made._NET_WM_WINDOW_TYPE_POPUP_MENU, &made._NET_WM_WINDOW_TYPE_TOOLTIP,
              &made._NET_WM_WINDOW_TYPE_NOTIFICATION, &made._NET_WM_WINDOW_TYPE_COMBO, &made._NET_WM_WINDOW_TYPE_DND,
              &made._NET_WM_STATE_HIDDEN}) {
            *atom = next++;
        }
        return made;
    }();
    return numbered;
}

constexpr std::uint32_t dialogAtom = 2;
constexpr std::uint32_t lastTypeAtom = 14;
constexpr std::uint32_t hiddenAtom = 15;

// What games, their launchers and others call themselves.
constexpr std::array<const char*, 8> words{"Hearthstone",  "hearthstone.exe", "steam_app_1", "explorer.exe",
                                           "\xE7\x82\x89", "\xE9\xA1",        "\xFC\xFF",    "WINE"};

// Its bytes outlive it in `kept`.
std::optional<x11::Property> propertyFrom(Bytes& bytes, std::vector<QByteArray>& kept) {
    const int what = bytes.take();
    if (what % 8 == 0) {
        return std::nullopt;
    }
    constexpr std::array formats{8, 8, 8, 32, 32, 16, 0, 255};
    QByteArray text;
    for (int parts = bytes.take() % 8; parts > 0; --parts) {
        const int part = bytes.take();
        if (part < 64) {
            text += words[std::size_t(part) % words.size()];
        } else if (part < 128) {
            text += '\0';
        } else if (part < 192) {
            const std::uint32_t number = part & 1 ? std::uint32_t(bytes.take() % 18) : 0xffffffff;
            text.append(reinterpret_cast<const char*>(&number), sizeof number);
        } else {
            text += bytes.takeBytes(std::size_t(part % 16));
        }
    }
    kept.push_back(text);
    return x11::Property{formats[std::size_t(what / 8) % formats.size()], kept.back()};
}

// A plain second opinion.
std::vector<std::uint32_t> plainNumbers(const std::optional<x11::Property>& property) {
    std::vector<std::uint32_t> numbers;
    for (qsizetype at = 0; property && property->format == 32 && at + 4 <= property->bytes.size(); at += 4) {
        std::uint32_t number = 0;
        std::memcpy(&number, property->bytes.data() + at, sizeof number);
        numbers.push_back(number);
    }
    return numbers;
}

void checkOwner(const x11::WindowProperties& window, const QByteArray& commandLine, const QByteArray& shortName) {
    std::vector<std::uint32_t> asked;
    const QString program = x11::programName(commandLine, shortName);
    require(!program.contains(u'/') && program.isValidUtf16());
    const auto owner = x11::ownerOf(window, [&](std::uint32_t process) {
        asked.push_back(process);
        return program.isEmpty() ? std::nullopt : std::optional(program);
    });
    const bool hasClass =
        window.windowClass && window.windowClass->format == 8 && window.windowClass->bytes.toByteArray().contains('\0');
    require(owner.has_value() == hasClass);
    const auto processes = plainNumbers(window.processId);
    if (hasClass) {
        const QByteArray name = window.windowClass->bytes.toByteArray().split('\0').at(1);
        const QString said = name.isValidUtf8() ? QString::fromUtf8(name) : QString::fromLatin1(name);
        const bool isProgram = x11::isLauncher(said) && !processes.empty() && !program.isEmpty();
        require(owner == (isProgram ? program : said));
    }
    require(asked.empty() || (asked.size() == 1 && asked.front() == processes.front()));
}

void checkLayer(const x11::WindowProperties& window, bool bypasses) {
    const x11::Layer layer = x11::layerOf(window, bypasses, atoms());
    for (const std::uint32_t type : plainNumbers(window.types)) {
        if (type >= 1 && type <= lastTypeAtom) {
            require((layer == x11::normalLayer) == (type <= dialogAtom));
            return;
        }
    }
    require(layer == (bypasses ? x11::popUpLayer : x11::normalLayer));
}

void checkOnScreen(const x11::WindowProperties& window, std::uint32_t current) {
    const auto states = plainNumbers(window.states);
    const auto desktops = plainNumbers(window.desktop);
    const bool isHidden = std::ranges::find(states, hiddenAtom) != states.end();
    const bool isHere = desktops.empty() || desktops.front() == x11::onAllDesktops || current == x11::onAllDesktops ||
                        desktops.front() == current;
    require(x11::isOnScreen(window, atoms(), current) == (!isHidden && isHere));
}

WindowDescription windowFrom(Bytes& bytes) {
    std::vector<QByteArray> kept;
    kept.reserve(7);
    x11::WindowProperties window;
    for (auto* property : {&window.name, &window.oldName, &window.windowClass, &window.processId, &window.types,
                           &window.states, &window.desktop}) {
        *property = propertyFrom(bytes, kept);
    }
    const int how = bytes.take();
    const QByteArray commandLine = how & 2 && !kept.empty() ? kept.front() : bytes.takeBytes(std::size_t(how / 8));
    checkOwner(window, commandLine, how & 4 && !kept.empty() ? kept.back() : QByteArray());
    checkLayer(window, how & 1);
    checkOnScreen(window, std::uint32_t(how) % 3 == 0 ? x11::onAllDesktops : std::uint32_t(how) % 16);
    const auto title = x11::titleOf(window);
    require(title.has_value() == (window.name || window.oldName));
    require(!title || title->isValidUtf16());
    // Places and sizes are 16 bits wide on the way.
    return {
        .number = bytes.take(),
        .ownerName = x11::ownerOf(window, [](std::uint32_t) { return std::nullopt; }),
        .name = title,
        .layer = x11::layerOf(window, how & 1, atoms()),
        .bounds = WindowBounds{.x = std::int16_t(bytes.takeNumber(2)),
                               .y = std::int16_t(bytes.takeNumber(2)),
                               .width = std::uint16_t(bytes.takeNumber(2)),
                               .height = std::uint16_t(bytes.takeNumber(2))},
    };
}

void choose(Bytes& bytes) {
    std::vector<WindowDescription> descriptions;
    for (int count = 1 + bytes.take() % 4; count > 0; --count) {
        descriptions.push_back(windowFrom(bytes));
    }
    const auto windows = WindowCapture::parse(descriptions, true);
    require(windows.size() <= descriptions.size());
    const auto names = [](const HSWindowInfo& window) {
        return (window.owner + u' ' + window.title).contains(u"hearthstone", Qt::CaseInsensitive);
    };
    const auto chosen = WindowCapture::chooseHearthstone(windows, {});
    require(chosen.has_value() == std::ranges::any_of(windows, names));
    if (chosen) {
        require(names(*chosen) && std::ranges::find(windows, *chosen) != windows.end());
        require(chosen->bounds.width() >= 400 && chosen->bounds.height() >= 300);
    }
    (void)WindowCapture::chooseHearthstone(windows, QString::fromUtf8(bytes.takeBytes(std::size_t(bytes.take()))));
}

// A pixel as the masks of the layout say it, without haste.
QRgb plainPixel(const QByteArray& pixels, int x, int y, int width, const x11::PixelLayout& layout) {
    const int length = layout.bitsPerPixel / 8;
    const auto at = qsizetype(layout.bytesPerLine(width)) * y + qsizetype{length} * x;
    QByteArray pixel = pixels.sliced(at, length);
    if (!layout.mostSignificantByteFirst) {
        std::ranges::reverse(pixel);
    }
    const std::uint32_t number = pixel.toHex().toUInt(nullptr, 16);
    const auto channel = [&](std::uint32_t mask) {
        return int(std::lround(255.0 * (number & mask) / mask)); // as well as with both shifted
    };
    return qRgb(channel(layout.redMask), channel(layout.greenMask), channel(layout.blueMask));
}

void readPixels(Bytes& bytes) {
    x11::PixelLayout layout;
    layout.bitsPerPixel = bytes.take();
    layout.linePadding = bytes.take();
    const int how = bytes.take();
    layout.mostSignificantByteFirst = how & 1;
    if (how & 2) {
        layout.redMask = std::uint32_t(bytes.takeNumber(4));
        layout.greenMask = std::uint32_t(bytes.takeNumber(4));
        layout.blueMask = std::uint32_t(bytes.takeNumber(4));
    }
    const QSize size(bytes.take() % 40 - 1, how & 4 ? bytes.take() % 40 - 1 : 65535);
    QByteArray pixels = bytes.rest();
    if (how & 8) { // enough, beginning with what is there
        pixels.resize(std::max<qsizetype>(pixels.size(), 40 * 40 * 4 + 40 * 32), '\x5A');
    }
    const QImage image =
        x11::toImage(std::as_bytes(std::span(pixels.constData(), std::size_t(pixels.size()))), size, layout);
    require(image.isNull() || (image.size() == size && image.format() == QImage::Format_RGB32));
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); x += 1 + image.width() / 8) {
            require(image.pixel(x, y) == plainPixel(pixels, x, y, size.width(), layout));
        }
    }
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    if (bytes.take() % 4 == 0) {
        readPixels(bytes);
    } else {
        choose(bytes);
    }
    return 0;
}
