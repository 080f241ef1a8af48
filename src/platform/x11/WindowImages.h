#pragma once

#include "platform/WindowServer.h"
#include "platform/x11/XcbConnection.h"

#include <QImage>

#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <span>

namespace pelloran::x11 {

// Makes the server keep the pixels of a window apart from the screen, so that they are whole while others cover it.
// Ends with the object, or with the connection. Several programs may ask this for the same window.
class Redirection {
public:
    static std::expected<Redirection, Failure> begin(const XcbConnection& connection, xcb_window_t window);

    ~Redirection();
    Redirection(Redirection&& other) noexcept;
    Redirection& operator=(Redirection&& other) noexcept;

    xcb_window_t window() const { return redirected; }

private:
    Redirection(const XcbConnection& serverConnection, xcb_window_t window);

    const XcbConnection* connection;
    xcb_window_t redirected;
};

// Memory that the server writes pictures into, known to no one else: it is gone when both ends are, whatever happens.
class SharedMemory {
public:
    // Null when the server or the system cannot.
    static std::unique_ptr<SharedMemory> create(const XcbConnection& connection, std::size_t size);

    ~SharedMemory();
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;

    std::uint32_t segment() const { return id; }

    std::span<const std::byte> bytes() const { return {static_cast<const std::byte*>(memory), length}; }

private:
    SharedMemory(const XcbConnection& serverConnection, void* mapped, std::size_t size);

    const XcbConnection& connection;
    void* memory;
    std::size_t length;
    std::uint32_t id;
};

// Takes pictures of windows. What a picture costs beyond its pixels is kept for the window that was last taken, since
// the next one is of the same: its redirection, and the memory it is handed over in. Must not outlive the connection.
class WindowImages {
public:
    explicit WindowImages(const XcbConnection& serverConnection);

    // See WindowServer::image.
    std::expected<QImage, WindowImageError> take(xcb_window_t window);

private:
    struct Region;

    std::expected<QImage, Failure> takeOrFail(xcb_window_t window);
    std::expected<xcb_window_t, Failure> topLevelOf(xcb_window_t window) const;
    std::expected<void, Failure> redirect(xcb_window_t topLevel);
    std::expected<QImage, Failure> pixels(const Region& region);
    bool prepareSharedMemory(std::size_t size);

    const XcbConnection& connection;
    std::optional<Redirection> redirection;
    std::unique_ptr<SharedMemory> sharedMemory;
};

} // namespace pelloran::x11
