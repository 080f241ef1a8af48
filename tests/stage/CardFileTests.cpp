#include "tools/stage/CardFile.h"

#include "tests/support/Printing.h"
#include "tools/stage/Catalogue.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelloran::stage {

namespace {

class CardFile : public ::testing::Test {
protected:
    std::expected<std::vector<Card>, QString> read(const QByteArray& json) {
        const QString path = folder.filePath(QStringLiteral("cards.json"));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(json);
        file.close();
        return readCardFile(path);
    }

    QTemporaryDir folder;
};

} // namespace

TEST_F(CardFile, TakesWhatCanBeOffered) {
    const auto cards = read(R"([
        {"card_id": "A", "name_en": "First", "name_zh": "一", "cost": 3, "rarity": "EPIC", "type": "MINION",
         "card_class": "MAGE", "set": "X"},
        {"card_id": "B", "name_en": "Hero's Skin", "type": "HERO_POWER"},
        {"card_id": "C", "type": "SPELL"},
        {"card_id": "D", "name_zh": "二", "type": "SPELL"}])");
    ASSERT_TRUE(cards.has_value()) << cards.error().toStdString();
    ASSERT_EQ(cards->size(), 2U) << "neither of a type that is never offered, nor without any name";
    EXPECT_EQ(cards->front().id, QStringLiteral("A"));
    EXPECT_EQ(cards->front().name.chinese, QStringLiteral("一"));
    EXPECT_EQ(cards->front().cost, 3);
    EXPECT_EQ(cards->front().rarity, QStringLiteral("EPIC"));
    EXPECT_EQ(cards->front().cardClass, QStringLiteral("MAGE"));
    EXPECT_EQ(cards->back().cardClass, QStringLiteral("NEUTRAL")) << "some cards belong to several classes";
}

TEST_F(CardFile, SaysWhatIsWrong) {
    struct Row {
        const char* why;
        QByteArray json;
        const char* mentioned;
    };

    const Row rows[] = {
        {"empty", "", "not a JSON array"},
        {"cut off", R"([{"card_id": "A")", "not a JSON array"},
        {"an object", R"({"cards": []})", "not a JSON array"},
        {"nothing in it", "[]", "no card"},
        {"nothing of use in it", R"([1, "two", {"card_id": "A", "type": "MINION"}])", "no card"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        const auto cards = read(row.json);
        ASSERT_FALSE(cards.has_value());
        EXPECT_TRUE(cards.error().contains(QString::fromUtf8(row.mentioned))) << cards.error().toStdString();
    }
    EXPECT_FALSE(readCardFile(folder.filePath(QStringLiteral("missing.json"))).has_value());
}

} // namespace pelloran::stage
