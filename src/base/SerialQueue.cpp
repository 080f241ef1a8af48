#include "base/SerialQueue.h"

#include <QObject>
#include <QPointer>
#include <QThread>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace pelloran {

namespace {

class ThreadQueue final : public SerialQueue {
public:
    explicit ThreadQueue(const QString& name)
        : thread(QThread::create([this] { run(); })) {
        thread->setObjectName(name);
        thread->start();
    }

    ~ThreadQueue() override {
        {
            const std::scoped_lock lock(mutex);
            ending = true;
            pieces.clear();
        }
        thread->requestInterruption();
        wake.notify_one();
        thread->wait();
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
            // Whether the receiver still lives is asked on its own thread, where it cannot die meanwhile.
            QMetaObject::invokeMethod(
                &mailbox,
                [receiver = std::move(piece.receiver), done = std::move(piece.done)] {
                    if (receiver) {
                        done();
                    }
                },
                Qt::QueuedConnection);
            lock.lock();
        }
    }

    QObject mailbox; // lives on the maker's thread; what was posted to it dies with it
    std::mutex mutex;
    std::condition_variable wake;
    std::deque<Piece> pieces;
    bool ending = false;
    std::unique_ptr<QThread> thread;
};

} // namespace

std::unique_ptr<SerialQueue> SerialQueue::create(const QString& name) {
    return std::make_unique<ThreadQueue>(name);
}

} // namespace pelloran
