#pragma once

#include "platform/WindowServer.h"
#include "tests/soak/Season.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

// The game's window, as pictures in a folder: painting them costs a hundred times what looking at them does.
namespace pelloran::soak {

// Each scene is painted twice, with the light as it is at two moments: on a real screen no two looks are the same.
constexpr int frames = 2;

QString fileOf(const QString& folder, const Scene& scene, int frame);

// Paints what is missing in `folder`. False when it cannot be written. Needs an application with fonts.
bool paint(const Season& season, const QString& folder);

// What is on screen, told on one thread and seen from another.
class Screen {
public:
    explicit Screen(QString pictureFolder)
        : folder(std::move(pictureFolder)) {}

    // In a window of another number.
    void openWindow(const Scene& scene);

    // In the window that is there.
    void show(const Scene& scene);

    void closeWindow();

    bool hasWindow() const;

    // A window server that shows it, with the windows of other programs around it. It ends before the screen.
    std::unique_ptr<WindowServer> server();

private:
    class Server;

    struct Window {
        std::uint32_t number;
        Scene scene;
    };

    const QString folder;
    mutable std::mutex mutex;
    std::optional<Window> window;
    std::uint32_t lastNumber = 100;
    int looks = 0;
};

} // namespace pelloran::soak
