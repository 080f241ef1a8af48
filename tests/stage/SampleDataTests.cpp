#include "tests/stage/Contents.h"
#include "tests/support/Printing.h"
#include "tests/support/SharedData.h"
#include "tools/stage/Catalogue.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelloran::stage {

namespace {

const QString cardFile = QStringLiteral("all_classes_LAST_7_DAYS.json");
const QString classFile = QStringLiteral("class_winrates.json");

QString shipped(const QString& file) {
    return QStringLiteral(PELLORAN_SOURCES "/resources/winrates/") + file;
}

QJsonObject document(const QString& file) {
    return QJsonDocument::fromJson(contents(shipped(file))).object();
}

struct Range {
    const char* field;
    double lowest;
    double highest;
};

void expectInRange(const QJsonObject& row, const Range& range) {
    const QJsonValue value = row[QLatin1String(range.field)];
    EXPECT_TRUE(value.isDouble()) << range.field;
    EXPECT_GE(value.toDouble(), range.lowest) << range.field;
    EXPECT_LE(value.toDouble(), range.highest) << range.field;
}

} // namespace

TEST(SampleData, SaysOfItselfThatItsFiguresAreInvented) {
    const QJsonObject cards = document(cardFile);
    EXPECT_EQ(cards[u"time_range"].toString(), QStringLiteral("SAMPLE"));
    EXPECT_TRUE(cards[u"fetched_at"].toString().contains(QStringLiteral("invented")));
    EXPECT_EQ(cards[u"card_count"].toInteger(), cards[u"cards"].toArray().size());
    const QJsonObject classes = document(classFile);
    EXPECT_TRUE(classes[u"fetched_at"].toString().contains(QStringLiteral("invented")));
    EXPECT_EQ(classes[u"selected_params"].toArray(), QJsonArray{QStringLiteral("SAMPLE")});
}

TEST(SampleData, HasCardsWithBothNamesAndPlausibleFigures) {
    const QJsonArray cards = document(cardFile)[u"cards"].toArray();
    EXPECT_GE(cards.size(), 150);
    const QSet<QString> rarities{QStringLiteral("FREE"), QStringLiteral("COMMON"), QStringLiteral("RARE"),
                                 QStringLiteral("EPIC"), QStringLiteral("LEGENDARY")};
    QSet<QString> ids;
    QSet<QString> englishNames;
    QSet<QString> chineseNames;
    QSet<QString> owners;
    for (const QJsonValue& value : cards) {
        const QJsonObject card = value.toObject();
        const QString id = card[u"card_id"].toString();
        SCOPED_TRACE(id.toStdString());
        EXPECT_FALSE(id.isEmpty());
        EXPECT_FALSE(ids.contains(id));
        EXPECT_FALSE(englishNames.contains(card[u"name_en"].toString()))
            << "two cards of one name cannot be told apart";
        EXPECT_FALSE(chineseNames.contains(card[u"name_zh"].toString()));
        EXPECT_FALSE(card[u"name_en"].toString().isEmpty());
        EXPECT_FALSE(card[u"name_zh"].toString().isEmpty());
        EXPECT_TRUE(rarities.contains(card[u"rarity"].toString()));
        EXPECT_FALSE(card[u"type"].toString().isEmpty());
        EXPECT_FALSE(card[u"set"].toString().isEmpty());
        for (const Range& range :
             {Range{"cost", 0, 25}, Range{"deck_win_rate", 35, 65}, Range{"drawn_win_rate", 35, 70},
              Range{"played_win_rate", 35, 75}, Range{"popularity", 0, 100}, Range{"avg_copies_in_deck", 1, 3},
              Range{"num_games", 1, 1e6}}) {
            expectInRange(card, range);
        }
        ids.insert(id);
        englishNames.insert(card[u"name_en"].toString());
        chineseNames.insert(card[u"name_zh"].toString());
        owners.insert(card[u"card_class"].toString());
    }
    EXPECT_EQ(owners.size(), 12) << "eleven classes and the neutral cards";
}

