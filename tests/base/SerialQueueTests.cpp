#include "base/SerialQueue.h"

#include <QCoreApplication>
#include <QObject>
#include <QTest>
#include <QThread>

#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <memory>
#include <vector>

namespace pelloran {

namespace {

using ::testing::ElementsAre;

class SerialQueueTest : public ::testing::Test {
protected:
    // Waits for `condition` with the event loop running, through which results come.
    static bool waitFor(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 10'000); }

    std::unique_ptr<SerialQueue> queue = SerialQueue::create(QStringLiteral("test"));
    QObject receiver;
};

TEST_F(SerialQueueTest, WorksElsewhereAndDeliversHere) {
    const QThread* const here = QThread::currentThread();
    std::atomic<const QThread*> workedOn = nullptr;
    QString name;
    const QThread* deliveredOn = nullptr;
    queue->submit(
        [&] {
            name = QThread::currentThread()->objectName();
            workedOn = QThread::currentThread();
        },
        &receiver, [&] { deliveredOn = QThread::currentThread(); });
    ASSERT_TRUE(waitFor([&] { return deliveredOn != nullptr; }));
    EXPECT_NE(workedOn, here);
    EXPECT_EQ(deliveredOn, here);
    EXPECT_EQ(name, QStringLiteral("test"));
}

TEST_F(SerialQueueTest, KeepsTheOrderOfSubmission) {
    std::vector<int> worked; // by the one thread of the queue, and read after it
    std::vector<int> delivered;
    std::vector<int> expected;
    for (int i = 0; i < 100; ++i) {
        expected.push_back(i);
        queue->submit([&worked, i] { worked.push_back(i); }, &receiver, [&delivered, i] { delivered.push_back(i); });
    }
    ASSERT_TRUE(waitFor([&] { return delivered.size() == expected.size(); }));
    EXPECT_EQ(delivered, expected);
    EXPECT_EQ(worked, expected);
}

TEST_F(SerialQueueTest, DeliversOnlyFromTheEventLoop) {
    bool delivered = false;
    std::promise<void> worked;
    queue->submit([&] { worked.set_value(); }, &receiver, [&] { delivered = true; });
    worked.get_future().wait();
    EXPECT_FALSE(delivered);
    EXPECT_TRUE(waitFor([&] { return delivered; }));
}

TEST_F(SerialQueueTest, WorkMayBeSubmittedFromADelivery) {
    int delivered = 0;
    queue->submit([] {}, &receiver,
                  [&] {
                      ++delivered;
                      queue->submit([] {}, &receiver, [&] { ++delivered; });
                  });
    EXPECT_TRUE(waitFor([&] { return delivered == 2; }));
}

TEST_F(SerialQueueTest, DeliversNothingToADeletedReceiver) {
    std::vector<int> delivered;
    auto other = std::make_unique<QObject>();
    std::promise<void> goOn;
    std::atomic<int> worked = 0;
    queue->submit(
        [&] {
            goOn.get_future().wait();
            ++worked;
        },
        other.get(), [&] { delivered.push_back(1); });
    queue->submit([&] { ++worked; }, other.get(), [&] { delivered.push_back(2); });
    queue->submit([&] { ++worked; }, nullptr, [&] { delivered.push_back(3); });
    queue->submit([&] { ++worked; }, &receiver, [&] { delivered.push_back(4); });
    other.reset(); // while the first piece is under way
    goOn.set_value();
    ASSERT_TRUE(waitFor([&] { return !delivered.empty(); }));
    EXPECT_THAT(delivered, ElementsAre(4));
    EXPECT_EQ(worked, 4);
}

TEST_F(SerialQueueTest, DeliversNothingToAReceiverDeletedBetweenWorkAndDelivery) {
    bool delivered = false;
    auto other = std::make_unique<QObject>();
    std::promise<void> worked;
    queue->submit([] {}, other.get(), [&] { delivered = true; });
    queue->submit([&] { worked.set_value(); }, &receiver, [] {});
    worked.get_future().wait(); // the first result is on its way
    other.reset();
    bool last = false;
    queue->submit([] {}, &receiver, [&] { last = true; });
    ASSERT_TRUE(waitFor([&] { return last; }));
    EXPECT_FALSE(delivered);
}

TEST_F(SerialQueueTest, EndingWaitsForTheWorkUnderWayAndDropsTheRest) {
    std::promise<void> begun;
    std::atomic<bool> finished = false;
    std::atomic<bool> secondRan = false;
    bool delivered = false;
    queue->submit(
        [&] {
            begun.set_value();
            QThread::msleep(50); // long enough that ending has to wait
            finished = true;
        },
        &receiver, [&] { delivered = true; });
    queue->submit([&] { secondRan = true; }, &receiver, [&] { delivered = true; });
    begun.get_future().wait();
    queue.reset();
    EXPECT_TRUE(finished);
    QCoreApplication::processEvents();
    EXPECT_FALSE(secondRan);
    EXPECT_FALSE(delivered);
}

TEST_F(SerialQueueTest, EndingDropsResultsNotYetDelivered) {
    bool delivered = false;
    std::promise<void> worked;
    queue->submit([] {}, &receiver, [&] { delivered = true; });
    queue->submit([&] { worked.set_value(); }, &receiver, [] {});
    worked.get_future().wait();
    queue.reset();
    QCoreApplication::processEvents();
    EXPECT_FALSE(delivered);
}

TEST_F(SerialQueueTest, EndsWithoutWork) {
    queue.reset();
    EXPECT_EQ(queue, nullptr);
}

} // namespace

} // namespace pelloran
