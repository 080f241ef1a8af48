#pragma once

#include <cstdlib>

namespace pelloran::fuzzing {

// Stops the fuzzer at the input that breaks a promise.
inline void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

} // namespace pelloran::fuzzing
