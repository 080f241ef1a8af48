#include "sync/RemoteManifest.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

TEST(RemoteManifest, TakesEveryField) {
    const auto manifest = RemoteManifest::fromJson(R"({
        "version": 3, "hash": "abc", "bundle": "b.tgz", "bundle_sha256": "0f", "updated_at": "today",
        "file_count": 2, "files": {"a": "1", "b": "2"}, "more": [1]})");
    ASSERT_TRUE(manifest);
    EXPECT_EQ(manifest->version, 3);
    EXPECT_EQ(manifest->hash, u"abc"_s);
    EXPECT_EQ(manifest->bundle, u"b.tgz"_s);
    EXPECT_EQ(manifest->bundleSha256, u"0f"_s);
    EXPECT_EQ(manifest->updatedAt, u"today"_s);
    EXPECT_EQ(manifest->fileCount, 2);
    EXPECT_EQ(manifest->files, (QMap<QString, QString>{{u"a"_s, u"1"_s}, {u"b"_s, u"2"_s}}));
}

TEST(RemoteManifest, NeedsNothingButAHash) {
    const RemoteManifest expected{.version = {},
                                  .hash = u"abc"_s,
                                  .bundle = {},
                                  .bundleSha256 = {},
                                  .updatedAt = {},
                                  .fileCount = {},
                                  .files = {}};
    EXPECT_EQ(RemoteManifest::fromJson(R"({"hash": "abc"})"), expected);
    EXPECT_EQ(RemoteManifest::fromJson(R"({"hash": "abc", "version": null, "bundle": null, "bundle_sha256": null,
                                           "updated_at": null, "file_count": null, "files": null})"),
              expected);
}

TEST(RemoteManifest, WritesWhatItReads) {
    const RemoteManifest everything{.version = 3,
                                    .hash = u"abc"_s,
                                    .bundle = u"b.tgz"_s,
                                    .bundleSha256 = u"0f"_s,
                                    .updatedAt = u"today"_s,
                                    .fileCount = 2,
                                    .files = QMap<QString, QString>{{u"a/b"_s, u"1"_s}, {u"é"_s, u"2"_s}}};
    EXPECT_EQ(RemoteManifest::fromJson(everything.toJson()), everything) << everything.toJson().toStdString();
    RemoteManifest least;
    least.hash = u"abc"_s;
    EXPECT_EQ(least.toJson(), "{\n    \"hash\": \"abc\"\n}\n") << "what is absent is left out";
}

TEST(RemoteManifest, NamesTheBundle) {
    struct Case {
        const char* why;
        const char* json;
        QString expected;
    };

    const Case cases[] = {
        {"absent", R"({"hash": "h"})", u"config.tar.gz"_s},
        {"null", R"({"hash": "h", "bundle": null})", u"config.tar.gz"_s},
        {"given", R"({"hash": "h", "bundle": "x/y.tgz"})", u"x/y.tgz"_s},
        {"empty is not absent", R"({"hash": "h", "bundle": ""})", u""_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto manifest = RemoteManifest::fromJson(c.json);
        ASSERT_TRUE(manifest);
        EXPECT_EQ(manifest->bundleName(), c.expected);
    }
}

TEST(RemoteManifest, KeepsTheHashAsItStands) {
    EXPECT_EQ(RemoteManifest::fromJson(R"({"hash": " a\n"})")->hash, u" a\n"_s);
}

TEST(RemoteManifest, RefusesAnEmptyHash) {
    EXPECT_EQ(RemoteManifest::fromJson(R"({"hash": ""})").error(), ConfigSyncError{ConfigSyncError::InvalidManifest{}});
}

TEST(RemoteManifest, RefusesWhatItCannotDecode) {
    struct Case {
        const char* why;
        const char* json;
        QString description; // how it begins
    };

    const Case cases[] = {
        {"nothing", "", u"illegal value at byte 0"_s},
        {"a web page", "<html></html>", u"illegal value"_s},
        {"cut off", R"({"hash": "abc")", u"unterminated string"_s},
        {"an array", R"(["hash"])", u"the manifest is not an object"_s},
        {"no hash", R"({"version": 1})", u"hash is not a text"_s},
        {"hash null", R"({"hash": null})", u"hash is not a text"_s},
        {"hash a number", R"({"hash": 1})", u"hash is not a text"_s},
        {"version a text", R"({"hash": "h", "version": "1"})", u"version is not a whole number"_s},
        {"version a fraction", R"({"hash": "h", "version": 1.5})", u"version is not a whole number"_s},
        {"version beyond 64 bits", R"({"hash": "h", "version": 1e30})", u"version is not a whole number"_s},
        {"bundle a number", R"({"hash": "h", "bundle": 1})", u"bundle is not a text"_s},
        {"digest a truth value", R"({"hash": "h", "bundle_sha256": false})", u"bundle_sha256 is not a text"_s},
        {"time a number", R"({"hash": "h", "updated_at": 5})", u"updated_at is not a text"_s},
        {"count a text", R"({"hash": "h", "file_count": "5"})", u"file_count is not a whole number"_s},
        {"files an array", R"({"hash": "h", "files": ["a"]})", u"files is not an object of texts"_s},
        {"a file's digest a number", R"({"hash": "h", "files": {"a": 1}})", u"files is not an object of texts"_s},
        {"an empty hash, but mistyped besides", R"({"hash": "", "version": "1"})", u"version is not"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const auto manifest = RemoteManifest::fromJson(c.json);
        ASSERT_FALSE(manifest);
        const auto* error = std::get_if<ConfigSyncError::Platform>(&manifest.error().reason);
        ASSERT_TRUE(error);
        EXPECT_TRUE(error->description.startsWith(c.description)) << error->description.toStdString();
    }
}

} // namespace

} // namespace pelloran
