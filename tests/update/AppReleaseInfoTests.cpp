#include "update/AppReleaseInfo.h"

#include "tests/support/Printing.h"

#include <QJsonDocument>
#include <QJsonParseError>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

const QString server = u"https://updates.example/download"_s;

QString encoded(const std::optional<QUrl>& url) {
    return url ? url->toString(QUrl::FullyEncoded) : u"none"_s;
}

TEST(AppReleaseInfo, DecodesEveryField) {
    const auto release = AppReleaseInfo::decode(R"({
        "name": "Pelloran", "version": " 1.4.2 ", "build": 9007199254740993, "min_macos": "13.0",
        "arch": ["arm64", "x86_64"], "dmg": "Pelloran.dmg", "zip": "Pelloran.zip", "base_url": "https://other.example/",
        "notes": "Notes", "notes_zh": "说明", "notes_en": "", "published_at": "yesterday", "force": true
    })");
    ASSERT_TRUE(release) << release.error().description.toStdString();
    EXPECT_EQ(*release, (AppReleaseInfo{
                            .name = u"Pelloran"_s,
                            .version = u" 1.4.2 "_s,
                            .build = 9007199254740993,
                            .minMacos = u"13.0"_s,
                            .arch = QStringList{u"arm64"_s, u"x86_64"_s},
                            .dmg = u"Pelloran.dmg"_s,
                            .zip = u"Pelloran.zip"_s,
                            .baseURL = u"https://other.example/"_s,
                            .notes = u"Notes"_s,
                            .notesZh = u"说明"_s,
                            .notesEn = u""_s,
                            .publishedAt = u"yesterday"_s,
                            .force = true,
                        }));
}

TEST(AppReleaseInfo, NeedsOnlyItsVersion) {
    const auto release = AppReleaseInfo::decode(R"({"version": "1"})");
    ASSERT_TRUE(release);
    AppReleaseInfo expected;
    expected.version = u"1"_s;
    EXPECT_EQ(*release, expected);
    EXPECT_FALSE(release->isForced());
}

