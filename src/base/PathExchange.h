#pragma once

#include <filesystem>
#include <system_error>

namespace pelloran {

// Lets two existing files or folders of one file system change places, in one step that nobody sees half done. An error
// where the system or the file system has no such step, and then nothing has changed. Safe from any thread.
std::error_code exchangePaths(const std::filesystem::path& a, const std::filesystem::path& b);

} // namespace pelloran
