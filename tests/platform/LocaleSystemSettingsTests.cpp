#include "platform/LocaleSystemSettings.h"

#include "tests/support/Printing.h"

#include <QByteArray>
#include <QStringList>

#include <gtest/gtest.h>

#ifdef Q_OS_LINUX // elsewhere the languages come from the desktop, which a test does not change

namespace pelloran {

namespace {

// Qt asks the environment once in a run, and may do so before the first test.
[[maybe_unused]] const bool environmentIsSet = qunsetenv("LC_ALL") && qputenv("LANG", "en_GB.UTF-8") &&
                                               qputenv("LC_MESSAGES", "en_GB.UTF-8") &&
                                               qputenv("LANGUAGE", "zh_CN:en_GB");

TEST(LocaleSystemSettings, TellsTheLanguagesOfTheEnvironmentInOrder) {
    const QStringList languages = LocaleSystemSettings().preferredLanguages();
    ASSERT_FALSE(languages.isEmpty());
    EXPECT_TRUE(languages.front().startsWith(QStringLiteral("zh"))) << languages.join(u' ').toStdString();
    const auto english = languages.indexOf(QStringLiteral("en-GB"));
    EXPECT_GT(english, 0) << languages.join(u' ').toStdString();
}

TEST(LocaleSystemSettings, TheFirstLanguageIsTheLocale) {
    EXPECT_EQ(LocaleSystemSettings().localeIdentifier(), QStringLiteral("zh_CN"));
}

} // namespace

} // namespace pelloran

#endif