TEST(AppReleaseInfo, IsStrictPerFieldAndLenientPerObject) {
    struct Case {
        const char* why;
        QByteArray json;
        bool accepted;
    };

    const Case cases[] = {
        {"unknown keys of any type", R"({"version": "1", "Version": 2, "more": {"dmg": 3}})", true},
        {"null for every optional field",
         R"({"version": "1", "name": null, "build": null, "min_macos": null, "arch": null, "dmg": null, "zip": null,
             "base_url": null, "notes": null, "notes_zh": null, "notes_en": null, "published_at": null,
             "force": null})",
         true},
        {"an empty version", R"({"version": ""})", true},
        {"the last of two equal keys counts", R"({"version": 1, "version": "1"})", true},
        {"a byte-order mark", "\xEF\xBB\xBF{\"version\": \"1\"}", true},
        {"no version", R"({"name": "Pelloran"})", false},
        {"null for the version", R"({"version": null})", false},
        {"number for the version", R"({"version": 1.4})", false},
        {"number for the name", R"({"version": "1", "name": 1})", false},
        {"text for the build", R"({"version": "1", "build": "12"})", false},
        {"a build of another spelling", R"({"version": "1", "build": 12.0})", true},
        {"half a build", R"({"version": "1", "build": 12.5})", false},
        {"a build beyond 64 bits", R"({"version": "1", "build": 9223372036854775808})", false},
        {"truth for the build", R"({"version": "1", "build": true})", false},
        {"number for the system", R"({"version": "1", "min_macos": 13})", false},
        {"text for the processors", R"({"version": "1", "arch": "arm64"})", false},
        {"no processors", R"({"version": "1", "arch": []})", true},
        {"a number among the processors", R"({"version": "1", "arch": ["arm64", 64]})", false},
        {"null among the processors", R"({"version": "1", "arch": [null]})", false},
        {"array for the disk image", R"({"version": "1", "dmg": ["a.dmg"]})", false},
        {"truth for the archive", R"({"version": "1", "zip": false})", false},
        {"object for the base", R"({"version": "1", "base_url": {}})", false},
        {"number for the notes", R"({"version": "1", "notes": 0})", false},
        {"array for the Chinese notes", R"({"version": "1", "notes_zh": []})", false},
        {"array for the English notes", R"({"version": "1", "notes_en": []})", false},
        {"number for the time", R"({"version": "1", "published_at": 1700000000})", false},
        {"number for force", R"({"version": "1", "force": 1})", false},
        {"text for force", R"({"version": "1", "force": "true"})", false},
        {"nothing", "", false},
        {"space", " \n", false},
        {"cut", R"({"version": "1)", false},
        {"more after the end", R"({"version": "1"} {})", false},
        {"a page of a proxy", "<!DOCTYPE html><html></html>", false},
        {"an array", R"([{"version": "1"}])", false},
        {"a bare text", R"("1.4.2")", false},
        {"null", "null", false},
        {"not UTF-8", "{\"version\": \"1\xff\"}", false},
        {"zeros", QByteArray(64, '\0'), false},
        {"too deep", QByteArray(100'000, '['), false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const auto release = AppReleaseInfo::decode(c.json);
        EXPECT_EQ(release.has_value(), c.accepted);
        EXPECT_TRUE(release || !release.error().description.isEmpty());
    }
}

TEST(AppReleaseInfo, SaysWhatIsWrongWithTheFile) {
    struct Case {
        const char* why;
        QByteArray json;
        QString description;
    };

    const Case cases[] = {
        {"missing", "{}", u"version is missing"_s},
        {"of another type", R"({"version": 1})", u"version is not a text"_s},
        {"number", R"({"version": "1", "build": "12"})", u"build is not a whole number"_s},
        {"texts", R"({"version": "1", "arch": "arm64"})", u"arch is not an array of texts"_s},
        {"truth", R"({"version": "1", "force": 1})", u"force is not true or false"_s},
        {"the first of several, in the order of the fields", R"({"version": "1", "force": 1, "dmg": 2, "name": 3})",
         u"name is not a text"_s},
        {"no object", "[]", u"the file is not an object"_s},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const auto release = AppReleaseInfo::decode(c.json);
        ASSERT_FALSE(release);
        EXPECT_EQ(release.error().description, c.description);
    }
}

TEST(AppReleaseInfo, SaysWhereTheFileIsNoJson) {
    const QByteArray json = R"({"version": })";
    QJsonParseError error;
    QJsonDocument::fromJson(json, &error);
    const auto release = AppReleaseInfo::decode(json);
    ASSERT_FALSE(release);
    EXPECT_EQ(release.error().description, error.errorString() + u" at byte "_s + QString::number(error.offset));
}

TEST(AppReleaseInfo, FindsWhereAPathLeads) {
    struct Case {
        const char* why;
        std::optional<QString> base;
        std::optional<QString> path;
        QString expected;
    };

    const auto none = std::nullopt;
    const Case cases[] = {
        {"no path", none, none, u"none"_s},
        {"an empty path", none, u""_s, u"none"_s},
        {"below the server", none, u"a.dmg"_s, u"https://updates.example/download/a.dmg"_s},
        {"a base that ends in a slash", u"https://o.example/dl/"_s, u"pkg/a.dmg"_s,
         u"https://o.example/dl/pkg/a.dmg"_s},
        {"many slashes at both ends", u"//https://o.example/dl///"_s, u"a.dmg"_s, u"https://o.example/dl/a.dmg"_s},
        {"slashes within stay", u"https://o.example//dl"_s, u"a.dmg"_s, u"https://o.example//dl/a.dmg"_s},
        {"a path that begins with a slash", none, u"/a.dmg"_s, u"https://updates.example/download//a.dmg"_s},
        {"up the tree is left to the server", none, u"../a.dmg"_s, u"https://updates.example/download/../a.dmg"_s},
        {"a link of its own", u"https://o.example/"_s, u"https://cdn.example/a.dmg"_s, u"https://cdn.example/a.dmg"_s},
        {"without encryption", none, u"http://cdn.example/a.dmg?x=1#y"_s, u"http://cdn.example/a.dmg?x=1#y"_s},
        {"its slashes stay", none, u"https://cdn.example/a//"_s, u"https://cdn.example/a//"_s},
        {"upper case is no beginning of a link", none, u"HTTP://cdn.example/a"_s,
         u"https://updates.example/download/HTTP://cdn.example/a"_s},
        {"nor is another scheme", none, u"file:///etc/passwd"_s,
         u"https://updates.example/download/file:///etc/passwd"_s},
        {"nor space before it", none, u" https://cdn.example/a"_s, u"none"_s},
        {"an empty base is a base", u""_s, u"a.dmg"_s, u"/a.dmg"_s},
        {"so is one of slashes", u"//"_s, u"a.dmg"_s, u"/a.dmg"_s},
        {"a base without a scheme", u"o.example/dl"_s, u"a.dmg"_s, u"o.example/dl/a.dmg"_s},
        {"a base of another scheme", u"ftp://o.example"_s, u"a.dmg"_s, u"ftp://o.example/a.dmg"_s},
        {"other letters", none, u"炉石.dmg"_s, u"https://updates.example/download/%E7%82%89%E7%9F%B3.dmg"_s},
        {"encoded already", none, u"a%20b.dmg"_s, u"https://updates.example/download/a%20b.dmg"_s},
        {"a space is not mended", none, u"a b.dmg"_s, u"none"_s},
        {"nor half an encoding", none, u"a%2.dmg"_s, u"none"_s},
        {"nor brackets", none, u"<a>.dmg"_s, u"none"_s},
        {"nor a line break", none, u"a\n.dmg"_s, u"none"_s},
        {"an impossible port", none, u"https://cdn.example:99999/a"_s, u"none"_s},
        {"an impossible base", u"https://o example"_s, u"a.dmg"_s, u"none"_s},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        AppReleaseInfo release;
        release.baseURL = c.base;
        EXPECT_EQ(encoded(release.absoluteURL(c.path, server)), c.expected);
        release.dmg = c.path;
        EXPECT_EQ(release.dmgURL(server), release.absoluteURL(c.path, server));
        EXPECT_EQ(release.zipURL(server), std::nullopt);
        release.zip = c.path;
        EXPECT_EQ(release.zipURL(server), release.absoluteURL(c.path, server));
    }
}

TEST(AppReleaseInfo, PrefersTheDiskImage) {
    struct Case {
        const char* why;
        std::optional<QString> dmg;
        std::optional<QString> zip;
        QString expected;
    };

    const Case cases[] = {
        {"both", u"a.dmg"_s, u"a.zip"_s, u"https://updates.example/download/a.dmg"_s},
        {"the image alone", u"a.dmg"_s, std::nullopt, u"https://updates.example/download/a.dmg"_s},
        {"the archive alone", std::nullopt, u"a.zip"_s, u"https://updates.example/download/a.zip"_s},
        {"an empty image", u""_s, u"a.zip"_s, u"https://updates.example/download/a.zip"_s},
        {"an impossible image", u"a b.dmg"_s, u"a.zip"_s, u"https://updates.example/download/a.zip"_s},
        {"neither", std::nullopt, std::nullopt, u"none"_s},
        {"two empty ones", u""_s, u""_s, u"none"_s},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        AppReleaseInfo release;
        release.dmg = c.dmg;
        release.zip = c.zip;
        EXPECT_EQ(encoded(release.preferredDownloadURL(server)), c.expected);
    }
}

} // namespace

} // namespace pelloran
