#pragma once

#include "platform/Alerts.h"
#include "tests/contracts/BackEnd.h"

#include <memory>
#include <optional>

namespace pelloran::testing {

// Alerts, and a user who does the next thing that he is told to when one is shown: `first` before he answers, then
// presses that button, counted from 0, or closes the alert.
struct AnsweredAlerts {
    std::unique_ptr<Alerts> alerts;
    std::function<void(Alerts& alerts, std::optional<int> button, const std::function<void()>& first)> willAnswer;
};

class AlertsContract : public ::testing::TestWithParam<BackEnd<AnsweredAlerts>> {
protected:
    int answer(const QStringList& buttons, std::optional<int> button, const std::function<void()>& first = {}) {
        given.willAnswer(*given.alerts, button, first);
        return given.alerts->runModal({Alerts::Style::informational, QStringLiteral("News"),
                                       QStringLiteral("Some text.\nA second line."), buttons});
    }

    const AnsweredAlerts given = GetParam().make();
    const QStringList three{QStringLiteral("Update Now"), QStringLiteral("Skip"), QStringLiteral("Ignore")};
};

TEST_P(AlertsContract, TellTheButtonPressed) {
    for (int button = 0; button < 3; ++button) {
        EXPECT_EQ(answer(three, button), button);
    }
    EXPECT_EQ(answer({QStringLiteral("Update Now")}, 0), 0);
}

TEST_P(AlertsContract, HaveOneButtonToDismissThemWhereTheyAreGivenNone) {
    EXPECT_EQ(answer({}, 0), 0);
}

TEST_P(AlertsContract, CountClosingAsTheLastButton) {
    EXPECT_EQ(answer(three, std::nullopt), 2);
    EXPECT_EQ(answer(three.mid(1), std::nullopt), 1);
    EXPECT_EQ(answer({}, std::nullopt), 0);
}

TEST_P(AlertsContract, AreAnsweredBeforeTheyReturn) {
    bool seen = false;
    EXPECT_EQ(answer(three, 1, [&] { seen = true; }), 1);
    EXPECT_TRUE(seen);
}

TEST_P(AlertsContract, MayLieOnTopOfOneAnother) {
    int upper = -1;
    EXPECT_EQ(answer(three, 2, [&] { upper = answer(three, 0); }), 2);
    EXPECT_EQ(upper, 0);
}

} // namespace pelloran::testing
