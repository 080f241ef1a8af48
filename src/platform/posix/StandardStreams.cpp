#include "platform/posix/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace pelloran {

void holdStandardStreams() {
    for (const int stream : std::array{STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0 && errno == EBADF) {
            // Takes the lowest free number, which is this one. For reading only, whichever it is: who prints an answer
            // that nobody gets has to hear of it.
            ::open("/dev/null", O_RDONLY);
        }
    }
}

} // namespace pelloran
