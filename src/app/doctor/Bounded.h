#pragma once

#include <future>
#include <memory>
#include <thread>
#include <type_traits>
#include <utility>

namespace pelloran {

// Begins `work` on a thread of its own, which nobody waits for: work that hangs, on a disk or in a library, keeps
// nobody from going on. What it throws comes with the result. It may refer to nothing that goes before the program
// does.
template <typename Work>
auto beginApart(Work work) {
    std::packaged_task<std::invoke_result_t<Work>()> task(std::move(work));
    auto result = task.get_future();
    std::thread(std::move(task)).detach();
    return result;
}

} // namespace pelloran
