// Races that the thread sanitizer has to report whatever is suppressed, and hand-overs that it must not take for any.
// CTest holds what it says against what is expected. Who comes first is settled without a lock, and so without any
// order that the sanitizer could know of: whether it sees a race does not depend on luck.

#include "base/SerialQueue.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QString>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace pelloran;

int counter = 0; // the racing threads'

// A turn that threads take without telling each other anything else.
std::atomic<int> turn = 0;

void waitForTurn(int wanted) {
    while (turn.load(std::memory_order_relaxed) != wanted) {
        QThread::msleep(1);
    }
}

void setTurn(int now) {
    turn.store(now, std::memory_order_relaxed);
}

// Counts from a slot once it is its turn, and ends the event loop.
class SlotThatCounts {
public:
    SlotThatCounts() {
        QObject::connect(&timer, &QTimer::timeout, [] {
            if (turn.load(std::memory_order_relaxed) == 1) {
                ++counter;
                setTurn(2);
                QCoreApplication::quit();
            }
        });
        timer.start(1);
    }

private:
    QTimer timer;
};

void raceThreadAndSlot() {
    const SlotThatCounts slot;
    const std::unique_ptr<QThread> thread(QThread::create([] {
        ++counter;
        setTurn(1);
    }));
    thread->start();
    QCoreApplication::exec();
    thread->wait();
}

// While the piece is under way: its end would be seen.
void raceQueueAndSlot() {
    const SlotThatCounts slot;
    const auto queue = SerialQueue::create(QStringLiteral("races"));
    QObject receiver;
    queue->submit(
        [] {
            ++counter;
            setTurn(1);
            waitForTurn(2);
        },
        &receiver, [] {});
    QCoreApplication::exec();
}

// The second piece's work and the first one's delivery.
void raceWorkAndDelivery() {
    const auto queue = SerialQueue::create(QStringLiteral("races"));
    QObject receiver;
    queue->submit([] {}, &receiver,
                  [] {
                      waitForTurn(1);
                      ++counter;
                      setTurn(2);
                      QCoreApplication::quit();
                  });
    queue->submit(
        [] {
            ++counter;
            setTurn(1);
            waitForTurn(2);
        },
        &receiver, [] {});
    QCoreApplication::exec();
}

// Plain values into the work, from it to the delivery, and back into further work; then what the last piece did,
// of which only the end of the queue tells.
void handOver() {
    constexpr int rounds = 200;
    std::vector<QString> texts;
    int behindTheLast = 0;
    {
        auto queue = SerialQueue::create(QStringLiteral("races"));
        QObject receiver;
        const std::function<void()> next = [&] {
            ++counter;
            texts.push_back(QString::number(counter));
            auto made = std::make_shared<std::vector<QString>>(texts);
            queue->submit(
                [&texts, made] {
                    ++counter;
                    made->push_back(texts.back() + QStringLiteral("!"));
                },
                &receiver,
                [&, made] {
                    texts = *made;
                    ++counter;
                    if (counter < rounds * 3) {
                        next();
                    } else {
                        queue->submit(
                            [&behindTheLast] {
                                ++behindTheLast;
                                setTurn(1);
                            },
                            nullptr, {});
                        QCoreApplication::quit();
                    }
                });
        };
        next();
        QCoreApplication::exec();
        waitForTurn(1);
    }
    ++behindTheLast;
    if (counter != rounds * 3 || texts.size() != rounds * 2 || behindTheLast != 2) {
        std::cerr << "not everything was handed over\n";
        std::exit(1);
    }
}

// The C library reads the zone anew each time it is asked what a local time is, under a lock that is its own.
void askForLocalTimes() {
    const auto ask = [] { return QDateTime::fromMSecsSinceEpoch(0).time(); };
    const std::unique_ptr<QThread> thread(QThread::create([ask] {
        ask();
        setTurn(1);
        waitForTurn(2);
    }));
    thread->start();
    waitForTurn(1);
    ask();
    setTurn(2);
    thread->wait();
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const std::map<std::string, void (*)()> all{{"thread-and-slot", raceThreadAndSlot},
                                                {"queue-and-slot", raceQueueAndSlot},
                                                {"work-and-delivery", raceWorkAndDelivery},
                                                {"handed-over", handOver},
                                                {"local-times", askForLocalTimes}};
    const auto chosen = all.find(argc == 2 ? argv[1] : "");
    if (chosen == all.end()) {
        std::cerr << "usage: races thread-and-slot|queue-and-slot|work-and-delivery|handed-over|local-times\n";
        return 2;
    }
    chosen->second();
    return 0;
}
