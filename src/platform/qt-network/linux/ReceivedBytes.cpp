#include "platform/qt-network/ReceivedBytes.h"

#include <linux/tcp.h> // the C library's own tcp.h ends before the count
#include <netinet/in.h>
#include <sys/socket.h>

namespace pelloran {

qint64 receivedBytes(int descriptor) {
    tcp_info info{};
    socklen_t length = sizeof(info);
    return ::getsockopt(descriptor, IPPROTO_TCP, TCP_INFO, &info, &length) == 0
               ? static_cast<qint64>(info.tcpi_bytes_received)
               : 0;
}

} // namespace pelloran
