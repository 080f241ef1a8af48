#include "localisation/L10n.h"

#include "localisation/AppLanguage.h"
#include "tests/support/Printing.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <algorithm>
#include <barrier>
#include <limits>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

class L10nTexts : public ::testing::Test {
public:
    ~L10nTexts() override { AppLanguage::configure(nullptr, nullptr); }

protected:
    static QString in(AppLanguage language, const QString& key) {
        AppLanguage::overridePreference(language);
        return L10n::tr(key);
    }

    static QString in(AppLanguage language, const QString& key, std::initializer_list<L10n::Argument> arguments) {
        AppLanguage::overridePreference(language);
        const QString text = L10n::tr(key, arguments);
        EXPECT_EQ(L10n::tr(key, std::vector(arguments)), text) << "a list made at run time";
        return text;
    }
};

// Placeholders in order: "@d" for text, then a number.
QString placeholders(const QString& text) {
    static const QRegularExpression placeholder(u"%(.)"_s);
    QString kinds;
    for (auto next = placeholder.globalMatch(text); next.hasNext();) {
        kinds += next.next().captured(1);
    }
    return kinds;
}

// Every key with the arguments its callers pass.
constexpr struct {
    QStringView key;
    QStringView placeholders;
} keys[] = {
    {u"app.tooltip", u""},
    {u"menu.toggleOverlay", u""},
    {u"menu.refresh", u""},
    {u"menu.checkConfig", u""},
    {u"menu.checkAppUpdate", u""},
    {u"menu.language", u""},
    {u"menu.quit", u""},
    {u"lang.system", u""},
    {u"update.title.available", u""},
    {u"update.title.upToDate", u""},
    {u"update.title.skipped", u""},
    {u"update.title.offline", u""},
    {u"update.title.failed", u""},
    {u"update.body.available", u"@@"},
    {u"update.body.upToDate", u"@@"},
    {u"update.body.skipped", u"@@"},
    {u"update.body.offline", u"@"},
    {u"update.btn.updateNow", u""},
    {u"update.btn.skipVersion", u""},
    {u"update.btn.ignore", u""},
    {u"update.btn.ok", u""},
    {u"update.err.badURL", u""},
    {u"update.err.http", u"d"},
    {u"update.err.invalidLatest", u""},
    {u"update.err.noDownloadURL", u""},
    {u"fatal.loadTitle", u""},
    {u"idle.waitDraft", u""},
    {u"idle.waitArena", u""},
    {u"idle.boot", u"@"},
    {u"idle.line", u"@"},
    {u"idle.hashBundled", u""},
    {u"sync.upToDate", u"@"},
    {u"sync.updated", u"@"},
    {u"sync.offline", u"@"},
    {u"sync.failed", u"@"},
    {u"overlay.arena", u""},
    {u"overlay.heroPick", u""},
    {u"overlay.cardPick", u""},
    {u"overlay.unrecognized", u""},
    {u"overlay.noWindow", u""},
    {u"overlay.captureFailed", u""},
    {u"slot.left", u""},
    {u"slot.middle", u""},
    {u"slot.right", u""},
    {u"metric.deckWinRate", u""},
    {u"metric.drawnWinRate", u""},
    {u"metric.playedWinRate", u""},
    {u"metric.popularity", u""},
    {u"metric.avgCopies", u""},
    {u"metric.classWinRate", u""},
    {u"metric.pickRate", u""},
    {u"metric.pct7Plus", u""},
    {u"metric.classRank", u""},
    {u"sync.msg.upToDate", u"@"},
    {u"sync.msg.updated", u"@"},
    {u"sync.msg.offline", u"@"},
    {u"sync.msg.failed", u"@"},
    {u"sync.msg.busy", u""},
    {u"sync.err.badURL", u""},
    {u"sync.err.http", u"d"},
    {u"sync.err.invalidManifest", u""},
    {u"sync.err.hash", u"@@"},
    {u"sync.err.extract", u"@"},
};

} // namespace

TEST_F(L10nTexts, ExistInBothLanguagesWithTheSamePlaceholders) {
    EXPECT_EQ(std::size(keys), 63U);
    for (const auto& row : keys) {
        const QString key = row.key.toString();
        SCOPED_TRACE(key.toStdString());
        const QString chinese = in(AppLanguage::zh, key);
        const QString english = in(AppLanguage::en, key);
        EXPECT_NE(chinese, key);
        EXPECT_NE(english, key);
        EXPECT_FALSE(chinese.isEmpty());
        EXPECT_FALSE(english.isEmpty());
        EXPECT_EQ(placeholders(chinese), row.placeholders);
        EXPECT_EQ(placeholders(english), row.placeholders);
        const bool anyChinese = std::ranges::any_of(chinese, [](QChar c) { return c.script() == QChar::Script_Han; });
        EXPECT_TRUE(anyChinese);
        const bool noChinese = std::ranges::none_of(english, [](QChar c) { return c.script() == QChar::Script_Han; });
        EXPECT_TRUE(noChinese);
    }
}

