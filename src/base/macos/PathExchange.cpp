#include "base/PathExchange.h"

#include <stdio.h>

#include <cerrno>

namespace pelloran {

std::error_code exchangePaths(const std::filesystem::path& a, const std::filesystem::path& b) {
    const bool done = ::renamex_np(a.c_str(), b.c_str(), RENAME_SWAP) == 0;
    return done ? std::error_code() : std::error_code(errno, std::generic_category());
}

} // namespace pelloran
