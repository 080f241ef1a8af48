#pragma once

#include <sys/resource.h>

#include <csignal>

namespace pelloran {

// While it lives, no file of this process can be written beyond `room` bytes, not even by the superuser: as on a full
// disk.
class FullDisk {
public:
    explicit FullDisk(rlim_t room = 0)
        : handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit full{room, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &full);
    }

    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);
    }

    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit before{};
    void (*handler)(int);
};

} // namespace pelloran
