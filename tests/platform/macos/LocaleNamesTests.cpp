#include "platform/macos/LocaleNames.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

namespace pelloran::macos {

namespace {

TEST(LocaleNames, IdentifiersHaveOneForm) {
    struct Case {
        const char* why;
        const char* system;
        const char* expected;
    };

    const Case cases[] = {
        {"language and country", "en_GB", "en_GB"},
        {"a script, as for Chinese", "zh-Hans_CN", "zh_Hans_CN"},
        {"a calendar of the user's own", "en_GB@calendar=buddhist", "en_GB"},
        {"another country's money and dates", "zh-Hant_TW@rg=cnzzzz;currency=CNY", "zh_Hant_TW"},
        {"a language alone", "fr", "fr"},
        {"nothing", "", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(localeIdentifierOf(QString::fromUtf8(c.system)), QString::fromUtf8(c.expected));
    }
}

TEST(LocaleNames, TagsKeepTheirOrder) {
    EXPECT_EQ(languageTagsOf({QStringLiteral("zh-Hans-CN"), QString(), QStringLiteral("en_GB")}),
              (QStringList{QStringLiteral("zh-Hans-CN"), QStringLiteral("en-GB")}));
    EXPECT_EQ(languageTagsOf({}), QStringList());
}

} // namespace

} // namespace pelloran::macos
