#pragma once

#include "platform/UserDefaults.h"
#include "tests/contracts/BackEnd.h"
#include "tests/support/Printing.h"

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace pelloran::testing {

// Made with nothing stored.
class UserDefaultsContract : public ::testing::TestWithParam<BackEnd<std::unique_ptr<UserDefaults>>> {
protected:
    const std::unique_ptr<UserDefaults> defaults = GetParam().make();
    const QString key = QStringLiteral("pelloran.language");
    const QString other = QStringLiteral("pelloran.skippedAppVersion");
};

TEST_P(UserDefaultsContract, HoldsNothingAtFirst) {
    EXPECT_EQ(defaults->string(key), std::nullopt);
    EXPECT_EQ(defaults->string(QStringLiteral("never heard of")), std::nullopt);
}

TEST_P(UserDefaultsContract, ReadsBackAsWritten) {
    struct Case {
        const char* why;
        QString text;
    };

    const Case cases[] = {
        {"a word", QStringLiteral("zh")},
        {"empty text is text", QStringLiteral("")},
        {"so is no text", QString()},
        {"white space", QStringLiteral(" ")},
        {"all that files give a meaning to", QStringLiteral("炉石, \"a\"; b=c\n%20\\\t[x]")},
        {"what looks like another type", QStringLiteral("@Invalid()")},
        {"a number", QStringLiteral("12")},
        {"a truth", QStringLiteral("true")},
        {"long", QString(20'000, u'x')},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        defaults->setString(key, c.text);
        const auto found = defaults->string(key);
        ASSERT_TRUE(found);
        EXPECT_EQ(*found, c.text);
    }
}

TEST_P(UserDefaultsContract, KeysDoNotMix) {
    defaults->setString(key, QStringLiteral("en"));
    defaults->setString(other, QStringLiteral("1.2.3"));
    EXPECT_EQ(defaults->string(key), QStringLiteral("en"));
    EXPECT_EQ(defaults->string(other), QStringLiteral("1.2.3"));
    EXPECT_EQ(defaults->string(QStringLiteral("language")), std::nullopt);
    EXPECT_EQ(defaults->string(QStringLiteral("pelloran")), std::nullopt);
}

TEST_P(UserDefaultsContract, ForgetsWhatIsRemovedAndNothingElse) {
    defaults->remove(key); // there is nothing yet
    defaults->setString(key, QStringLiteral("zh"));
    defaults->setString(other, QStringLiteral("1.3"));
    defaults->remove(other);
    EXPECT_EQ(defaults->string(other), std::nullopt);
    EXPECT_EQ(defaults->string(key), QStringLiteral("zh"));
    defaults->setString(other, QStringLiteral("1.4"));
    EXPECT_EQ(defaults->string(other), QStringLiteral("1.4"));
}

TEST_P(UserDefaultsContract, IsSafeFromAnyThread) {
    defaults->setString(key, QStringLiteral("zh"));
    std::atomic<int> strange = 0;
    constexpr int count = 4;
    std::vector<std::thread> threads;
    threads.reserve(count);
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 25; ++round) {
                defaults->setString(key, i % 2 ? QStringLiteral("zh") : QStringLiteral("en"));
                const auto value = defaults->string(key);
                strange += value != QStringLiteral("zh") && value != QStringLiteral("en");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(strange, 0);
}

} // namespace pelloran::testing
