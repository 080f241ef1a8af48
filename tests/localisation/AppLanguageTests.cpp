#include "localisation/AppLanguage.h"

#include "localisation/L10n.h"
#include "tests/fakes/FakeSystemSettings.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/support/Printing.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <thread>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

class Language : public ::testing::Test {
public:
    Language() { AppLanguage::configure(&defaults, &settings); }

    ~Language() override { AppLanguage::configure(nullptr, nullptr); }

protected:
    std::optional<QString> stored() const { return defaults.string(u"pelloran.language"_s); }

    testing::FakeUserDefaults defaults;
    testing::FakeSystemSettings settings;
    QSignalSpy announced{&AppLanguageNotifier::shared(), &AppLanguageNotifier::posted};
};

} // namespace

TEST_F(Language, HasThreeChoicesInTheOrderOfTheMenu) {
    QStringList texts;
    for (const AppLanguage language : AppLanguage::allCases()) {
        texts.append(language.rawValue());
        EXPECT_EQ(AppLanguage::fromRawValue(language.rawValue()), language);
    }
    EXPECT_EQ(texts, (QStringList{u"system"_s, u"zh"_s, u"en"_s}));
}

TEST_F(Language, TakesTheStoredTextExactly) {
    EXPECT_EQ(AppLanguage::preference(), AppLanguage::system) << "nothing stored";

    const struct {
        const char* why;
        QString text;
        AppLanguage expected;
    } rows[] = {
        {"system", u"system"_s, AppLanguage::system},
        {"Chinese", u"zh"_s, AppLanguage::zh},
        {"English", u"en"_s, AppLanguage::en},
        {"upper case is not recognised", u"ZH"_s, AppLanguage::system},
        {"nor is a title's case", u"En"_s, AppLanguage::system},
        {"nor a region", u"zh-Hans"_s, AppLanguage::system},
        {"nor a blank", u"en "_s, AppLanguage::system},
        {"nor nothing", u""_s, AppLanguage::system},
        {"nor another language", u"fr"_s, AppLanguage::system},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        defaults.setString(u"pelloran.language"_s, row.text);
        EXPECT_EQ(AppLanguage::preference(), row.expected);
    }
}

TEST_F(Language, OfTheSystemIsChineseForEveryChinese) {
    const struct {
        const char* why;
        QStringList languages;
        QString locale;
        AppLanguage expected;
    } rows[] = {
        {"simplified", {u"zh-Hans-CN"_s}, u"en_US"_s, AppLanguage::zh},
        {"traditional", {u"zh-Hant-TW"_s, u"en-US"_s}, u"en_US"_s, AppLanguage::zh},
        {"without a region", {u"zh"_s}, u"en_US"_s, AppLanguage::zh},
        {"underscores", {u"zh_CN"_s}, u"en_US"_s, AppLanguage::zh},
        {"upper case", {u"ZH-HANS"_s}, u"en_US"_s, AppLanguage::zh},
        {"British English", {u"en-GB"_s}, u"zh_CN"_s, AppLanguage::en},
        {"French", {u"fr-FR"_s}, u"zh_CN"_s, AppLanguage::en},
        {"only the first counts", {u"ja-JP"_s, u"zh-Hans"_s}, u"zh_CN"_s, AppLanguage::en},
        {"an empty first one counts as well", {u""_s, u"zh-Hans"_s}, u"zh_CN"_s, AppLanguage::en},
        {"no list: the locale", {}, u"zh_TW"_s, AppLanguage::zh},
        {"no list and another locale", {}, u"de_DE"_s, AppLanguage::en},
        {"nothing at all", {}, u""_s, AppLanguage::en},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        settings.languages = row.languages;
        settings.locale = row.locale;
        EXPECT_EQ(AppLanguage::resolvedPreference(), row.expected);
        EXPECT_EQ(AppLanguage(AppLanguage::system).resolved(), row.expected);
        EXPECT_EQ(AppLanguage(AppLanguage::system).isChinese(), row.expected == AppLanguage::zh);
    }
}

TEST_F(Language, ChosenIsItselfWhateverTheSystemPrefers) {
    for (const QString& preferred : {u"zh-Hans"_s, u"en-US"_s}) {
        settings.languages = {preferred};
        EXPECT_EQ(AppLanguage(AppLanguage::zh).resolved(), AppLanguage::zh);
        EXPECT_TRUE(AppLanguage(AppLanguage::zh).isChinese());
        EXPECT_EQ(AppLanguage(AppLanguage::en).resolved(), AppLanguage::en);
        EXPECT_FALSE(AppLanguage(AppLanguage::en).isChinese());
    }
}

TEST_F(Language, IsNamedInItselfInTheMenu) {
    const struct {
        const char* why;
        AppLanguage inForce;
        QStringList expected;
    } rows[] = {
        {"English", AppLanguage::en, {u"System"_s, u"中文"_s, u"English"_s}},
        {"Chinese", AppLanguage::zh, {u"跟随系统"_s, u"中文"_s, u"English"_s}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        AppLanguage::setPreference(row.inForce);
        QStringList titles;
        for (const AppLanguage language : AppLanguage::allCases()) {
            titles.append(language.menuTitle());
        }
        EXPECT_EQ(titles, row.expected);
    }
}

TEST_F(Language, IsStoredWithEveryChoiceAndAnnouncedWithEveryChange) {
    const struct {
        const char* why;
        AppLanguage choice;
        bool announced;
    } rows[] = {
        {"following the system is what an empty store means", AppLanguage::system, false},
        {"a change", AppLanguage::zh, true},
        {"the same again", AppLanguage::zh, false},
        {"another change", AppLanguage::en, true},
        {"a change that comes to the same language", AppLanguage::system, true},
        {"and back", AppLanguage::en, true},
    };

    int writes = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        announced.clear();
        AppLanguage::setPreference(row.choice);
        EXPECT_EQ(stored(), row.choice.rawValue());
        EXPECT_EQ(defaults.writes, ++writes);
        EXPECT_EQ(AppLanguage::preference(), row.choice);
        EXPECT_EQ(announced.count(), row.announced ? 1 : 0);
    }
}

