#include "publish/ReleaseDescription.h"

#include "tests/publish/DataFolder.h"
#include "tests/support/Printing.h"
#include "update/AppReleaseInfo.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace pelloran {
namespace {

using namespace testing;

const QString server = u"https://u.example/download"_s;

class ReleaseDescription : public ::testing::Test {
protected:
    ReleaseDescription() {
        folder.write(u"Pelloran-1.4.2.dmg"_s, "image");
        folder.write(u"Pelloran-1.4.2.zip"_s, "archive");
    }

    // The least that is a release.
    ReleaseParts least() const {
        ReleaseParts parts;
        parts.version = u"1.4.2"_s;
        parts.dmgFile = folder.path(u"Pelloran-1.4.2.dmg"_s);
        return parts;
    }

    DataFolder folder;
};

TEST_F(ReleaseDescription, IsWhatClientsDecode) {
    folder.write(u"notes"_s, "All\n");
    folder.write(u"zh"_s, "\xEF\xBB\xBF说明\n");
    folder.write(u"en"_s, "  Two\nlines\n\n");
    ReleaseParts parts = least();
    parts.name = u"Pelloran"_s;
    parts.build = 17;
    parts.minMacos = u"13.4"_s;
    parts.arch = QStringList{u"arm64"_s, u"x86_64"_s};
    parts.zipFile = folder.path(u"Pelloran-1.4.2.zip"_s);
    parts.baseURL = u"https://cdn.example/dl/"_s;
    parts.notesFile = folder.path(u"notes"_s);
    parts.notesZhFile = folder.path(u"zh"_s);
    parts.notesEnFile = folder.path(u"en"_s);
    parts.publishedAt = u"2026-11-22"_s;
    parts.force = true;
    const auto json = releaseDescription(parts, server);
    ASSERT_TRUE(json) << json.error().join(u'\n').toStdString();
    const auto release = AppReleaseInfo::decode(*json);
    ASSERT_TRUE(release);
    EXPECT_EQ(*release, (AppReleaseInfo{
                            .name = u"Pelloran"_s,
                            .version = u"1.4.2"_s,
                            .build = 17,
                            .minMacos = u"13.4"_s,
                            .arch = QStringList{u"arm64"_s, u"x86_64"_s},
                            .dmg = u"Pelloran-1.4.2.dmg"_s,
                            .zip = u"Pelloran-1.4.2.zip"_s,
                            .baseURL = u"https://cdn.example/dl/"_s,
                            .notes = u"All"_s,
                            .notesZh = u"说明"_s,
                            .notesEn = u"Two\nlines"_s,
                            .publishedAt = u"2026-11-22"_s,
                            .force = true,
                        }));
    EXPECT_EQ(release->preferredDownloadURL(server), QUrl(u"https://cdn.example/dl/Pelloran-1.4.2.dmg"_s));
}

TEST_F(ReleaseDescription, LeavesOutWhatIsNotSaid) {
    const auto json = releaseDescription(least(), server);
    ASSERT_TRUE(json) << json.error().join(u'\n').toStdString();
    EXPECT_EQ(QJsonDocument::fromJson(*json).object(),
              (QJsonObject{{u"version"_s, u"1.4.2"_s}, {u"dmg"_s, u"Pelloran-1.4.2.dmg"_s}}));
    EXPECT_TRUE(json->endsWith("}\n")) << "a text file ends with a line end";
    ReleaseParts archive = least();
    archive.zipFile = std::exchange(archive.dmgFile, std::nullopt);
    EXPECT_TRUE(releaseDescription(archive, server)) << "an archive alone is something to download";
}

TEST_F(ReleaseDescription, TakesVersionsThatMeanWhatTheySay) {
    struct Case {
        const char* why;
        QString version;
        bool accepted;
    };

    const Case cases[] = {
        {"usual", u"1.4.2"_s, true},
        {"one number", u"2"_s, true},
        {"two digits", u"1.10"_s, true},
        {"zeros at the end", u"2.0.0"_s, true},
        {"before the first", u"0.1.0"_s, true},
        {"as large as numbers get", u"9223372036854775807"_s, true},
        {"nothing", u""_s, false},
        {"space", u" "_s, false},
        {"space at the end, which clients trim in one place only", u"1.4.2 "_s, false},
        {"0.0 for clients", u"v2.0"_s, false},
        {"1.2 for clients, which have 1.2 already", u"1.2rc1"_s, false},
        {"1.2.3 for clients", u"1.2.3-beta"_s, false},
        {"two dots", u"1..2"_s, false},
        {"a dot at the end", u"1.2."_s, false},
        {"a dot at the beginning", u".2"_s, false},
        {"a zero in front", u"1.02"_s, false},
        {"digits of another script", u"１.２"_s, false},
        {"a number that is too large", u"9223372036854775808"_s, false},
        {"below zero", u"-1"_s, false},
        {"newer than nothing", u"0.0"_s, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        ReleaseParts parts = least();
        parts.version = c.version;
        const auto json = releaseDescription(parts, server);
        EXPECT_EQ(json.has_value(), c.accepted);
        if (!json) {
            EXPECT_EQ(json.error().size(), 1) << json.error().join(u'\n').toStdString();
        }
    }
}

TEST_F(ReleaseDescription, RefusesWhatClientsCouldNotUse) {
    folder.write(u"empty.dmg"_s, "");
    folder.write(u"a b.dmg"_s, "image");
    folder.write(u"a#b.dmg"_s, "image");
    folder.write(u"a?b.dmg"_s, "image");
    folder.write(u"a%41.dmg"_s, "image");
    folder.write(u"a%4.dmg"_s, "image");
    folder.write(u"炉石.dmg"_s, "image");
    folder.write(u"blank"_s, " \n");
    folder.write(u"latin1"_s, "\xE9t\xE9");
    folder.write(u"long"_s, QByteArray(qsizetype{1024} * 1024, 'x'));
    using Change = void (*)(ReleaseParts&, const DataFolder&);

    struct Case {
        const char* why;
        Change change;
        QString mentions; // "": accepted
    };

    const Case cases[] = {
        {"as it is", [](ReleaseParts&, const DataFolder&) {}, u""_s},
        {"nothing to download", [](ReleaseParts& parts, const DataFolder&) { parts.dmgFile.reset(); }, u"needs"_s},
        {"no such image", [](ReleaseParts& parts, const DataFolder& in) { parts.dmgFile = in.path(u"no.dmg"_s); },
         u"no.dmg: no such file"_s},
        {"no such archive beside an image",
         [](ReleaseParts& parts, const DataFolder& in) { parts.zipFile = in.path(u"no.zip"_s); },
         u"no.zip: no such file"_s},
        {"a folder", [](ReleaseParts& parts, const DataFolder& in) { parts.dmgFile = in.path(); }, u"no such file"_s},
        {"an empty image", [](ReleaseParts& parts, const DataFolder& in) { parts.dmgFile = in.path(u"empty.dmg"_s); },
         u"empty"_s},
        {"a space in the name",
         [](ReleaseParts& parts, const DataFolder& in) { parts.dmgFile = in.path(u"a b.dmg"_s); }, u"is no URL"_s},
        {"a name that would end early",
         [](ReleaseParts& parts, const DataFolder& in) { parts.dmgFile = in.path(u"a#b.dmg"_s); }, u"not a link to"_s},
        {"a name that would end in a question",
         [](ReleaseParts& parts, const DataFolder& in) { parts.dmgFile = in.path(u"a?b.dmg"_s); }, u"not a link to"_s},
        {"a name that would be decoded",
         [](ReleaseParts& parts, const DataFolder& in) { parts.dmgFile = in.path(u"a%41.dmg"_s); }, u"not a link to"_s},
        {"half an encoding in the name",
         [](ReleaseParts& parts, const DataFolder& in) { parts.dmgFile = in.path(u"a%4.dmg"_s); }, u"is no URL"_s},
        {"other letters in the name",
         [](ReleaseParts& parts, const DataFolder& in) { parts.dmgFile = in.path(u"炉石.dmg"_s); }, u""_s},
        {"an empty base", [](ReleaseParts& parts, const DataFolder&) { parts.baseURL = u""_s; }, u"no http"_s},
        {"a base without a scheme", [](ReleaseParts& parts, const DataFolder&) { parts.baseURL = u"o.example/dl"_s; },
         u"no http"_s},
        {"a base of another scheme",
         [](ReleaseParts& parts, const DataFolder&) { parts.baseURL = u"ftp://o.example"_s; }, u"no http"_s},
        {"a base without a host", [](ReleaseParts& parts, const DataFolder&) { parts.baseURL = u"https:dl"_s; },
         u"no http"_s},
        {"a base with a space",
         [](ReleaseParts& parts, const DataFolder&) { parts.baseURL = u"https://o.example/d l"_s; }, u"is no URL"_s},
        {"an impossible port", [](ReleaseParts& parts, const DataFolder&) { parts.baseURL = u"https://o.example:x"_s; },
         u"is no URL"_s},
        {"a base without encryption",
         [](ReleaseParts& parts, const DataFolder&) { parts.baseURL = u"http://[::1]:80"_s; }, u""_s},
        {"a base that asks a question",
         [](ReleaseParts& parts, const DataFolder&) { parts.baseURL = u"https://o.example/?f="_s; },
         u"not a link to"_s},
        {"a build below zero", [](ReleaseParts& parts, const DataFolder&) { parts.build = -1; }, u"build"_s},
        {"a system by name", [](ReleaseParts& parts, const DataFolder&) { parts.minMacos = u"Ventura"_s; }, u"macOS"_s},
        {"a processor by another name",
         [](ReleaseParts& parts, const DataFolder&) { parts.arch = QStringList{u"arm64"_s, u"amd64"_s}; }, u"amd64"_s},
        {"a blank name", [](ReleaseParts& parts, const DataFolder&) { parts.name = u" "_s; }, u"name"_s},
        {"notes that are not there",
         [](ReleaseParts& parts, const DataFolder& in) { parts.notesFile = in.path(u"none"_s); }, u"cannot be read"_s},
        {"blank notes", [](ReleaseParts& parts, const DataFolder& in) { parts.notesZhFile = in.path(u"blank"_s); },
         u"blank"_s},
        {"notes in another encoding",
         [](ReleaseParts& parts, const DataFolder& in) { parts.notesEnFile = in.path(u"latin1"_s); }, u"UTF-8"_s},
        {"more than clients read",
         [](ReleaseParts& parts, const DataFolder& in) { parts.notesEnFile = in.path(u"long"_s); }, u"1048576 bytes"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        ReleaseParts parts = least();
        c.change(parts, folder);
        const auto json = releaseDescription(parts, server);
        EXPECT_EQ(json.has_value(), c.mentions.isEmpty());
        if (!json) {
            EXPECT_TRUE(json.error().join(u'\n').contains(c.mentions)) << json.error().join(u'\n').toStdString();
        }
    }
}

TEST_F(ReleaseDescription, TellsAllThatIsWrong) {
    ReleaseParts parts;
    parts.version = u"v1"_s;
    parts.dmgFile = folder.path(u"no.dmg"_s);
    parts.notesFile = folder.path(u"none"_s);
    const auto json = releaseDescription(parts, server);
    ASSERT_FALSE(json);
    EXPECT_EQ(json.error().size(), 3) << json.error().join(u'\n').toStdString();
}

} // namespace
} // namespace pelloran
