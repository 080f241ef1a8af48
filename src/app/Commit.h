#pragma once

#include <string_view>

namespace pelloran {

// The commit that the program was built from: twelve characters of its hash, and " and changes" where the checkout had
// some that were not committed. Empty where nobody knows. Each build writes the source anew (cmake/WriteCommit.cmake).
std::string_view commit();

} // namespace pelloran
