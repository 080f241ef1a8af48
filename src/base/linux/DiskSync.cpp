#include "base/DiskSync.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace pelloran {

std::error_code syncToDisk(const std::filesystem::path& path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return {errno, std::generic_category()};
    }
    const bool done = ::fsync(file) == 0 || errno == EINVAL || errno == ENOTSUP;
    const int error = errno;
    ::close(file);
    return done ? std::error_code() : std::error_code(error, std::generic_category());
}

} // namespace pelloran
