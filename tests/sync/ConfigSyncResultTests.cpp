#include "sync/ConfigSyncResult.h"

#include "tests/support/Printing.h"
#include "tests/sync/TextLanguage.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

struct ResultCase {
    const char* why;
    ConfigSyncResult result;
    bool didUpdateFiles;
    QString english;
    QString chinese;
};

const std::vector<ResultCase>& resultCases() {
    using R = ConfigSyncResult;
    static const std::vector<ResultCase> all{
        {"eight characters of the hash",
         {R::UpToDate{u"1a2b3c4d5e"_s}},
         false,
         u"Config is up to date (1a2b3c4d…)"_s,
         u"配置已是最新 (1a2b3c4d…)"_s},
        {"a short hash", {R::Updated{u"v7"_s}}, true, u"Config updated (v7…)"_s, u"已更新配置 (v7…)"_s},
        {"the reason, not the hash",
         {R::SkippedOffline{u"abc"_s, u"no network"_s}},
         false,
         u"Offline, using local config: no network"_s,
         u"离线使用本地配置：no network"_s},
        {"no hash",
         {R::SkippedOffline{std::nullopt, u"no network"_s}},
         false,
         u"Offline, using local config: no network"_s,
         u"离线使用本地配置：no network"_s},
        {"nothing to go on with",
         {R::Failed{u"no network"_s}},
         false,
         u"Config sync failed; using local/bundled data: no network"_s,
         u"配置同步失败，将使用本地/内置数据：no network"_s},
        {"another one",
         {R::SkippedBusy{}},
         false,
         u"Config sync skipped: already in progress"_s,
         u"配置同步跳过：已有任务进行中"_s},
    };
    return all;
}

TEST(ConfigSyncResult, TellsTheUser) {
    for (const ResultCase& c : resultCases()) {
        SCOPED_TRACE(c.why);
        {
            const testing::TextLanguage english;
            EXPECT_EQ(c.result.userMessage(), c.english);
        }
        const testing::TextLanguage chinese(u"zh"_s);
        EXPECT_EQ(c.result.userMessage(), c.chinese);
    }
}

TEST(ConfigSyncResult, OnlyAnUpdateChangesFiles) {
    for (const ResultCase& c : resultCases()) {
        EXPECT_EQ(c.result.didUpdateFiles(), c.didUpdateFiles) << c.why;
    }
}

TEST(ConfigSyncResult, EqualsOnlyItself) {
    for (std::size_t i = 0; i < resultCases().size(); ++i) {
        for (std::size_t j = 0; j < resultCases().size(); ++j) {
            EXPECT_EQ(resultCases()[i].result == resultCases()[j].result, i == j) << i << ' ' << j;
        }
    }
}

} // namespace

} // namespace pelloran
