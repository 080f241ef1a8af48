#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

// Makes a mistake of the kind that hardening is for, built with the options of the programs: it has to be stopped.
namespace {

// Sizes that the compiler cannot know.
volatile std::size_t room = 16;
volatile std::size_t written = 80;
volatile char seen = 0;

// The C library is asked to write more than was allocated.
void overrunOfAllocation() {
    char* block = static_cast<char*>(__builtin_malloc(room));
    std::memset(block, 'x', written);
    seen = block[room - 1]; // nothing that allocates: the C library would find out by itself
}

// A loop of our own leaves its array, towards where the function returns to.
[[gnu::noinline]] void overrunOfStack() {
    char array[16] = {};
    char* volatile first = array;
    char* at = first;
    for (std::size_t i = 0; i < written; ++i) {
        at[i] = 'x';
    }
    seen = array[1];
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view kind = argc == 2 ? argv[1] : "";
    if (kind != "allocation" && kind != "stack") {
        std::fputs("usage: overruns allocation|stack\n", stderr);
        return 2;
    }
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    const pid_t child = fork();
    if (child == 0) {
        kind == "stack" ? overrunOfStack() : overrunOfAllocation();
        _exit(0);
    }
    int status = 0;
    const bool stopped = waitpid(child, &status, 0) == child && WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
    std::puts(stopped ? "stopped" : "went on, or ended in another way");
    return stopped ? 0 : 1;
}
