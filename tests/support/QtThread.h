#pragma once

#include <QThread>

#include <functional>
#include <mutex>
#include <utility>

namespace pelloran::testing {

// A thread of Qt's, for what needs its event loop, that hands over at its end what it has done in a way that the thread
// sanitizer sees; QThread::create() and wait() do not.
class QtThread final : public QThread {
public:
    explicit QtThread(std::function<void()> itsWork)
        : work(std::move(itsWork)) {}

    ~QtThread() override { join(); }

    void join() {
        wait();
        const std::scoped_lock lock(mutex);
    }

private:
    void run() override {
        const std::scoped_lock lock(mutex);
        work();
    }

    std::mutex mutex;
    const std::function<void()> work;
};

} // namespace pelloran::testing
