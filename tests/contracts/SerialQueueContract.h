#pragma once

#include "base/SerialQueue.h"
#include "tests/contracts/BackEnd.h"

#include <QObject>
#include <QThread>

#include <memory>
#include <vector>

namespace pelloran::testing {

// A queue, and how to let everything submitted run and be delivered.
struct DrivenQueue {
    std::unique_ptr<SerialQueue> queue;
    std::function<void(SerialQueue&)> finishAll;
};

class SerialQueueContract : public ::testing::TestWithParam<BackEnd<DrivenQueue>> {
protected:
    void finishAll() { driven.finishAll(*driven.queue); }

    DrivenQueue driven = GetParam().make();
    QObject receiver;
};

TEST_P(SerialQueueContract, WorksAndDeliversInTheOrderOfSubmission) {
    std::vector<int> worked;
    std::vector<int> delivered;
    std::vector<int> expected;
    for (int i = 0; i < 50; ++i) {
        expected.push_back(i);
        driven.queue->submit([&worked, i] { worked.push_back(i); }, &receiver,
                             [&delivered, i] { delivered.push_back(i); });
    }
    EXPECT_TRUE(delivered.empty()) << "nothing is delivered to whoever has not let it come";
    finishAll();
    EXPECT_EQ(worked, expected);
    EXPECT_EQ(delivered, expected);
}

TEST_P(SerialQueueContract, DeliversOnTheMakersThreadWhatTheWorkMade) {
    int made = 0;
    int seen = 0;
    const QThread* deliveredOn = nullptr;
    driven.queue->submit([&] { made = 7; }, &receiver,
                         [&] {
                             seen = made;
                             deliveredOn = QThread::currentThread();
                         });
    finishAll();
    EXPECT_EQ(seen, 7);
    EXPECT_EQ(deliveredOn, QThread::currentThread());
}

TEST_P(SerialQueueContract, WorkMayBeSubmittedFromADelivery) {
    int delivered = 0;
    driven.queue->submit([] {}, &receiver,
                         [&] {
                             ++delivered;
                             driven.queue->submit([] {}, &receiver, [&] { ++delivered; });
                         });
    finishAll();
    finishAll();
    EXPECT_EQ(delivered, 2);
}

TEST_P(SerialQueueContract, WorksForAReceiverThatIsGoneAndDeliversNothingToIt) {
    auto other = std::make_unique<QObject>();
    std::vector<int> worked;
    std::vector<int> delivered;
    driven.queue->submit([&] { worked.push_back(1); }, other.get(), [&] { delivered.push_back(1); });
    driven.queue->submit([&] { worked.push_back(2); }, nullptr, [&] { delivered.push_back(2); });
    driven.queue->submit([&] { worked.push_back(3); }, &receiver, [&] { delivered.push_back(3); });
    other.reset();
    finishAll();
    EXPECT_EQ(worked, (std::vector{1, 2, 3}));
    EXPECT_EQ(delivered, std::vector{3});
}

TEST_P(SerialQueueContract, DeliversNothingToAReceiverThatGoesInADelivery) {
    auto other = std::make_unique<QObject>();
    bool delivered = false;
    driven.queue->submit([] {}, &receiver, [&] { other.reset(); });
    driven.queue->submit([] {}, other.get(), [&] { delivered = true; });
    finishAll();
    EXPECT_FALSE(delivered);
}

TEST_P(SerialQueueContract, EndsWithWhatItHolds) {
    const auto held = std::make_shared<int>();
    bool delivered = false;
    for (int i = 0; i < 5; ++i) {
        driven.queue->submit([held] {}, &receiver, [held, &delivered] { delivered = true; });
    }
    driven.queue.reset();
    EXPECT_EQ(held.use_count(), 1) << "work and delivery are dropped";
    EXPECT_FALSE(delivered);
}

} // namespace pelloran::testing
