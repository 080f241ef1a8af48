#include "base/SerialQueue.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QPointer>
#include <QThread>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace pelloran {

namespace {

// What goes to the thread and comes back from it does so under the mutex here. Qt's event loop and its thread carry
// none of it: their own locks are beyond the sight of the thread sanitizer, so that a race beside them would have to be
// suppressed with them.
class ThreadQueue final : public SerialQueue {
public:
    explicit ThreadQueue(const QString& name)
        : mailbox(*this)
        , thread(*this) {
        thread.setObjectName(name);
        thread.start();
    }

    ~ThreadQueue() override {
        {
            const std::scoped_lock lock(mutex);
            ending = true;
            pieces.clear();
        }
        thread.requestInterruption();
        wake.notify_one();
        thread.wait();
        const std::scoped_lock lock(mutex); // after the thread's last unlocking: all it did is seen from here on
    }

    void submit(std::function<void()> work, QObject* receiver, std::function<void()> done) override {
        {
            const std::scoped_lock lock(mutex);
            pieces.push_back({std::move(work), receiver, std::move(done)});
        }
        wake.notify_one();
    }

private:
    struct Piece {
        std::function<void()> work;
        QPointer<QObject> receiver;
        std::function<void()> done;
    };

    // Lives on the maker's thread; wake-ups that were posted to it die with it. Each is for one result.
    class Mailbox final : public QObject {
    public:
        explicit Mailbox(ThreadQueue& itsQueue)
            : queue(itsQueue) {}

    private:
        void customEvent(QEvent*) override { queue.deliver(); }

        ThreadQueue& queue;
    };

    class Thread final : public QThread {
    public:
        explicit Thread(ThreadQueue& itsQueue)
            : queue(itsQueue) {}

    private:
        void run() override { queue.run(); }

        ThreadQueue& queue;
    };

    void run() {
        std::unique_lock lock(mutex);
        while (true) {
            wake.wait(lock, [this] { return ending || !pieces.empty(); });
            if (ending) {
                return;
            }
            Piece piece = std::move(pieces.front());
            pieces.pop_front();
            lock.unlock();
            piece.work();
            piece.work = {};
            lock.lock();
            results.push_back(std::move(piece));
            lock.unlock();
            QCoreApplication::postEvent(&mailbox, new QEvent(QEvent::User)); // Qt deletes it
            lock.lock();
        }
    }

    // Nothing of the queue is touched once `done` runs, which may end it.
    void deliver() {
        Piece piece;
        {
            const std::scoped_lock lock(mutex);
            piece = std::move(results.front());
            results.pop_front();
        }
        // Asked here, on the receiver's own thread, where it cannot die meanwhile.
        if (piece.receiver) {
            piece.done();
        }
    }

    std::mutex mutex;
    std::condition_variable wake;
    std::deque<Piece> pieces;
    std::deque<Piece> results;
    bool ending = false;
    Mailbox mailbox;
    Thread thread;
};

} // namespace

std::unique_ptr<SerialQueue> SerialQueue::create(const QString& name) {
    return std::make_unique<ThreadQueue>(name);
}

} // namespace pelloran