TEST_F(Language, ChangesUnderTheNameOthersListenFor) {
    EXPECT_EQ(AppLanguage::didChangeNotification(), u"Pelloran.AppLanguageDidChange"_s);
    AppLanguage::setPreference(AppLanguage::zh);
    ASSERT_EQ(announced.count(), 1);
    EXPECT_EQ(announced.first(), QVariantList{u"Pelloran.AppLanguageDidChange"_s});
}

TEST_F(Language, TextThatMeansNothingIsReplacedWithoutAWord) {
    defaults.setString(u"pelloran.language"_s, u"ZH"_s);
    AppLanguage::setPreference(AppLanguage::system);
    EXPECT_EQ(stored(), u"system"_s);
    EXPECT_EQ(announced.count(), 0) << "it was in force already";
}

TEST_F(Language, IsInForceWhenTheChangeIsAnnounced) {
    QString text;
    QObject receiver;
    QObject::connect(&AppLanguageNotifier::shared(), &AppLanguageNotifier::posted, &receiver,
                     [&] { text = L10n::tr(u"menu.refresh"); });
    AppLanguage::setPreference(AppLanguage::zh);
    EXPECT_EQ(text, u"立即刷新"_s);
}

TEST_F(Language, MayBeChangedAgainByWhoHearsOfTheChange) {
    QObject receiver;
    QObject::connect(&AppLanguageNotifier::shared(), &AppLanguageNotifier::posted, &receiver,
                     [] { AppLanguage::setPreference(AppLanguage::en); });
    AppLanguage::setPreference(AppLanguage::zh);
    EXPECT_EQ(AppLanguage::preference(), AppLanguage::en);
    EXPECT_EQ(announced.count(), 2);
}

TEST_F(Language, OverriddenLastsUntilAChoiceIsMade) {
    const struct {
        const char* why;
        AppLanguage before;
        AppLanguage overridden;
        AppLanguage choice;
        bool announced;
    } rows[] = {
        {"a choice of another language", AppLanguage::en, AppLanguage::zh, AppLanguage::en, true},
        {"a choice of the overriding one", AppLanguage::en, AppLanguage::zh, AppLanguage::zh, false},
        {"a choice of a third", AppLanguage::en, AppLanguage::zh, AppLanguage::system, true},
        {"an override to the system", AppLanguage::zh, AppLanguage::system, AppLanguage::zh, true},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        AppLanguage::setPreference(row.before);
        announced.clear();
        AppLanguage::overridePreference(row.overridden);
        EXPECT_EQ(AppLanguage::preference(), row.overridden);
        EXPECT_EQ(stored(), row.before.rawValue()) << "an override is not stored";
        EXPECT_EQ(announced.count(), 0) << "nor announced";
        AppLanguage::setPreference(row.choice);
        EXPECT_EQ(AppLanguage::preference(), row.choice);
        EXPECT_EQ(stored(), row.choice.rawValue());
        EXPECT_EQ(announced.count(), row.announced ? 1 : 0);
        defaults.setString(u"pelloran.language"_s, u"en"_s);
        EXPECT_EQ(AppLanguage::preference(), AppLanguage::en) << "the store counts again";
    }
}

TEST_F(Language, IsReadAfreshWithEveryLookUp) {
    EXPECT_EQ(L10n::tr(u"slot.left"), u"L"_s);
    defaults.setString(u"pelloran.language"_s, u"zh"_s);
    EXPECT_EQ(L10n::tr(u"slot.left"), u"左"_s);
    defaults.setString(u"pelloran.language"_s, u"system"_s);
    settings.languages = {u"en-US"_s};
    EXPECT_EQ(L10n::tr(u"slot.left"), u"L"_s);
    settings.languages = {u"zh-Hans"_s};
    EXPECT_EQ(L10n::tr(u"slot.left"), u"左"_s);
}

TEST_F(Language, WithoutAStoreIsEnglishAndMayBeOverridden) {
    AppLanguage::configure(nullptr, nullptr);
    EXPECT_EQ(AppLanguage::preference(), AppLanguage::system);
    EXPECT_EQ(AppLanguage::resolvedPreference(), AppLanguage::en);
    AppLanguage::overridePreference(AppLanguage::zh);
    EXPECT_EQ(AppLanguage::resolvedPreference(), AppLanguage::zh);
}

TEST_F(Language, MayChangeWhileOtherThreadsReadTexts) {
    constexpr int changes = 2'000;
    int strange = 0;
    std::jthread reader([&strange](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            const QString text = L10n::tr(u"update.err.http", {503});
            if (text != u"Update server HTTP 503" && text != u"更新服务 HTTP 503") {
                ++strange;
            }
        }
    });
    for (int change = 0; change < changes; ++change) {
        AppLanguage::setPreference(change % 2 == 0 ? AppLanguage::zh : AppLanguage::en);
    }
    reader.request_stop();
    reader.join();
    EXPECT_EQ(strange, 0);
    EXPECT_EQ(announced.count(), changes);
}

} // namespace pelloran
