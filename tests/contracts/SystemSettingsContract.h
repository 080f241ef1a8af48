#pragma once

#include "platform/SystemSettings.h"
#include "tests/contracts/BackEnd.h"
#include "tests/support/Printing.h"

#include <QTest>
#include <QThread>

#include <memory>
#include <thread>

namespace pelloran::testing {

// Settings of a desktop whose user changes his mind. A desktop that says nothing of colours and motion has
// neither of the two functions.
struct ChangedSettings {
    std::shared_ptr<void> owned; // what has to live as long
    std::unique_ptr<SystemSettings> settings;
    std::function<void(bool)> setReducesMotion;
    std::function<void(Appearance)> setAppearance;
};

// At first the desktop is light, and things move.
class SystemSettingsContract : public ::testing::TestWithParam<BackEnd<ChangedSettings>> {
protected:
    void SetUp() override {
        if (!given.settings) {
            GTEST_SKIP() << "needs dbus-daemon, which is not installed";
        }
    }

    static bool inTime(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 20'000); }

    const ChangedSettings given = GetParam().make();
};

TEST_P(SystemSettingsContract, TellsLanguagesAndLocaleOnAnyThread) {
    const QStringList languages = given.settings->preferredLanguages();
    for (const QString& language : languages) {
        EXPECT_FALSE(language.isEmpty());
        EXPECT_FALSE(language.contains(u'_')) << language.toStdString() << " is no tag";
    }
    const QString locale = given.settings->localeIdentifier();
    EXPECT_FALSE(locale.isEmpty());
    EXPECT_FALSE(locale.contains(u'-')) << locale.toStdString();
    std::thread([&] {
        EXPECT_EQ(given.settings->preferredLanguages(), languages);
        EXPECT_EQ(given.settings->localeIdentifier(), locale);
    }).join();
}

TEST_P(SystemSettingsContract, AnswersAtOnceAndChangesNeedNoListener) {
    given.settings->reducesMotion();
    given.settings->appearance();
    if (given.setReducesMotion) {
        given.setReducesMotion(true);
        EXPECT_TRUE(inTime([&] { return given.settings->reducesMotion(); }));
    } else {
        EXPECT_FALSE(given.settings->reducesMotion());
        EXPECT_EQ(given.settings->appearance(), std::nullopt);
    }
}

TEST_P(SystemSettingsContract, TellsOfEachChangeOnceOnTheMainThreadWithTheNewValueInForce) {
    if (!given.setReducesMotion) {
        GTEST_SKIP() << "this one knows of nothing that changes";
    }
    SystemSettings& settings = *given.settings;
    settings.appearance(); // who follows the desktop begins with the first question
    ASSERT_TRUE(inTime([&] { return settings.appearance() == Appearance::light; }));

    struct Seen {
        bool reducesMotion;
        std::optional<Appearance> appearance;

        bool operator==(const Seen&) const = default;
    };

    std::vector<Seen> seen;
    const QThread* const here = QThread::currentThread();
    settings.changed = [&] {
        EXPECT_EQ(QThread::currentThread(), here);
        seen.push_back({settings.reducesMotion(), settings.appearance()});
    };
    given.setReducesMotion(true);
    ASSERT_TRUE(inTime([&] { return seen.size() == 1; }));
    given.setReducesMotion(true);
    given.setAppearance(Appearance::light);
    given.setAppearance(Appearance::dark);
    ASSERT_TRUE(inTime([&] { return settings.appearance() == Appearance::dark; }));
    given.setReducesMotion(false);
    ASSERT_TRUE(inTime([&] { return !settings.reducesMotion(); }));
    EXPECT_EQ(seen, (std::vector<Seen>{{true, Appearance::light}, {true, Appearance::dark}, {false, Appearance::dark}}))
        << "what stays as it is is no change";
    settings.changed = {};
}

} // namespace pelloran::testing
