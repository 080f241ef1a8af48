#pragma once

namespace pelloran::testing {

// Milliseconds, for what should be there in a moment; a silent portal is waited for half as long.
inline constexpr int desktopPatience = 20'000;

} // namespace pelloran::testing
