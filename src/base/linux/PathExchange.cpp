#include "base/PathExchange.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>

namespace pelloran {

std::error_code exchangePaths(const std::filesystem::path& a, const std::filesystem::path& b) {
    const bool done = ::renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE) == 0;
    return done ? std::error_code() : std::error_code(errno, std::generic_category());
}

} // namespace pelloran
