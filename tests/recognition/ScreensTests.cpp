#include "recognition/CardRecognizer.h"
#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/support/Printing.h"
#include "tests/support/SampleStore.h"
#include "tests/support/SharedData.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace pelloran {

namespace {

const QByteArray classFile = R"({"classes": [
    {"player_class": "DEATHKNIGHT", "name_zh": "死亡骑士"},
    {"player_class": "DEMONHUNTER", "name_zh": "恶魔猎手"},
    {"player_class": "DRUID", "name_zh": "德鲁伊"},
    {"player_class": "HUNTER", "name_zh": "猎人"},
    {"player_class": "MAGE", "name_zh": "法师"},
    {"player_class": "PALADIN", "name_zh": "圣骑士"},
    {"player_class": "PRIEST", "name_zh": "牧师"},
    {"player_class": "ROGUE", "name_zh": "潜行者"},
    {"player_class": "SHAMAN", "name_zh": "萨满祭司"},
    {"player_class": "WARLOCK", "name_zh": "术士"},
    {"player_class": "WARRIOR", "name_zh": "战士"}
]})";

QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// From pixels to slots, with everything but the window itself.
class ScreensTest : public ::testing::Test {
protected:
    void SetUp() override {
        SKIP_WITHOUT_SHARED_DATA("cards.json");
        auto made = TextReader::create(testing::FakeApplicationFiles(QStringLiteral(PELLORAN_SOURCES)));
        if (!made) {
            GTEST_SKIP() << made.error().reason.toStdString();
        }
        reader = std::move(*made);
        cards = contentsOf(testing::sharedData(QStringLiteral("cards.json")));
        sample.emplace(R"({"cards": )" + cards + '}', classFile);
    }

    // As a picture that nothing was seen before.
    std::vector<SlotMatch> recognize(const QImage& image, bool heroes) const {
        reader->forget();
        const CardRecognizer recognizer(sample->store, NameLengths::limitedUnlessExact);
        return heroes ? recognizer.recognizeHeroes(image, *reader) : recognizer.recognizeCards(image, *reader);
    }

    QByteArray cards;
    std::unique_ptr<TextReader> reader;
    std::optional<testing::SampleStore> sample;
};

TEST_F(ScreensTest, EverySlotHoldsWhatIsOffered) {
    SKIP_WITHOUT_SHARED_DATA("screens");
    QHash<QString, QJsonObject> cardsById;
    for (const QJsonValue& card : QJsonDocument::fromJson(cards).array()) {
        cardsById[card[QStringLiteral("card_id")].toString()] = card.toObject();
    }

    int chineseSlots = 0;
    int chineseRight = 0;
    int englishSlots = 0;
    const QDir folder(testing::sharedData(QStringLiteral("screens")));
    for (const QString& file : folder.entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name)) {
        const QJsonObject truth = QJsonDocument::fromJson(contentsOf(folder.filePath(file))).object();
        const QImage image(folder.filePath(file.chopped(5) + QStringLiteral(".png")));
        ASSERT_FALSE(image.isNull()) << file.toStdString();
        const bool chinese = truth[QStringLiteral("lang")].toString() == QStringLiteral("zh");
        const bool hero = truth[QStringLiteral("phase")].toString() == QStringLiteral("heroPick");
        const QString nameKey = chinese ? QStringLiteral("name_zh") : QStringLiteral("name_en");
        const auto matches = recognize(image, hero);
        ASSERT_EQ(matches.size(), 3U);
        for (const SlotMatch& match : matches) {
            const QJsonObject offer = truth[QStringLiteral("slots")][match.slot.rawValue()].toObject();
            const QString id = offer[QStringLiteral("id")].toString();
            const QString name = offer[QStringLiteral("name")].toString();
            SCOPED_TRACE((file + u' ' + match.slot.rawValue() + u' ' + name).toStdString());
            ASSERT_FALSE(id.isEmpty());
            // Cards that were printed again share a name, and a name is all there is to read.
            const bool right =
                match.cardId && (match.cardId == id || (!hero && cardsById[*match.cardId][nameKey] == name));
            EXPECT_TRUE(right || !match.cardId)
                << "holds " << match.cardId->toStdString() << ", read " << match.ocrText.toStdString();
            if (chinese) {
                ++chineseSlots;
                chineseRight += right;
            } else {
                ++englishSlots;
                EXPECT_TRUE(right);
            }
        }
    }
    EXPECT_EQ(chineseSlots, 18);
    EXPECT_GE(chineseRight, 17);
    EXPECT_EQ(englishSlots, 18);
}

// What the game itself draws: names and classes in either look, and screens that offer nothing.
TEST_F(ScreensTest, TheGamesOwnScreensAreRead) {
    SKIP_WITHOUT_SHARED_DATA("real/screens");

    const QDir folder(testing::sharedData(QStringLiteral("real/screens")));
    int offers = 0;
    for (const QString& file : folder.entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name)) {
        SCOPED_TRACE(file.toStdString());
        const QJsonObject truth = QJsonDocument::fromJson(contentsOf(folder.filePath(file))).object();
        QImage image(folder.filePath(file.chopped(5) + QStringLiteral(".png")));
        if (image.isNull()) {
            image = QImage(folder.filePath(file.chopped(5) + QStringLiteral(".jpg")));
        }
        ASSERT_FALSE(image.isNull());
        const QString phase = truth[QStringLiteral("phase")].toString();
        const QJsonArray names = truth[QStringLiteral("names")].toArray();
        const auto heroes = recognize(image, true);
        const auto picks = recognize(image, false);
        for (const DraftSlot slot : DraftSlot::allCases()) {
            const QString name = names[slot].toString();
            if (phase == QStringLiteral("none")) {
                EXPECT_FALSE(heroes[slot].cardId || picks[slot].cardId) << picks[slot].ocrText.toStdString();
            } else if (phase == QStringLiteral("heroPick")) {
                EXPECT_EQ(heroes[slot].cardId.value_or(QString()), name.simplified().remove(u' ').toUpper());
                ++offers;
            } else {
                const auto stats = sample->store.stats(picks[slot].cardId.value_or(QString()));
                EXPECT_EQ(stats ? stats->nameEn.value_or(QString()) : QString(), name);
                ++offers;
            }
        }
    }
    EXPECT_EQ(offers, 30);
}

} // namespace

} // namespace pelloran
