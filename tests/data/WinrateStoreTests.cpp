#include "data/WinrateStore.h"

#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/fakes/FakeSystemSettings.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/support/Printing.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <thread>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

class WinrateStoreTest : public ::testing::Test {
public:
    WinrateStoreTest() { AppLanguage::configure(&defaults, &settings); }

    ~WinrateStoreTest() override { AppLanguage::configure(nullptr, nullptr); }

protected:
    // Below the folder that stands for everything; returns the path.
    QString write(const QString& relative, const QByteArray& content) const {
        const QString path = folder.filePath(relative);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        EXPECT_TRUE(file.open(QFile::WriteOnly));
        file.write(content);
        return path;
    }

    static QByteArray cardFile(const QByteArray& id) {
        return R"({"player_class": "MAGE", "time_range": "LAST_7_DAYS", "cards": [{"card_id": ")" + id + R"("}]})";
    }

    QTemporaryDir folder;
    testing::FakeUserDefaults defaults;
    testing::FakeSystemSettings settings;
    testing::FakeApplicationFiles files{folder.path()};
    WinrateStore store{files};
};

TEST_F(WinrateStoreTest, StartsEmpty) {
    EXPECT_TRUE(store.byId().empty());
    EXPECT_TRUE(store.names().empty());
    EXPECT_TRUE(store.classesByKey().empty());
    EXPECT_TRUE(store.classNames().empty());
    EXPECT_EQ(store.metaDescription(), u""_s);
    EXPECT_EQ(store.classMeta(), u""_s);
    EXPECT_EQ(store.cardsSourceDescription(), u""_s);
    EXPECT_FALSE(store.holdsSampleData());
    EXPECT_EQ(store.stats(u"A"_s), std::nullopt);
    EXPECT_EQ(store.classStats(u"MAGE"_s), std::nullopt);
    EXPECT_EQ(store.matchName({u"Fireball"_s}), std::nullopt);
    EXPECT_EQ(store.matchClass({u"Mage"_s}), std::nullopt);
    EXPECT_TRUE(store.cardLexicon()->isEmpty());
    EXPECT_TRUE(store.classLexicon()->isEmpty());
}

// Every place of the card file, the first to be looked at first.
const QStringList& cardPlaces() {
    static const QStringList relative{
        u"winrates/all_classes_LAST_7_DAYS.json"_s,
        u"all_classes_LAST_7_DAYS.json"_s,
        u"mage_arena_LAST_7_DAYS.json"_s,
        u"winrates/MAGE_LAST_7_DAYS.json"_s,
        u"Resources/mage_arena_LAST_7_DAYS.json"_s,
        u"Resources/winrates/MAGE_LAST_7_DAYS.json"_s,
        u"Resources/winrates/all_classes_LAST_7_DAYS.json"_s,
    };
    static const QStringList places = [] {
        QStringList all;
        for (const QString& each : relative) {
            all += u"support/Pelloran/config/"_s + each;
        }
        all += {u"resources/winrates/all_classes_LAST_7_DAYS.json"_s, u"resources/all_classes_LAST_7_DAYS.json"_s,
                u"resources/mage_arena_LAST_7_DAYS.json"_s, u"resources/winrates/MAGE_LAST_7_DAYS.json"_s};
        // One of the last of these folders is inside another: its places come up in the other's as well.
        for (const QString& each :
             {u"program/bin/"_s, u"program/"_s, u"home/workbench/pelloran_macos/"_s,
              u"home/workbench/pelloran_macos/Resources/"_s, u"home/workbench/hsreplay_dump/arena_LAST_7_DAYS/"_s}) {
            for (const QString& place : relative) {
                if (!all.contains(each + place)) {
                    all += each + place;
                }
            }
        }
        return all;
    }();
    return places;
}

