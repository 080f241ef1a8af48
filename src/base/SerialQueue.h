#pragma once

#include <QString>

#include <functional>
#include <memory>

class QObject;

namespace pelloran {

// Runs slow work away from the thread that made it, one piece after the other, in the order submitted. Everything here
// is called on the thread that made the queue, and results come back to it.
class SerialQueue {
public:
    // A queue with a thread of its own, which bears `name` in debuggers.
    static std::unique_ptr<SerialQueue> create(const QString& name);

    // Waits for the piece under way, which long waits can shorten by asking QThread::isInterruptionRequested(); pieces
    // that have not begun never run, and nothing is delivered any more.
    virtual ~SerialQueue() = default;

    // Runs `work` on the queue's thread, then `done` back on the thread of the queue's maker, from its event loop. When
    // `receiver` has been deleted by then, `done` never runs. `receiver` lives on the thread of the queue's maker.
    virtual void submit(std::function<void()> work, QObject* receiver, std::function<void()> done) = 0;
};

} // namespace pelloran
