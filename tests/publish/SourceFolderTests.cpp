#include "publish/SourceFolder.h"

#include "data/WinrateFormats.h"
#include "tests/publish/DataFolder.h"
#include "tests/support/Printing.h"

#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace pelloran {
namespace {

using ::testing::HasSubstr;
using namespace testing;

QStringList pathsOf(const SourceFolder& source) {
    QStringList paths;
    for (const SourceFile& file : source.files) {
        paths.append(file.path);
    }
    return paths;
}

TEST(SourceFolder, TakesTheFilesInTheOrderOfTheirPaths) {
    const DataFolder folder;
    folder.write(cardFile, cards, 1'600'000'000);
    folder.write(classFile, classes);
    folder.write(QStringLiteral("Z.txt"), "z");
    folder.write(QStringLiteral("a/b/c.txt"), "c");
    const auto source = SourceFolder::read(folder.path(), std::nullopt);
    ASSERT_TRUE(source) << source.error().join(u'\n').toStdString();
    EXPECT_EQ(pathsOf(*source),
              (QStringList{QStringLiteral("Z.txt"), QStringLiteral("a/b/c.txt"), cardFile, classFile}));
    EXPECT_EQ(source->files[2], (SourceFile{cardFile, cards, QDateTime::fromSecsSinceEpoch(1'600'000'000, Qt::UTC)}));
}

TEST(SourceFolder, LeavesOutWhatIsNotMeantForPlayers) {
    const DataFolder folder;
    folder.write(cardFile, cards);
    folder.write(QStringLiteral(".content_hash"), "of an installed copy");
    folder.write(QStringLiteral("manifest.json"), "of an installed copy");
    folder.write(QStringLiteral(".git/config"), "secret");
    folder.write(QStringLiteral("winrates/.DS_Store"), "x");
    const auto source = SourceFolder::read(folder.path(), std::nullopt);
    ASSERT_TRUE(source);
    EXPECT_EQ(pathsOf(*source), QStringList{cardFile});
}

TEST(SourceFolder, RefusesWhatClientsWouldRefuse) {
    struct Case {
        const char* why;
        QString path;
        QByteArray bytes;
        const char* problem;
    };

    const Case cases[] = {
        {"no JSON", cardFile, "{", "winrates/all_classes_LAST_7_DAYS.json: "},
        {"no row", cardFile, R"({"cards": []})",
         "winrates/all_classes_LAST_7_DAYS.json: holds no card in any form that is known"},
        {"a row without an id", cardFile, R"({"cards": [{"cost": 1}]})", "winrates/all_classes_LAST_7_DAYS.json: "},
        {"a text for a number", classFile, R"({"classes": [{"player_class": "MAGE", "name_zh": "", "rank": "1"}]})",
         "winrates/class_winrates.json: "},
        {"another card file than the first", QStringLiteral("mage_arena_LAST_7_DAYS.json"), "[]",
         "mage_arena_LAST_7_DAYS.json: "},
        {"names that one folder cannot hold everywhere", QStringLiteral("winrates/Class_winrates.json"), "",
         "differs from another only in case"},
        {"a name that tools print otherwise", QStringLiteral("two\nlines"), "",
         "has a character in its name that is not portable"},
        {"one that is no UTF-8", QFile::decodeName("\xff"), "", "has a character in its name that is not portable"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const DataFolder folder;
        folder.write(cardFile, cards);
        folder.write(classFile, classes);
        folder.write(c.path, c.bytes);
        if (!QFileInfo::exists(folder.path(c.path))) {
            continue; // where the file system has no such names
        }
        const auto source = SourceFolder::read(folder.path(), std::nullopt);
        ASSERT_FALSE(source);
        EXPECT_THAT(source.error().join(u'\n').toStdString(), HasSubstr(c.problem));
    }
}

TEST(SourceFolder, RefusesWhatIsNotAFile) {
    const DataFolder folder;
    folder.write(cardFile, cards);
    ASSERT_TRUE(QFile::link(folder.path(cardFile), folder.path(QStringLiteral("link.json"))));
    ASSERT_TRUE(QFile::link(folder.path(QStringLiteral("nowhere")), folder.path(QStringLiteral("broken"))));
    ASSERT_EQ(::mkfifo(QFile::encodeName(folder.path(QStringLiteral("pipe"))).constData(), 0600), 0);
    const auto source = SourceFolder::read(folder.path(), std::nullopt);
    ASSERT_FALSE(source);
    EXPECT_EQ(source.error(), (QStringList{QStringLiteral("broken: is a link; put the file itself there"),
                                           QStringLiteral("link.json: is a link; put the file itself there"),
                                           QStringLiteral("pipe: is neither a file nor a folder")}));
}

// As an empty one it would be published without what is in it.
TEST(SourceFolder, RefusesAFolderThatMayNotBeRead) {
    const DataFolder folder;
    folder.write(cardFile, cards);
    folder.write(QStringLiteral("more/extra.json"), "{}");
    const QString more = folder.path(QStringLiteral("more"));
    const auto allow =
        qScopeGuard([&] { QFile::setPermissions(more, QFile::ReadUser | QFile::WriteUser | QFile::ExeUser); });
    ASSERT_TRUE(QFile::setPermissions(more, {}));
    if (QFileInfo(more).isReadable()) {
        GTEST_SKIP() << "this user may read everything";
    }
    const auto source = SourceFolder::read(folder.path(), std::nullopt);
    ASSERT_FALSE(source);
    EXPECT_EQ(source.error(), QStringList{QStringLiteral("more: may not be listed and searched")});
}

TEST(SourceFolder, RefusesAFolderThatIsNoData) {
    struct Case {
        const char* why;
        QList<std::pair<QString, QByteArray>> files;
        const char* problem;
    };

    const Case cases[] = {
        {"nothing in it", {}, "no client takes it for data"},
        {"cards where clients read them, but do not look whether there is data",
         {{QStringLiteral("all_classes_LAST_7_DAYS.json"), cards}},
         "no client takes it for data"},
        {"classes alone", {{classFile, classes}}, "no card file"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const DataFolder folder;
        for (const auto& [path, bytes] : c.files) {
            folder.write(path, bytes);
        }
        const auto source = SourceFolder::read(folder.path(), std::nullopt);
        ASSERT_FALSE(source);
        EXPECT_THAT(source.error().join(u'\n').toStdString(), HasSubstr(c.problem));
    }
    const DataFolder folder;
    EXPECT_FALSE(SourceFolder::read(folder.path(QStringLiteral("nowhere")), std::nullopt));
}

TEST(SourceFolder, RemarksOnWhatIsPerhapsNotMeant) {
    struct Case {
        const char* why;
        QString path;
        QByteArray bytes;
        const char* remark;
    };

    const Case cases[] = {
        {"shares for percentages", cardFile, R"({"cards": [{"card_id": "A", "name_en": "a", "deck_win_rate": 0.56}]})",
         "no win rate is above 1"},
        {"the same of classes", classFile, R"({"classes": [{"player_class": "MAGE", "name_zh": "", "win_rate": 0.5}]})",
         "no win rate is above 1"},
        {"more than all", cardFile, R"({"cards": [{"card_id": "A", "name_en": "a", "drawn_win_rate": 100.5}]})",
         "drawn_win_rate of A is 100.5, not from 0 to 100"},
        {"of a card whose name looks like a place for a number", cardFile,
         R"({"cards": [{"card_id": "A%1", "name_en": "a", "drawn_win_rate": 100.5}]})",
         "drawn_win_rate of A%1 is 100.5, not from 0 to 100"},
        {"less than nothing", classFile, R"({"classes": [{"player_class": "MAGE", "name_zh": "", "pick_rate": -1}]})",
         "pick_rate of MAGE is -1, not from 0 to 100"},
        {"an id twice", cardFile, R"({"cards": [{"card_id": "A", "name_en": "a"}, {"card_id": "A", "name_en": "b"}]})",
         "A has more than one row; the first counts"},
        {"no name", cardFile, R"({"cards": [{"card_id": "A", "name_en": ""}]})", "A has no name and will not be found"},
        {"invented figures", cardFile, R"({"time_range": "SAMPLE", "cards": [{"card_id": "A", "name_en": "a"}]})",
         "says of itself that its figures are invented"},
        {"a hero of two classes", classFile,
         R"({"classes": [{"player_class": "Mage", "name_zh": "", "hero_names": ["The Guest"]},
                         {"player_class": "ROGUE", "name_zh": "", "hero_names": ["the guest!"]}]})",
         "\"The Guest\" of MAGE's hero_names tells no class: it is blank, or another class has it too"},
        {"a hero without a letter", classFile,
         R"({"classes": [{"player_class": "MAGE", "name_zh": "", "hero_names": ["?!"]}]})",
         "\"?!\" of MAGE's hero_names tells no class"},
        {"a hero called as another class is", classFile,
         R"({"classes": [{"player_class": "MAGE", "name_zh": "", "hero_names": ["潜行者"]},
                         {"player_class": "ROGUE", "name_zh": "潜行者"}]})",
         "\"潜行者\" of MAGE's hero_names is a name of ROGUE"},
        {"a file nobody reads", QStringLiteral("notes.txt"), "x", "notes.txt: is published too"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const DataFolder folder;
        folder.write(cardFile, cards);
        folder.write(classFile, classes);
        EXPECT_EQ(SourceFolder::read(folder.path(), std::nullopt)->remarks, QStringList());
        folder.write(c.path, c.bytes);
        const auto source = SourceFolder::read(folder.path(), std::nullopt);
        ASSERT_TRUE(source) << source.error().join(u'\n').toStdString();
        EXPECT_THAT(source->remarks.join(u'\n').toStdString(), HasSubstr(c.remark));
    }
    const DataFolder folder;
    folder.write(cardFile, cards);
    folder.write(classFile, R"({"classes": [
        {"player_class": "MAGE", "name_zh": "法师", "hero_names": ["Ada", "mage", "Quill-Mother"]},
        {"player_class": "ROGUE", "name_zh": "", "hero_names": ["Bo Sly"]}]})");
    EXPECT_EQ(SourceFolder::read(folder.path(), std::nullopt)->remarks, QStringList())
        << "heroes that tell their classes, also one that is called as its own";
    ASSERT_TRUE(QFile::remove(folder.path(classFile)));
    EXPECT_THAT(SourceFolder::read(folder.path(), std::nullopt)->remarks.join(u'\n').toStdString(),
                HasSubstr("there is no class file"));
}

TEST(SourceFolder, PutsATableOfCardsInThePlaceOfTheCardFile) {
    const DataFolder folder;
    const DataFolder elsewhere;
    folder.write(cardFile, cards);
    folder.write(classFile, classes);
    elsewhere.write(QStringLiteral("cards.csv"), "card_id,name_en,deck_win_rate\nT,Table Card,60%\n", 1'650'000'000);
    const QString table = elsewhere.path(QStringLiteral("cards.csv"));
    const auto source = SourceFolder::read(folder.path(), table);
    ASSERT_TRUE(source) << source.error().join(u'\n').toStdString();
    ASSERT_EQ(pathsOf(*source), (QStringList{cardFile, classFile}));
    EXPECT_EQ(source->files[0].modified, QDateTime::fromSecsSinceEpoch(1'650'000'000, Qt::UTC));
    const auto decoded = WinrateFile::decode(source->files[0].bytes);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->cards.at(0).cardId, QStringLiteral("T"));
    EXPECT_EQ(decoded->fetchedAt, QStringLiteral("2022-04-15T05:20:00Z"));
    EXPECT_EQ(folder.read(cardFile), cards) << "the operator's own files stay as they are";

    elsewhere.write(QStringLiteral("cards.csv"), "card_id,cost\nT,x\n");
    const auto refused = SourceFolder::read(folder.path(), table);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error(),
              QStringList{table + QStringLiteral(": line 2, column cost: \"x\" is not a whole number")});
    EXPECT_FALSE(SourceFolder::read(folder.path(), elsewhere.path(QStringLiteral("nowhere.csv"))));
}

TEST(SourceFolder, FillsClassesFromListsAndTellsWhatItCouldNot) {
    const DataFolder folder;
    const DataFolder elsewhere;
    folder.write(cardFile, cards);
    folder.write(classFile, classes);
    elsewhere.write(QStringLiteral("enUS.json"), R"([
        {"id": "A"}, {"id": "H1", "type": "HERO", "cardClass": "MAGE", "name": "Ada"},
        {"id": "H2", "type": "HERO", "cardClass": "MAGE", "name": "The Guest"},
        {"id": "H3", "type": "HERO", "cardClass": "ROGUE", "name": "The Guest"}])");
    const auto source = SourceFolder::read(folder.path(), std::nullopt, {elsewhere.path(QStringLiteral("enUS.json"))});
    ASSERT_TRUE(source) << source.error().join(u'\n').toStdString();
    EXPECT_EQ(source->remarks,
              QStringList{classFile +
                          QStringLiteral(": names of heroes of several classes, left out: The Guest (MAGE, ROGUE)")});
    const auto decoded = ClassWinrateFile::decode(source->files[1].bytes);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->classes.at(0).heroNames, std::vector{QStringLiteral("Ada")});
}

} // namespace
} // namespace pelloran