TEST_F(WinrateStoreTest, LooksForTheCardFileInAFixedOrder) {
    for (const QString& place : cardPlaces()) {
        write(place, cardFile("A"));
    }
    for (const QString& place : cardPlaces()) {
        SCOPED_TRACE(place.toStdString());
        ASSERT_TRUE(store.loadFromBundle());
        EXPECT_EQ(store.cardsSourceDescription(), folder.filePath(place));
        QFile::remove(folder.filePath(place));
    }
    const auto loaded = store.loadFromBundle();
    ASSERT_FALSE(loaded);
    EXPECT_EQ(loaded.error(), (DataError{u"Pelloran"_s, 1, u"winrate JSON not found in cache, bundle or Resources"_s}));
    EXPECT_EQ(store.cardsSourceDescription(), folder.filePath(cardPlaces().last()));
    EXPECT_TRUE(store.stats(u"A"_s)) << "the data in service stays";
}

TEST_F(WinrateStoreTest, LooksForTheClassFileInAFixedOrder) {
    write(cardPlaces().first(), cardFile("A"));
    QStringList places;
    const QStringList relative{u"winrates/class_winrates.json"_s, u"class_winrates.json"_s,
                               u"Resources/winrates/class_winrates.json"_s};
    for (const QString& each : relative) {
        places += u"support/Pelloran/config/"_s + each;
    }
    places += {u"resources/winrates/class_winrates.json"_s, u"resources/class_winrates.json"_s};
    for (const QString& each :
         {u"program/bin/"_s, u"program/"_s, u"home/workbench/pelloran_macos/"_s,
          u"home/workbench/pelloran_macos/Resources/"_s, u"home/workbench/hsreplay_dump/arena_LAST_7_DAYS/"_s}) {
        for (const QString& place : relative) {
            if (!places.contains(each + place)) {
                places += each + place;
            }
        }
    }
    for (const QString& place : std::as_const(places)) {
        write(place, "{\"fetched_at\": \"" + place.toUtf8() + "\", \"classes\": []}");
    }
    for (const QString& place : std::as_const(places)) {
        ASSERT_TRUE(store.loadFromBundle());
        EXPECT_EQ(store.classMeta(), u"classes 0 / "_s + place);
        QFile::remove(folder.filePath(place));
    }
    EXPECT_TRUE(store.loadFromBundle());
    EXPECT_EQ(store.classMeta(), u"classes 0 / "_s + places.last()) << "no class file: classes stay";
}

TEST_F(WinrateStoreTest, PassesOverFoldersOfThatName) {
    QDir().mkpath(folder.filePath(cardPlaces().first()));
    write(cardPlaces()[2], cardFile("A"));
    ASSERT_TRUE(store.loadFromBundle());
    EXPECT_EQ(store.cardsSourceDescription(), folder.filePath(cardPlaces()[2]));
}

