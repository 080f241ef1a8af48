#pragma once

#include <filesystem>
#include <system_error>

namespace pelloran {

// Returns when the content of a file, or the names in a folder, would survive a loss of power. No error where the file
// system has nothing to offer for it. Safe from any thread.
std::error_code syncToDisk(const std::filesystem::path& path);

} // namespace pelloran
