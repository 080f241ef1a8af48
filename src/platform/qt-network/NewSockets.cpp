#include "platform/qt-network/NewSockets.h"

#include "platform/qt-network/ReceivedBytes.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <optional>
#include <utility>

namespace pelloran {

namespace {

// Empty where there is none.
std::string localAddressOf(int descriptor) {
    sockaddr_storage address{};
    socklen_t length = sizeof(address);
    if (::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        return {};
    }
    return {reinterpret_cast<const char*>(&address), std::min<std::size_t>(length, sizeof(address))};
}

// Of what `descriptor` is now; `seenAs` is the descriptor under which it is known. Absent where it is no socket.
std::optional<SocketKey> keyOf(int descriptor, int seenAs) {
    struct stat found{};
    if (::fstat(descriptor, &found) != 0 || !S_ISSOCK(found.st_mode)) {
        return std::nullopt;
    }
    return SocketKey::of(found.st_ino, seenAs, found.st_ino == 0 ? localAddressOf(descriptor) : std::string());
}

// Also those that other threads open and close meanwhile.
void forEachSocket(const std::function<void(int descriptor, const SocketKey& key)>& each) {
    const int end = NewSockets::looksAt(::sysconf(_SC_OPEN_MAX));
    for (int descriptor = 0; descriptor < end; ++descriptor) {
        if (const auto key = keyOf(descriptor, descriptor)) {
            each(descriptor, *key);
        }
    }
}

bool isConnectedToTheNetwork(int descriptor) {
    sockaddr_storage peer{};
    socklen_t length = sizeof(peer);
    return ::getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &length) == 0 &&
           (peer.ss_family == AF_INET || peer.ss_family == AF_INET6);
}

} // namespace

SocketKey SocketKey::of(unsigned long long number, int descriptor, std::string localAddress) {
    if (number != 0) {
        return {.number = number, .descriptor = 0, .localAddress = {}}; // by whatever descriptor it is known
    }
    return {.number = 0, .descriptor = descriptor, .localAddress = std::move(localAddress)};
}

int NewSockets::looksAt(long limit) {
    // A program of ours has some tens of descriptors; more are not looked at.
    constexpr long mostDescriptors = 1024;
    return static_cast<int>(limit < 0 ? mostDescriptors : std::min(limit, mostDescriptors));
}

NewSockets::NewSockets() {
    forEachSocket([this](int, const SocketKey& key) { present.insert(key); });
}

qint64 NewSockets::mostReceived() const {
    qint64 most = 0;
    forEachSocket([&](int descriptor, const SocketKey& key) {
        if (!present.contains(key)) {
            most = std::max(most, receivedBytes(descriptor));
        }
    });
    return most;
}

void NewSockets::end() const {
    forEachSocket([this](int descriptor, const SocketKey& key) {
        if (present.contains(key)) {
            return;
        }
        // Whose it is may have closed it meanwhile, and another have its number: what is looked at is what is ended.
        const int same = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
        if (same >= 0 && keyOf(same, descriptor) == key && isConnectedToTheNetwork(same)) {
            ::shutdown(same, SHUT_RDWR); // it stays Qt's to close
        }
        if (same >= 0) {
            ::close(same);
        }
    });
}

} // namespace pelloran