TEST_F(L10nTexts, StandAsWritten) {
    const struct {
        const char* why;
        QString key;
        QString chinese;
        QString english;
    } rows[] = {
        {"a middle dot", u"app.tooltip"_s, u"Pelloran · 炉石传说助手"_s, u"Pelloran · Hearthstone helper"_s},
        {"both languages in one", u"menu.language"_s, u"语言 / Language"_s, u"Language"_s},
        {"a typographic apostrophe", u"update.title.upToDate"_s, u"已是最新版本"_s, u"You\u2019re up to date"_s},
        {"an ellipsis", u"idle.waitArena"_s, u"等待进入竞技场\u2026"_s, u"Waiting for Arena\u2026"_s},
        {"line breaks and full-width punctuation", u"update.body.available"_s,
         u"当前版本 %@\uff0c最新版本 %@\u3002\n是否立即下载更新\uff1f"_s,
         u"You have %@; latest is %@.\nDownload the update now?"_s},
        {"corner brackets", u"overlay.captureFailed"_s,
         u"截屏失败\uff1a请在系统设置中授权\u300c屏幕录制\u300d后重启 Pelloran"_s,
         u"Capture failed: grant Screen Recording in System Settings, then relaunch Pelloran"_s},
        {"brackets", u"sync.err.hash"_s, u"配置包校验失败 (期望 %@… 实际 %@…)"_s,
         u"Config package hash mismatch (expected %@… got %@…)"_s},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(in(AppLanguage::zh, row.key), row.chinese);
        EXPECT_EQ(in(AppLanguage::en, row.key), row.english);
    }
}

TEST_F(L10nTexts, ThatAreMissingShowTheirKey) {
    for (const QString& key : {u"no.such.key"_s, u""_s, u"Slot.left"_s, u"slot.left "_s, u"%@"_s, u"火"_s}) {
        SCOPED_TRACE(key.toStdString());
        EXPECT_EQ(in(AppLanguage::zh, key), key);
        EXPECT_EQ(in(AppLanguage::en, key), key);
    }
}

TEST_F(L10nTexts, AreFilledInOrder) {
    const struct {
        const char* why;
        QString key;
        std::initializer_list<L10n::Argument> arguments;
        QString chinese;
        QString english;
    } rows[] = {
        {"a number", u"update.err.http"_s, {503}, u"更新服务 HTTP 503"_s, u"Update server HTTP 503"_s},
        {"a negative number", u"sync.err.http"_s, {-1}, u"配置服务 HTTP -1"_s, u"Config server HTTP -1"_s},
        {"no grouping of digits",
         u"sync.err.http"_s,
         {1'234'567},
         u"配置服务 HTTP 1234567"_s,
         u"Config server HTTP 1234567"_s},
        {"the largest number",
         u"sync.err.http"_s,
         {std::numeric_limits<std::int64_t>::max()},
         u"配置服务 HTTP 9223372036854775807"_s,
         u"Config server HTTP 9223372036854775807"_s},
        {"two texts",
         u"sync.err.hash"_s,
         {u"aa"_s, u"bb"_s},
         u"配置包校验失败 (期望 aa… 实际 bb…)"_s,
         u"Config package hash mismatch (expected aa… got bb…)"_s},
        {"an empty text", u"sync.err.extract"_s, {u""_s}, u"解压配置失败："_s, u"Failed to extract config: "_s},
        {"placeholders within a text stay text",
         u"sync.err.hash"_s,
         {u"%@ %d"_s, u"%1 %%"_s},
         u"配置包校验失败 (期望 %@ %d… 实际 %1 %%…)"_s,
         u"Config package hash mismatch (expected %@ %d… got %1 %%…)"_s},
        {"a missing argument leaves its placeholder",
         u"sync.err.hash"_s,
         {u"aa"_s},
         u"配置包校验失败 (期望 aa… 实际 %@…)"_s,
         u"Config package hash mismatch (expected aa… got %@…)"_s},
        {"an argument too many is left out",
         u"sync.err.extract"_s,
         {u"a"_s, u"b"_s},
         u"解压配置失败：a"_s,
         u"Failed to extract config: a"_s},
        {"a key that is missing is filled as well",
         u"%d of %@, 100%%, 5%"_s,
         {3, u"x"_s},
         u"3 of x, 100%, 5%"_s,
         u"3 of x, 100%, 5%"_s},
        {"other letters are no placeholders", u"%s %1$@ %"_s, {u"x"_s}, u"%s %1$@ %"_s, u"%s %1$@ %"_s},
        {"nothing to fill", u"slot.left"_s, {}, u"左"_s, u"L"_s},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(in(AppLanguage::zh, row.key, row.arguments), row.chinese);
        EXPECT_EQ(in(AppLanguage::en, row.key, row.arguments), row.english);
    }
}

TEST_F(L10nTexts, MayFirstBeAskedForByTwoThreadsAtOnce) {
    // Alone in its process this is the very first look-up, as it is when every case runs by itself.
    std::barrier start(2);
    QString texts[2];
    {
        const auto lookUp = [&](int thread) {
            start.arrive_and_wait();
            texts[thread] = L10n::tr(u"metric.classRank");
        };
        const std::jthread first(lookUp, 0);
        const std::jthread second(lookUp, 1);
    }
    EXPECT_EQ(texts[0], u"Class rank"_s);
    EXPECT_EQ(texts[1], u"Class rank"_s);
}

} // namespace pelloran
