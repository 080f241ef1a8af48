#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

namespace pelloran::testing {

// While it lives, the process can open nothing more, or at most `spare` files at once.
class NoDescriptors {
public:
    explicit NoDescriptors(rlim_t spare = 0) {
        EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
        const int lowestFree = ::dup(STDERR_FILENO);
        EXPECT_GE(lowestFree, 0);
        ::close(lowestFree);
        const rlimit few{static_cast<rlim_t>(lowestFree) + spare, before.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    }

    ~NoDescriptors() { EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0); }

    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

private:
    rlimit before{};
};

} // namespace pelloran::testing
