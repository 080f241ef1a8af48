#include "platform/macos/Awaited.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <thread>

namespace pelloran::macos {

namespace {

using namespace std::chrono_literals;

constexpr auto sureToCome = 1min; // ends as soon as there is an answer

TEST(Awaited, AnswersThatAreThereAreNotWaitedFor) {
    const Awaited<int> answer;
    answer.deliver(7);
    EXPECT_EQ(answer.wait(0ms), 7);
}

TEST(Awaited, AnAnswerOfAnotherThreadEndsTheWait) {
    const Awaited<std::unique_ptr<int>> answer;
    std::thread other([answer] { answer.deliver(std::make_unique<int>(7)); });
    const auto delivered = answer.wait(sureToCome);
    other.join();
    ASSERT_TRUE(delivered);
    EXPECT_EQ(**delivered, 7);
}

TEST(Awaited, NoAnswerIsNotWaitedForLongerThanSaid) {
    const Awaited<int> answer;
    EXPECT_EQ(answer.wait(1ms), std::nullopt);
}

TEST(Awaited, WhatComesTooLateFallsOnNothingThatIsGone) {
    const auto held = std::make_shared<int>(7);
    std::optional<Awaited<std::shared_ptr<int>>> asking(std::in_place);
    std::optional answering = asking;
    EXPECT_EQ(asking->wait(0ms), std::nullopt);
    asking.reset();
    answering->deliver(held);
    EXPECT_EQ(held.use_count(), 2);
    answering.reset();
    EXPECT_EQ(held.use_count(), 1) << "and stays with nobody";
}

TEST(Awaited, OfSeveralAnswersTheFirstCounts) {
    const Awaited<int> answer;
    answer.deliver(7);
    answer.deliver(8);
    EXPECT_EQ(answer.wait(0ms), 7);
}

} // namespace

} // namespace pelloran::macos