TEST(SampleData, HasAllElevenClassesWithRanksThatFollowTheirWinRates) {
    const QJsonArray classes = document(classFile)[u"classes"].toArray();
    ASSERT_EQ(classes.size(), 11);
    QHash<int, double> winRateByRank;
    QSet<QString> keys;
    double picked = 0;
    for (const QJsonValue& value : classes) {
        const QJsonObject row = value.toObject();
        SCOPED_TRACE(row[u"player_class"].toString().toStdString());
        keys.insert(row[u"player_class"].toString());
        EXPECT_NE(Catalogue::sample().heroClass(row[u"player_class"].toString()), nullptr);
        EXPECT_FALSE(row[u"name_en"].toString().isEmpty());
        EXPECT_FALSE(row[u"name_zh"].toString().isEmpty());
        EXPECT_EQ(row[u"hero_names"].toArray().size(), 2);
        for (const Range& range : {Range{"win_rate", 40, 60}, Range{"pick_rate", 1, 30}, Range{"pct_7_plus", 1, 40},
                                   Range{"num_drafts", 1, 1e6}, Range{"rank", 1, 11}}) {
            expectInRange(row, range);
        }
        picked += row[u"pick_rate"].toDouble();
        winRateByRank.insert(row[u"rank"].toInt(), row[u"win_rate"].toDouble());
    }
    EXPECT_EQ(keys.size(), 11);
    EXPECT_NEAR(picked, 100, 0.1);
    ASSERT_EQ(winRateByRank.size(), 11) << "no rank twice";
    for (int rank = 2; rank <= 11; ++rank) {
        EXPECT_LE(winRateByRank[rank], winRateByRank[rank - 1]);
    }
}

TEST(SampleData, IsWhatTheGeneratorMakes) {
    const QString python = QStandardPaths::findExecutable(QStringLiteral("python3"));
    if (python.isEmpty()) {
        GTEST_SKIP() << "needs python3, which is not installed";
    }
    const QTemporaryDir folder;
    QProcess generator;
    generator.start(python, {QStringLiteral(PELLORAN_SOURCES "/tools/sample-data/generate"), folder.path()});
    ASSERT_TRUE(generator.waitForFinished());
    ASSERT_EQ(generator.exitCode(), 0) << generator.readAllStandardError().toStdString();
    for (const QString& file : {cardFile, classFile}) {
        SCOPED_TRACE(file.toStdString());
        EXPECT_TRUE(contents(folder.filePath(file)) == contents(shipped(file)))
            << "run tools/sample-data/generate after a change of the tables";
    }
}

// The real game's cards, where they are at hand: a sample whose identifiers or names were wrong would match nothing.
TEST(SampleData, NamesRealCards) {
    SKIP_WITHOUT_SHARED_DATA("cards.json");
    QHash<QString, QJsonObject> real;
    for (const QJsonValue& value :
         QJsonDocument::fromJson(contents(testing::sharedData(QStringLiteral("cards.json")))).array()) {
        real.insert(value[u"card_id"].toString(), value.toObject());
    }
    ASSERT_FALSE(real.isEmpty());
    for (const QJsonValue& value : document(cardFile)[u"cards"].toArray()) {
        const QJsonObject card = value.toObject();
        const QString id = card[u"card_id"].toString();
        SCOPED_TRACE(id.toStdString());
        ASSERT_TRUE(real.contains(id));
        for (const QString& field :
             {QStringLiteral("name_en"), QStringLiteral("name_zh"), QStringLiteral("cost"), QStringLiteral("rarity"),
              QStringLiteral("type"), QStringLiteral("card_class"), QStringLiteral("set")}) {
            EXPECT_EQ(card[field], real[id][field]) << field.toStdString();
        }
    }
}

} // namespace pelloran::stage