TEST_F(WinrateStoreTest, IndexesCards) {
    ASSERT_TRUE(store.loadCards(write(u"cards.json"_s, R"({
        "player_class": "MAGE", "time_range": "LAST_7_DAYS", "cards": [
            {"card_id": "A", "name_zh": "火球术", "name_en": "Fireball", "deck_win_rate": 55.3},
            {"card_id": "B", "name_en": "Frost Bolt!", "name_zh": ""},
            {"card_id": "A", "name_zh": "大火球", "name_en": "Big Fireball", "deck_win_rate": 1},
            {"card_id": "C", "name_en": "123"},
            {"card_id": "D"}
        ]})")));
    EXPECT_EQ(store.byId().size(), 4U);
    EXPECT_EQ(store.stats(u"A"_s).value().deckWinRate, 55.3) << "the first row of an identifier";
    EXPECT_EQ(store.stats(u"a"_s), std::nullopt) << "identifiers go by case";
    const std::vector<CardName> names{
        {u"火球术"_s, u"A"_s, u"火球术"_s},
        {u"fireball"_s, u"A"_s, u"Fireball"_s},
        {u"frostbolt"_s, u"B"_s, u"Frost Bolt!"_s},
        {u"大火球"_s, u"A"_s, u"大火球"_s},
        {u"bigfireball"_s, u"A"_s, u"Big Fireball"_s},
        {u""_s, u"C"_s, u"123"_s},
    };
    EXPECT_EQ(store.names(), names);
    EXPECT_EQ(store.metaDescription(), u"MAGE / LAST_7_DAYS / 4 cards"_s);
    EXPECT_EQ(store.matchName({u"nothing like it"_s, u"Frostbo1t"_s}),
              (CardMatch{u"B"_s, 0.8 + 0.15 * (8.0 / 9), u"Frostbo1t"_s}));
    EXPECT_TRUE(store.cardLexicon()->contains(u" FIREBALL (4)"_s));
    EXPECT_EQ(store.cardsSourceDescription(), u""_s) << "only a search sets it";
}

TEST_F(WinrateStoreTest, IndexesClasses) {
    ASSERT_TRUE(store.loadClasses(write(u"classes.json"_s, R"({
        "fetched_at": "2026-04-01", "classes": [
            {"player_class": "mage", "name_zh": "旧法师", "name_en": "Old Mage", "win_rate": 1},
            {"player_class": "SHAMAN", "name_zh": "萨满祭司"},
            {"player_class": "MAGE", "name_zh": "法师", "name_en": "Wizard", "win_rate": 50.5}
        ]})")));
    ASSERT_EQ(store.classesByKey().size(), 2U);
    EXPECT_EQ(store.classStats(u"mage"_s).value().winRate, 50.5) << "the last row of a class";
    EXPECT_EQ(store.classStats(u"Mage"_s), store.classStats(u"MAGE"_s));
    EXPECT_EQ(store.classStats(u"ROGUE"_s), std::nullopt);
    const std::vector<ClassName> names{
        {u"旧法师"_s, u"MAGE"_s, u"Old Mage"_s},   {u"mage"_s, u"MAGE"_s, u"Old Mage"_s},
        {u"oldmage"_s, u"MAGE"_s, u"Old Mage"_s},  {u"萨满祭司"_s, u"SHAMAN"_s, u"Shaman"_s},
        {u"shaman"_s, u"SHAMAN"_s, u"Shaman"_s},   {u"shaman"_s, u"SHAMAN"_s, u"Shaman"_s},
        {u"法师"_s, u"MAGE"_s, u"Wizard"_s},       {u"mage"_s, u"MAGE"_s, u"Wizard"_s},
        {u"wizard"_s, u"MAGE"_s, u"Wizard"_s},     {u"萨满"_s, u"SHAMAN"_s, u"Shaman"_s},
        {u"萨满祭司"_s, u"SHAMAN"_s, u"Shaman"_s}, {u"法"_s, u"MAGE"_s, u"Wizard"_s},
    };
    EXPECT_EQ(store.classNames(), names);
    EXPECT_EQ(store.classMeta(), u"classes 2 / 2026-04-01"_s);
    EXPECT_EQ(store.matchClass({u"WIZARD"_s}), (ClassMatch{u"MAGE"_s, 1, u"WIZARD"_s}));
}

TEST_F(WinrateStoreTest, AddsTheNicknamesOfAllClassesInOrder) {
    QByteArray rows;
    for (const char* key : {"DEATHKNIGHT", "DEMONHUNTER", "DRUID", "HUNTER", "MAGE", "PALADIN", "PRIEST", "ROGUE",
                            "SHAMAN", "WARLOCK", "WARRIOR"}) {
        rows += (rows.isEmpty() ? "" : ",") + QByteArray("{\"player_class\": \"") + key + "\", \"name_zh\": \"\"}";
    }
    settings.languages = QStringList{u"zh-Hans"_s};
    ASSERT_TRUE(store.loadClasses(write(u"classes.json"_s, "{\"classes\": [" + rows + "]}")));
    EXPECT_EQ(store.classMeta(), u"classes 11 / ?"_s);
    QStringList nicknames;
    for (std::size_t i = 33; i < store.classNames().size(); ++i) {
        nicknames += store.classNames()[i].norm + u' ' + store.classNames()[i].key;
    }
    const QStringList expected{
        u"萨满 SHAMAN"_s,      u"萨满祭司 SHAMAN"_s, u"瞎 DEMONHUNTER"_s, u"dh DEMONHUNTER"_s, u"dk DEATHKNIGHT"_s,
        u"死骑 DEATHKNIGHT"_s, u"德 DRUID"_s,        u"猎 HUNTER"_s,      u"法 MAGE"_s,        u"骑 PALADIN"_s,
        u"牧 PRIEST"_s,        u"贼 ROGUE"_s,        u"术 WARLOCK"_s,     u"战 WARRIOR"_s,
    };
    EXPECT_EQ(nicknames, expected);
}

TEST_F(WinrateStoreTest, NamesClassesInTheLanguageAtTheTimeOfTheLoad) {
    const QString path = write(u"classes.json"_s, R"({"classes": [{"player_class": "MAGE", "name_zh": "法师"}]})");
    settings.languages = QStringList{u"zh-Hans"_s};
    ASSERT_TRUE(store.loadClasses(path));
    AppLanguage::overridePreference(AppLanguage::en);
    EXPECT_EQ(store.classNames().front().display, u"法师"_s);
    ASSERT_TRUE(store.loadClasses(path));
    EXPECT_EQ(store.classNames().front().display, u"Mage"_s);
}

TEST_F(WinrateStoreTest, UsesLooseShapes) {
    const QString path = write(u"support/Pelloran/config/winrates/all_classes_LAST_7_DAYS.json"_s,
                               R"({"cards": [], "classes": {"MAGE": [{"card_id": "A", "name_en": "Fireball"}]}})");
    ASSERT_TRUE(store.loadFromBundle());
    EXPECT_EQ(store.metaDescription(), u"all_classes / all_classes_LAST_7_DAYS.json / 1 cards"_s);
    EXPECT_EQ(store.cardsSourceDescription(), path);
    EXPECT_EQ(store.matchName({u"Fireball"_s}).value().cardId, u"A"_s);
}

TEST_F(WinrateStoreTest, NeedsItsFilesOnlyWhileItLoads) {
    const QString path = write(u"support/Pelloran/config/winrates/all_classes_LAST_7_DAYS.json"_s,
                               R"({"cards": [{"card_id": "A", "name_en": "Fireball"}]})");
    ASSERT_TRUE(store.loadFromBundle());
    const auto stillKnows = [this] {
        return store.stats(u"A"_s).has_value() && store.matchName({u"Fireball"_s}).value().cardId == u"A"_s;
    };
    ASSERT_TRUE(QFile::resize(path, 20));
    EXPECT_TRUE(stillKnows()) << "truncated";
    EXPECT_FALSE(store.loadFromBundle());
    EXPECT_TRUE(stillKnows()) << "and asked for again";
    ASSERT_TRUE(QFile::remove(path));
    EXPECT_TRUE(stillKnows()) << "removed";
    ASSERT_TRUE(QDir().mkdir(path));
    EXPECT_FALSE(store.loadFromBundle()) << "a folder is no file, and there are no others";
    EXPECT_TRUE(stillKnows());
}

TEST_F(WinrateStoreTest, AFailedLoadOfCardsChangesNothing) {
    struct Case {
        const char* why;
        QByteArray content;
        QString domain;
        int code;
    };

    const Case cases[] = {
        {"empty", "", u"QJsonDocument"_s, 5},
        {"not JSON", "%PDF-1.7", u"QJsonDocument"_s, 5},
        {"truncated", cardFile("B").chopped(3), u"QJsonDocument"_s, 0},
        {"no rows", R"({"cards": []})", u"Pelloran"_s, 2},
        {"a row without its identifier", R"({"cards": [{"name_en": "Fireball"}]})", u"WinrateFormats"_s, 0},
    };
    const QString place = u"support/Pelloran/config/winrates/all_classes_LAST_7_DAYS.json"_s;
    write(place, R"({"time_range": "SAMPLE", "cards": [{"card_id": "A", "name_en": "Fireball"}]})");
    write(u"support/Pelloran/config/class_winrates.json"_s, R"({"classes": []})");
    ASSERT_TRUE(store.loadFromBundle());
    write(u"support/Pelloran/config/class_winrates.json"_s,
          R"({"classes": [{"player_class": "MAGE", "name_zh": "法师"}]})");
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        write(place, row.content);
        const auto loaded = store.loadFromBundle();
        ASSERT_FALSE(loaded);
        EXPECT_EQ(loaded.error().domain, row.domain);
        if (row.code != 0) {
            EXPECT_EQ(loaded.error().code, row.code);
        }
        EXPECT_FALSE(loaded.error().localizedDescription.isEmpty());
        EXPECT_EQ(store.matchName({u"Fireball"_s}).value().cardId, u"A"_s);
        EXPECT_EQ(store.metaDescription(), u"? / SAMPLE / 1 cards"_s);
        EXPECT_TRUE(store.holdsSampleData());
        EXPECT_TRUE(store.cardLexicon()->contains(u"Fireball"_s));
        EXPECT_TRUE(store.classesByKey().empty()) << "classes are loaded only after cards";
    }
    EXPECT_EQ(store.loadCards(folder.filePath(u"missing.json"_s)).error().domain, u"QFile"_s);
    EXPECT_EQ(store.loadCards(folder.path()).error().domain, u"QFile"_s) << "a folder";
}

TEST_F(WinrateStoreTest, AFailedLoadOfClassesChangesNothingAndFailsNothing) {
    const QString place = u"support/Pelloran/config/class_winrates.json"_s;
    write(u"support/Pelloran/config/mage_arena_LAST_7_DAYS.json"_s, cardFile("A"));
    write(place, R"({"classes": [{"player_class": "MAGE", "name_zh": "法师"}]})");
    ASSERT_TRUE(store.loadFromBundle());
    for (const QByteArray& content :
         {QByteArray(), QByteArray("{}"), QByteArray(R"({"classes": [{"player_class": "ROGUE"}]})")}) {
        write(place, content);
        EXPECT_TRUE(store.loadFromBundle());
        EXPECT_FALSE(store.loadClasses(folder.filePath(place)));
        EXPECT_EQ(store.classesByKey().size(), 1U);
        EXPECT_EQ(store.classMeta(), u"classes 1 / ?"_s);
        EXPECT_TRUE(store.matchClass({u"Mage"_s}));
    }
}

// Pipes and the kernel's own files say that there is nothing in them.
TEST_F(WinrateStoreTest, ReadsAllOfAFileThatDoesNotSayHowLongItIs) {
    const QString pipe = write(u"pipe.json"_s, {});
    ASSERT_TRUE(QFile::remove(pipe));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    const QByteArray cards = "{\"cards\": [{\"card_id\": \"A\"}" + QByteArray(100'000, ' ') + "]}";
    std::thread writer([&] {
        QFile file(pipe);
        EXPECT_TRUE(file.open(QFile::WriteOnly) && file.write(cards) == cards.size());
    });
    EXPECT_TRUE(store.loadCards(pipe));
    writer.join();
    EXPECT_EQ(store.byId().size(), 1U);
}

TEST_F(WinrateStoreTest, RefusesAFileTooLargeToBeOne) {
    const QString path = write(u"cards.json"_s, "{}");
    QFile file(path);
    ASSERT_TRUE(file.open(QFile::ReadWrite));
    ASSERT_TRUE(file.resize(qint64{1} << 30)); // a hole: takes no space
    file.close();
    EXPECT_EQ(store.loadCards(path).error().localizedDescription, path + u": larger than 64 MiB"_s);
}

TEST_F(WinrateStoreTest, GivesOutSnapshotsThatLaterLoadsLeaveAlone) {
    ASSERT_TRUE(store.loadCards(write(u"cards.json"_s, R"({"cards": [{"card_id": "A", "name_en": "Fireball"}]})")));
    const auto before = store.cardLexicon();
    ASSERT_TRUE(store.loadCards(write(u"cards.json"_s, R"({"cards": [{"card_id": "A", "name_en": "Frostbolt"}]})")));
    EXPECT_TRUE(before->contains(u"Fireball"_s)) << "although nobody asked it before";
    EXPECT_FALSE(before->contains(u"Frostbolt"_s));
    EXPECT_FALSE(store.cardLexicon()->contains(u"Fireball"_s));
    EXPECT_TRUE(store.cardLexicon()->contains(u"Frostbolt"_s));
}

TEST_F(WinrateStoreTest, SettlesReadingsOnCards) {
    ASSERT_TRUE(store.loadCards(write(u"cards.json"_s, R"({"cards": [
            {"card_id": "A", "name_zh": "法力束缚", "name_en": "Mana Bind", "type": "SPELL"},
            {"card_id": "B", "name_en": "Mana Bond", "type": "minion"},
            {"card_id": "C", "name_en": "Mana Bind", "type": "Weapon"},
            {"card_id": "D", "name_en": "Dalaran Aspirant", "type": "HERO"},
            {"card_id": "E", "name_en": "Karazhan Library", "type": "LOCATION"},
            {"card_id": "F", "name_en": "Enchanted Raven", "type": "ENCHANTMENT"},
            {"card_id": "G", "name_en": "Ancient of Blossoms"},
            {"card_id": "H", "name_en": "7", "name_zh": ""},
            {"card_id": "I"}
        ]})")));
    using enum NameKind;

    struct Case {
        const char* why;
        QString line;
        NameKinds fitting;
        std::optional<Lexicon::Settled> expected;
    };

    const Case cases[] = {
        {"either name", u"Mana Bxnd"_s, {}, {}},
        {"only one is a spell's", u"Mana Bxnd"_s, spell, Lexicon::Settled{u"Mana Bind"_s, 1}},
        {"it is a weapon's as well", u"Mana Bxnd"_s, weapon, Lexicon::Settled{u"Mana Bind"_s, 1}},
        {"the other a minion's, in any case", u"Mana Bxnd"_s, minion, Lexicon::Settled{u"Mana Bond"_s, 1}},
        {"a hero's", u"Dalaran Aspixant"_s, hero, Lexicon::Settled{u"Dalaran Aspirant"_s, 1}},
        {"but not a minion's", u"Dalaran Aspixant"_s, minion, Lexicon::Settled{u"Dalaran Aspirant"_s, 2}},
        {"a location's", u"Karazhan Libxary"_s, location, Lexicon::Settled{u"Karazhan Library"_s, 1}},
        {"of a kind unheard of", u"Enchanted Raxen"_s, minion, Lexicon::Settled{u"Enchanted Raven"_s, 1}},
        {"of no known kind", u"Ancient of Bloxsoms"_s, weapon, Lexicon::Settled{u"Ancient of Blossoms"_s, 1}},
        {"Chinese", u"法力束缚"_s, minion, Lexicon::Settled{u"法力束缚"_s, 0}},
        {"a number that is a card's name", u"7"_s, {}, {}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        const auto settled = store.cardLexicon()->settle(row.line, row.fitting);
        ASSERT_EQ(settled.has_value(), row.expected.has_value());
        if (settled) {
            EXPECT_EQ(settled->text, row.expected->text);
            EXPECT_EQ(settled->distance, row.expected->distance);
        }
    }
}

TEST_F(WinrateStoreTest, SettlesReadingsOnClasses) {
    ASSERT_TRUE(store.loadClasses(write(u"classes.json"_s, R"({"classes": [
            {"player_class": "demonhunter", "name_zh": "恶魔猎手"},
            {"player_class": "MAGE", "name_zh": "法师", "name_en": "Wizard"},
            {"player_class": "SHAMAN", "name_zh": "萨满祭司", "name_en": ""}
        ]})")));

    struct Case {
        const char* why;
        QString line;
        std::optional<QString> text;
    };

    const Case cases[] = {
        {"a known English name where the file has none, longer than the matching takes, as displayed",
         u"DEMON HUNTER"_s, u"Demon Hunter"_s},
        {"misread", u"Demon Humter"_s, u"Demon Hunter"_s},
        {"the key as well", u"DEMONHUNTER"_s, u"Demon Hunter"_s},
        {"the file's own English name", u"wizard"_s, u"Wizard"_s},
        {"a key that is no name", u"Mage"_s, u"MAGE"_s},
        {"Chinese", u"萨满祭司"_s, u"萨满祭司"_s},
        {"a nickname", u"萨满"_s, u"萨满"_s},
        {"a nickname of one character", u"瞎"_s, u"瞎"_s},
        {"a nickname of a class that is not there", u"死骑"_s, {}},
        {"a class that is not there", u"Rogue"_s, {}},
        {"nothing, though a name is empty", u""_s, {}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        const auto settled = store.classLexicon()->settle(row.line);
        EXPECT_EQ(settled ? std::optional(settled->text) : std::nullopt, row.text);
    }
}

TEST_F(WinrateStoreTest, MatchesLongNamesThatAreExactWhereAsked) {
    ASSERT_TRUE(store.loadCards(write(u"cards.json"_s, R"({"cards": [
            {"card_id": "A", "name_en": "Fireball"}, {"card_id": "B", "name_en": "Violet Spellweaver"}]})")));
    ASSERT_TRUE(store.loadClasses(write(u"classes.json"_s, R"({"classes": [
            {"player_class": "DEMONHUNTER", "name_zh": "恶魔猎手"}]})")));
    constexpr auto asked = NameLengths::limitedUnlessExact;
    const QString card = u"VIOLET SPELLWEAVER"_s;
    EXPECT_EQ(store.matchName({card}), std::nullopt);
    EXPECT_EQ(store.matchName({u"Fireboll"_s, card}, asked), (CardMatch{u"B"_s, 1, card}));
    EXPECT_EQ(store.matchName({u"Violet Spellweavex"_s}, asked), std::nullopt);
    EXPECT_EQ(store.matchClass({u"Demon Hunter"_s}), std::nullopt);
    EXPECT_EQ(store.matchClass({u"Demon Hunter"_s}, asked), (ClassMatch{u"DEMONHUNTER"_s, 1, u"Demon Hunter"_s}));
    EXPECT_EQ(store.matchClass({u"Demon Humter"_s}, asked), std::nullopt);
}

TEST_F(WinrateStoreTest, ComparesNamesAsTheMatchingDoes) {
    EXPECT_EQ(WinrateStore::normalize(u"Fire Ball (4)"_s), u"fireball"_s);
    EXPECT_TRUE(WinrateStore::isPlausibleName(u"Hex"_s));
    EXPECT_FALSE(WinrateStore::isPlausibleName(u"12"_s));
    EXPECT_EQ(WinrateStore::lcsLength(u"fireball"_s, u"firewall"_s), 7U);
    EXPECT_EQ(WinrateStore::scoreName(u"Fire Boll"_s, u"fireball"_s), 0.93125);
}

TEST_F(WinrateStoreTest, ForgetsThatItHeldASample) {
    ASSERT_TRUE(store.loadCards(write(u"a.json"_s, R"({"time_range": "SAMPLE", "cards": [{"card_id": "A"}]})")));
    EXPECT_TRUE(store.holdsSampleData());
    ASSERT_TRUE(store.loadCards(write(u"b.json"_s, cardFile("A"))));
    EXPECT_FALSE(store.holdsSampleData());
}

} // namespace

} // namespace pelloran
