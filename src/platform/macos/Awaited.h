#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace pelloran::macos {

// An answer that comes on another thread, or never. Who asks waits for so long and no longer; who answers keeps a copy
// of this and has all that it needs with it, so an answer that comes too late falls on nothing that is gone.
template <typename Answer>
class Awaited {
public:
    // Of several, the first counts. Any thread.
    void deliver(Answer answer) const {
        {
            const std::scoped_lock lock(shared->mutex);
            if (shared->answer) {
                return;
            }
            shared->answer.emplace(std::move(answer));
        }
        shared->delivered.notify_all();
    }

    // Absent when there was none in time. Once.
    std::optional<Answer> wait(std::chrono::milliseconds patience) const {
        std::unique_lock lock(shared->mutex);
        shared->delivered.wait_for(lock, patience, [this] { return shared->answer.has_value(); });
        return std::move(shared->answer);
    }

private:
    struct Shared {
        std::mutex mutex;
        std::condition_variable delivered;
        std::optional<Answer> answer;
    };

    std::shared_ptr<Shared> shared = std::make_shared<Shared>();
};

} // namespace pelloran::macos
