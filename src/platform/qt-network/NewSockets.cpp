#include "platform/qt-network/NewSockets.h"

#include "platform/qt-network/ReceivedBytes.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <functional>

namespace pelloran {

namespace {

// A program of ours has some tens of descriptors; more are not looked at.
constexpr long mostDescriptors = 1024;

// Also those that other threads open and close meanwhile.
void forEachSocket(const std::function<void(int descriptor, unsigned long long number)>& each) {
    const long end = std::min(::sysconf(_SC_OPEN_MAX), mostDescriptors);
    for (int descriptor = 0; descriptor < end; ++descriptor) {
        struct stat found{};
        if (::fstat(descriptor, &found) == 0 && S_ISSOCK(found.st_mode)) {
            each(descriptor, found.st_ino);
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

NewSockets::NewSockets() {
    forEachSocket([this](int, unsigned long long number) { present.insert(number); });
}

qint64 NewSockets::mostReceived() const {
    qint64 most = 0;
    forEachSocket([&](int descriptor, unsigned long long number) {
        if (!present.contains(number)) {
            most = std::max(most, receivedBytes(descriptor));
        }
    });
    return most;
}

void NewSockets::end() const {
    forEachSocket([this](int descriptor, unsigned long long number) {
        if (present.contains(number)) {
            return;
        }
        // Whose it is may have closed it meanwhile, and another have its number: what is looked at is what is ended.
        const int same = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
        struct stat found{};
        if (same >= 0 && ::fstat(same, &found) == 0 && found.st_ino == number && isConnectedToTheNetwork(same)) {
            ::shutdown(same, SHUT_RDWR); // it stays Qt's to close
        }
        if (same >= 0) {
            ::close(same);
        }
    });
}

} // namespace pelloran
