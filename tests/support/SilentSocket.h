#pragma once

#include <QFile>
#include <QString>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>

namespace pelloran::testing {

// Takes connections and never says a word.
class SilentSocket {
public:
    // A path, or a name after a zero byte. `room` connections are taken, and the next ones not even that.
    explicit SilentSocket(const QString& path, int room = 50) {
        const QByteArray bytes = QFile::encodeName(path);
        sockaddr_un name{};
        name.sun_family = AF_UNIX;
        EXPECT_LT(bytes.size(), qsizetype(sizeof name.sun_path));
        std::copy(bytes.begin(), bytes.end(), name.sun_path);
        const auto size = offsetof(sockaddr_un, sun_path) + static_cast<std::size_t>(bytes.size());
        if (::bind(listening, reinterpret_cast<const sockaddr*>(&name), static_cast<socklen_t>(size)) != 0 ||
            ::listen(listening, room) != 0) {
            ADD_FAILURE() << "no socket";
        }
    }

    ~SilentSocket() { end(); }

    SilentSocket(const SilentSocket&) = delete;
    SilentSocket& operator=(const SilentSocket&) = delete;

    // The next connection, whose other end is the caller's to close; it has to be there.
    int take() const { return ::accept(listening, nullptr, nullptr); }

    void end() {
        if (listening >= 0) {
            ::close(listening);
            listening = -1;
        }
    }

private:
    int listening = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

} // namespace pelloran::testing
