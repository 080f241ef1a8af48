#include "platform/freedesktop/SessionBus.h"

#include "base/Log.h"

#include <QDeadlineTimer>
#include <QFile>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <optional>

namespace pelloran::freedesktop {

namespace {

constexpr char addressVariable[] = "DBUS_SESSION_BUS_ADDRESS";

struct UnixAddress {
    sockaddr_un name{};
    socklen_t size = 0;
};

// `name` begins with a zero byte where it is none of the file system's.
std::optional<UnixAddress> unixAddress(const QByteArray& name) {
    UnixAddress address;
    address.name.sun_family = AF_UNIX;
    if (name.isEmpty() || name.size() >= std::ssize(address.name.sun_path)) {
        return std::nullopt;
    }
    std::ranges::copy(name, address.name.sun_path);
    // With the zero at the end where it is a path.
    const std::size_t length = static_cast<std::size_t>(name.size()) + (name.front() == '\0' ? 0 : 1);
    address.size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length);
    return address;
}

// Of one address such as "unix:path=/run/user/1000/bus,guid=0123"; absent for those of other kinds.
std::optional<UnixAddress> socketOf(const QByteArray& address) {
    constexpr QByteArrayView kind("unix:");
    if (!address.startsWith(kind)) {
        return std::nullopt;
    }
    for (const QByteArray& pair : address.sliced(kind.size()).split(',')) {
        const qsizetype equals = pair.indexOf('=');
        const QByteArray key = pair.left(equals);
        const QByteArray value = QByteArray::fromPercentEncoding(pair.sliced(equals + 1));
        if (key == "path") {
            return unixAddress(value);
        }
        if (key == "abstract") {
            return unixAddress('\0' + value);
        }
    }
    return std::nullopt;
}

class Socket {
public:
    Socket()
        : descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {}

    ~Socket() {
        if (descriptor >= 0) {
            ::close(descriptor);
        }
    }

    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    int number() const { return descriptor; }

private:
    const int descriptor;
};

// Of a message's header: a number that says what it tells, the type of that, and the text.
struct Field {
    char number;
    char type;
    QByteArrayView text;
};

// The first message on every connection, as it goes over the wire: asks the bus for a name.
QByteArray hello() {
    constexpr QByteArrayView bus("org.freedesktop.DBus");
    const auto pad = [](QByteArray& bytes, qsizetype to) {
        while (bytes.size() % to != 0) {
            bytes += '\0';
        }
    };
    const auto append = [](QByteArray& bytes, qsizetype small) {
        bytes += static_cast<char>(small);
        bytes.append(3, '\0');
    };
    QByteArray fields;
    for (const Field& field :
         {Field{1, 'o', "/org/freedesktop/DBus"}, Field{2, 's', bus}, Field{3, 's', "Hello"}, Field{6, 's', bus}}) {
        pad(fields, 8);
        fields += field.number;
        fields += QByteArrayView("\1").toByteArray() + field.type + '\0';
        append(fields, field.text.size());
        fields += field.text.toByteArray() + '\0';
    }
    QByteArray message("l\1\0\1", 4); // smallest byte first, a call, no flags, the protocol's version
    append(message, 0);               // of arguments
    append(message, 1);               // its serial number
    append(message, fields.size());
    message += fields;
    pad(message, 8);
    return message;
}

// What has been answered to `bytes`, or empty when it hung up; absent when it says nothing until the deadline.
std::optional<QByteArray> answerTo(const QByteArray& bytes, const Socket& bus, const QDeadlineTimer& deadline) {
    if (::send(bus.number(), bytes.constData(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL) < 0) {
        return errno == EAGAIN ? std::nullopt : std::optional(QByteArray());
    }
    pollfd readable{bus.number(), POLLIN, 0};
    int ready = 0;
    do {
        ready = ::poll(&readable, 1, static_cast<int>(deadline.remainingTime()));
    } while (ready < 0 && errno == EINTR);
    if (ready == 0) {
        return std::nullopt;
    }
    QByteArray answer(512, '\0');
    answer.resize(std::max<qsizetype>(::recv(bus.number(), answer.data(), 512, 0), 0));
    return answer;
}

// Any answer will do, also a refusal and a hanging up: the bus library knows what to do with them. One that lets
// programs in has to answer what they say first, too.
bool answers(const Socket& bus, std::chrono::milliseconds patience) {
    const QDeadlineTimer deadline(patience);
    const QByteArray greeting = QByteArray("\0AUTH EXTERNAL ", 15) + QByteArray::number(::getuid()).toHex() + "\r\n";
    const auto greeted = answerTo(greeting, bus, deadline);
    if (!greeted || !greeted->startsWith("OK ")) {
        return greeted.has_value();
    }
    return answerTo("BEGIN\r\n" + hello(), bus, deadline).has_value();
}

// As the bus library looks for it.
QByteArray sessionBusAddress() {
    if (!qEnvironmentVariableIsEmpty(addressVariable)) {
        return qgetenv(addressVariable);
    }
    const QByteArray path = qgetenv("XDG_RUNTIME_DIR") + "/bus";
    return QFile::exists(QFile::decodeName(path)) ? "unix:path=" + path.toPercentEncoding("/") : QByteArray();
}

} // namespace

bool isSilentBus(const QByteArray& addresses, std::chrono::milliseconds patience) {
    for (const QByteArray& address : addresses.split(';')) {
        const auto target = socketOf(address);
        if (!target) {
            continue;
        }
        const Socket bus;
        if (::connect(bus.number(), reinterpret_cast<const sockaddr*>(&target->name), target->size) == 0) {
            return !answers(bus, patience);
        }
        if (errno == EAGAIN) {
            return true; // so many wait already that no more are let in
        }
    }
    return false;
}

void avoidSilentSessionBus(std::chrono::milliseconds patience) {
    if (isSilentBus(sessionBusAddress(), patience)) {
        log(QStringLiteral("the session bus does not answer, so Pelloran does without it: there may be no icon in the "
                           "status area, and the desktop's wishes for motion and colours are not known"));
        qputenv(addressVariable, "disabled:"); // what no bus library knows how to reach
    }
}

} // namespace pelloran::freedesktop
