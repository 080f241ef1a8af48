#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

namespace pelloran::testing {

// One of those that keep a contract: a name for its tests, and how to make what the contract is checked on. A contract
// is a header with a table of tests over these; each program of tests instantiates it, once, with the back ends that
// it links and with the fake. So what a test with the fake believes of a seam is what the back ends do.
template <typename Made>
struct BackEnd {
    std::string name;
    std::function<Made()> make;

    friend void PrintTo(const BackEnd& backEnd, std::ostream* out) { *out << backEnd.name; }
};

inline constexpr auto nameOfBackEnd = [](const auto& info) { return info.param.name; };

} // namespace pelloran::testing
