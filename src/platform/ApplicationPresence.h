#pragma once

#include <functional>
#include <memory>

namespace pelloran {

// The program as a whole in the eyes of a desktop that knows programs, not only windows: it has a place among the
// running ones, one of which is in front. On other desktops nothing of this happens. Main thread, with a
// QGuiApplication; one at a time.
class ApplicationPresence {
public:
    static std::unique_ptr<ApplicationPresence> create();

    virtual ~ApplicationPresence() = default;

    // Takes that place, and asks to be let run on while other programs are in front. Once, first of all, from the
    // running event loop: what the desktop does at a start is over then.
    virtual void begin() = 0;

    // Brings the program to the front, ahead of whichever is there, as far as the desktop lets it.
    virtual void activate() = 0;

    // The user has opened the program again while it runs; from the event loop, not before begin().
    std::function<void()> reopened;
};

} // namespace pelloran
