#pragma once

#include "base/SerialQueue.h"

#include <QObject>
#include <QPointer>

#include <deque>

namespace pelloran::testing {

// Holds every piece of work until the test lets it run, on the test's own thread.
class ManualQueue final : public SerialQueue {
public:
    void submit(std::function<void()> work, QObject* receiver, std::function<void()> done) override {
        pieces.push_back({std::move(work), receiver, std::move(done)});
    }

    std::size_t waiting() const { return pieces.size(); }

    // What the thread of the queue's maker sees once a piece has run and before its result arrives.
    std::function<void()> betweenWorkAndResult;

    // Runs the oldest piece and delivers its result.
    void finishNext() {
        const Piece piece = std::move(pieces.front());
        pieces.pop_front();
        piece.work();
        if (betweenWorkAndResult) {
            betweenWorkAndResult();
        }
        if (piece.receiver) {
            piece.done();
        }
    }

private:
    struct Piece {
        std::function<void()> work;
        QPointer<QObject> receiver;
        std::function<void()> done;
    };

    std::deque<Piece> pieces;
};

} // namespace pelloran::testing
