#include "sync/ConfigSyncError.h"

#include "tests/support/Printing.h"
#include "tests/sync/TextLanguage.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

struct ErrorCase {
    const char* why;
    ConfigSyncError error;
    QString english;
    QString chinese;
};

const std::vector<ErrorCase>& errorCases() {
    using E = ConfigSyncError;
    static const std::vector<ErrorCase> all{
        {"a status", {E::HttpStatus{404}}, u"Config server HTTP 404"_s, u"配置服务 HTTP 404"_s},
        {"twelve characters of each digest",
         {E::HashMismatch{u"0123456789abcdef"_s, u"fedcba9876543210"_s}},
         u"Config package hash mismatch (expected 0123456789ab… got fedcba987654…)"_s,
         u"配置包校验失败 (期望 0123456789ab… 实际 fedcba987654…)"_s},
        {"what tar says, as it says it",
         {E::ExtractFailed{u"tar: %@ bad\n"_s}},
         u"Failed to extract config: tar: %@ bad\n"_s,
         u"解压配置失败：tar: %@ bad\n"_s},
        {"no address", {E::BadURL{}}, u"Invalid config server URL"_s, u"配置服务 URL 无效"_s},
        {"no manifest", {E::InvalidManifest{}}, u"Invalid remote manifest"_s, u"远端 manifest 无效"_s},
        {"the system's own words stay",
         {E::Platform{u"Connection refused"_s}},
         u"Connection refused"_s,
         u"Connection refused"_s},
    };
    return all;
}

TEST(ConfigSyncError, TellsTheUser) {
    for (const ErrorCase& c : errorCases()) {
        SCOPED_TRACE(c.why);
        {
            const testing::TextLanguage english;
            EXPECT_EQ(c.error.localizedDescription(), c.english);
        }
        const testing::TextLanguage chinese(u"zh"_s);
        EXPECT_EQ(c.error.localizedDescription(), c.chinese);
    }
}

TEST(ConfigSyncError, EqualsOnlyItself) {
    for (std::size_t i = 0; i < errorCases().size(); ++i) {
        for (std::size_t j = 0; j < errorCases().size(); ++j) {
            EXPECT_EQ(errorCases()[i].error == errorCases()[j].error, i == j) << i << ' ' << j;
        }
    }
    EXPECT_NE(ConfigSyncError{ConfigSyncError::HttpStatus{404}}, ConfigSyncError{ConfigSyncError::HttpStatus{500}});
}

} // namespace

} // namespace pelloran
