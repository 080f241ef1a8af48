#pragma once

#include "platform/ApplicationPresence.h"
#include "tests/contracts/BackEnd.h"

#include <QCoreApplication>

#include <memory>

namespace pelloran::testing {

class ApplicationPresenceContract : public ::testing::TestWithParam<BackEnd<std::unique_ptr<ApplicationPresence>>> {
protected:
    std::unique_ptr<ApplicationPresence> presence = GetParam().make();
};

TEST_P(ApplicationPresenceContract, MayBeActivatedAtAnyTime) {
    presence->activate(); // by an alert before all else
    presence->begin();
    presence->activate();
    presence->activate();
    QCoreApplication::processEvents();
}

TEST_P(ApplicationPresenceContract, TellsNothingThatNobodyAskedFor) {
    int told = 0;
    presence->reopened = [&] { ++told; };
    presence->begin();
    presence->activate();
    QCoreApplication::processEvents();
    EXPECT_EQ(told, 0);
}

TEST_P(ApplicationPresenceContract, EndsAndMayBeginAnew) {
    presence->begin();
    presence.reset();
    presence = GetParam().make();
    presence->begin();
    QCoreApplication::processEvents();
    presence.reset();
    EXPECT_NE(GetParam().make(), nullptr) << "one that never begins ends as well";
}

} // namespace pelloran::testing
