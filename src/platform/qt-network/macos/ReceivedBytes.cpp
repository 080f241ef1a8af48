#include "platform/qt-network/ReceivedBytes.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace pelloran {

qint64 receivedBytes(int descriptor) {
    tcp_connection_info info{};
    socklen_t length = sizeof(info);
    return ::getsockopt(descriptor, IPPROTO_TCP, TCP_CONNECTION_INFO, &info, &length) == 0
               ? static_cast<qint64>(info.tcpi_rxbytes)
               : 0;
}

} // namespace pelloran
