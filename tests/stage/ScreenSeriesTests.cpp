#include "tools/stage/ScreenSeries.h"

#include "tests/support/Printing.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>

namespace pelloran::stage {

namespace {

const QSize small(400, 300);

ScreenSeries seriesOf(const SeriesWishes& wishes, std::vector<Card> cards = Catalogue::sample().cards()) {
    std::expected<ScreenSeries, QString> series = ScreenSeries::create(wishes, std::move(cards));
    EXPECT_TRUE(series.has_value()) << series.error().toStdString();
    return *std::move(series);
}

} // namespace

TEST(ScreenSeries, IsTheSameForTheSameSeed) {
    const ScreenSeries once = seriesOf({.seed = 3, .size = small});
    const ScreenSeries again = seriesOf({.seed = 3, .size = small});
    const ScreenSeries other = seriesOf({.seed = 4, .size = small});
    for (const int number : {0, 1, 2, 10}) {
        const ScreenSeries::Picture picture = once.picture(number);
        EXPECT_EQ(picture.name, again.picture(number).name);
        EXPECT_TRUE(picture.image == again.picture(number).image) << number;
        EXPECT_EQ(picture.truth, again.picture(number).truth);
        EXPECT_FALSE(picture.image == other.picture(number).image) << number;
    }
}

TEST(ScreenSeries, MixesPicksOfBothSortsWithScreensWithoutAny) {
    const ScreenSeries series = seriesOf({.size = small});
    QHash<QString, int> phases;
    QSet<QString> shown;
    QSet<QString> kinds;
    QSet<QString> eras;
    QSet<QString> languages;
    QSet<QString> styles;
    int hovered = 0;
    int golden = 0;
    for (int number = 0; number < 48; ++number) {
        const QJsonObject truth = series.picture(number).truth;
        SCOPED_TRACE(QJsonDocument(truth).toJson().toStdString());
        const QString phase = truth[u"phase"].toString();
        ++phases[phase];
        shown.insert(truth[u"shows"].toString());
        eras.insert(truth[u"era"].toString());
        languages.insert(truth[u"language"].toString());
        styles.insert(truth[u"lettering"].toString());
        hovered += truth.contains(u"hovered") ? 1 : 0;
        const int expected = phase == u"none" ? 0 : 3;
        EXPECT_EQ(truth[u"names"].toArray().size(), expected);
        EXPECT_EQ(truth[u"nameBoxes"].toArray().size(), expected);
        EXPECT_EQ(truth[u"kinds"].toArray().size(), phase == u"cardPick" ? 3 : 0);
        EXPECT_EQ(truth[u"width"].toInt(), small.width());
        EXPECT_EQ(truth[u"height"].toInt(), small.height());
        for (const auto& kind : truth[u"kinds"].toArray()) {
            kinds.insert(kind.toString());
        }
        for (const auto& value : truth[u"golden"].toArray()) {
            golden += value.toBool() ? 1 : 0;
        }
    }
    EXPECT_EQ(phases.size(), 3);
    EXPECT_GE(phases[QStringLiteral("cardPick")], 20);
    EXPECT_GE(phases[QStringLiteral("heroPick")], 8);
    EXPECT_GE(phases[QStringLiteral("none")], 16);
    EXPECT_EQ(shown.size(), 11);
    EXPECT_EQ(kinds, (QSet<QString>{QStringLiteral("minion"), QStringLiteral("spell"), QStringLiteral("weapon"),
                                    QStringLiteral("hero")}));
    EXPECT_EQ(eras, (QSet<QString>{QStringLiteral("old"), QStringLiteral("new")}));
    EXPECT_EQ(languages, (QSet<QString>{QStringLiteral("en"), QStringLiteral("zh")}));
    EXPECT_EQ(styles, (QSet<QString>{QString(), QStringLiteral("printed"), QStringLiteral("clerical")}));
    EXPECT_GT(hovered, 5);
    EXPECT_GT(golden, 3);
}

TEST(ScreenSeries, KeepsToWhatIsWished) {
    const ScreenSeries series = seriesOf({.size = small,
                                          .language = Language::chinese,
                                          .look = Look::parchment,
                                          .lettering = ChineseLettering::clerical});
    for (int number = 0; number < 6; ++number) {
        const QJsonObject truth = series.picture(number).truth;
        EXPECT_EQ(truth[u"language"].toString(), QStringLiteral("zh"));
        EXPECT_EQ(truth[u"era"].toString(), QStringLiteral("old"));
        EXPECT_EQ(truth[u"lettering"].toString(), QStringLiteral("clerical"));
    }
}

TEST(ScreenSeries, OffersTheCardsItIsGiven) {
    std::vector<Card> cards(4);
    const char* const names[] = {"One", "Two", "Three", ""};
    for (std::size_t i = 0; i < cards.size(); ++i) {
        cards[i].id = QString::number(i);
        cards[i].name.english = QString::fromLatin1(names[i]);
        cards[i].name.chinese = QStringLiteral("四");
        cards[i].type = QStringLiteral("SPELL");
    }
    const ScreenSeries series = seriesOf({.size = small, .language = Language::english}, cards);
    for (const int number : {0, 3, 4, 6}) {
        QStringList offered;
        for (const auto& name : series.picture(number).truth[u"names"].toArray()) {
            offered.append(name.toString());
        }
        offered.sort();
        EXPECT_EQ(offered, (QStringList{QStringLiteral("One"), QStringLiteral("Three"), QStringLiteral("Two")}))
            << "each once, none without a name";
    }
    cards.pop_back();
    cards.pop_back();
    EXPECT_FALSE(ScreenSeries::create({.language = Language::english}, cards).has_value()) << "two are not enough";
    EXPECT_FALSE(ScreenSeries::create({}, {}).has_value());
    cards.push_back(cards[0]);
    EXPECT_FALSE(ScreenSeries::create({.language = Language::english}, cards).has_value()) << "nor two and one again";
}

TEST(ScreenSeries, BoxesHoldTheNames) {
    const ScreenSeries series = seriesOf({.size = {1280, 720}, .language = Language::english});
    int looked = 0;
    for (int number = 0; number < 8; ++number) {
        const ScreenSeries::Picture picture = series.picture(number);
        if (picture.truth[u"phase"].toString() != u"cardPick") {
            continue;
        }
        for (const auto& value : picture.truth[u"nameBoxes"].toArray()) {
            const QJsonArray box = value.toArray();
            ASSERT_EQ(box.size(), 4);
            int white = 0;
            for (int y = box[1].toInt(); y < box[3].toInt(); ++y) {
                for (int x = box[0].toInt(); x < box[2].toInt(); ++x) {
                    white += qGray(picture.image.pixel(x, y)) > 220 ? 1 : 0;
                }
            }
            const int area = (box[2].toInt() - box[0].toInt()) * (box[3].toInt() - box[1].toInt());
            EXPECT_GT(white, area / 12) << picture.name.toStdString();
            ++looked;
        }
    }
    EXPECT_GE(looked, 9);
}

TEST(ScreenSeries, WritesAPictureAndItsTruthForEachScreen) {
    const QTemporaryDir folder;
    const QString target = folder.filePath(QStringLiteral("a/b"));
    EXPECT_EQ(seriesOf({.size = small}).write(target, 3), std::nullopt);
    const QStringList files = QDir(target).entryList(QDir::Files, QDir::Name);
    ASSERT_EQ(files.size(), 6);
    for (qsizetype i = 0; i < files.size(); i += 2) {
        EXPECT_EQ(QString(files[i]).replace(QStringLiteral(".json"), QStringLiteral(".png")), files[i + 1]);
        QFile truth(target + u'/' + files[i]);
        ASSERT_TRUE(truth.open(QIODevice::ReadOnly));
        EXPECT_TRUE(QJsonDocument::fromJson(truth.readAll()).object().contains(u"phase"));
        EXPECT_EQ(QImage(target + u'/' + files[i + 1]).size(), small);
    }
    QFile blocked(folder.filePath(QStringLiteral("file")));
    ASSERT_TRUE(blocked.open(QIODevice::WriteOnly));
    EXPECT_NE(seriesOf({.size = small}).write(blocked.fileName(), 1), std::nullopt) << "a file is no folder";
}

} // namespace pelloran::stage
