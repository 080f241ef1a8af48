#include "desktop/Desktop.h"

#include "support/Printing.h"

#include <QFile>

#include <gtest/gtest.h>

#include <map>
#include <set>

// The real program beside the simulated game, on a display of their own: what stands on the stage must be what is
// published, step by step.
namespace pelloran {
namespace {

QJsonObject shippedFile(const char* name) {
    QFile file(QStringLiteral(PELLORAN_RESOURCES "/winrates/") + QString::fromLatin1(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return QJsonDocument::fromJson(file.readAll()).object();
}

// The figures that tiles must show, read without any of the program's own code.
class ExpectedFigures {
public:
    ExpectedFigures() {
        for (const auto& card : shippedFile("all_classes_LAST_7_DAYS.json")[QStringLiteral("cards")].toArray()) {
            rows[card[QStringLiteral("card_id")].toString()] = card.toObject();
        }
        for (const auto& row : shippedFile("class_winrates.json")[QStringLiteral("classes")].toArray()) {
            rows[row[QStringLiteral("player_class")].toString()] = row.toObject();
        }
    }

    QJsonValue figure(const QString& id, const QString& kind) const {
        static const std::map<QString, QString> columns{
            {QStringLiteral("deckWinRate"), QStringLiteral("deck_win_rate")},
            {QStringLiteral("drawnWinRate"), QStringLiteral("drawn_win_rate")},
            {QStringLiteral("playedWinRate"), QStringLiteral("played_win_rate")},
            {QStringLiteral("popularity"), QStringLiteral("popularity")},
            {QStringLiteral("avgCopies"), QStringLiteral("avg_copies_in_deck")},
            {QStringLiteral("classWinRate"), QStringLiteral("win_rate")},
            {QStringLiteral("pickRate"), QStringLiteral("pick_rate")},
            {QStringLiteral("pct7Plus"), QStringLiteral("pct_7_plus")},
            {QStringLiteral("classRank"), QStringLiteral("rank")},
        };
        const auto row = rows.find(id);
        return row == rows.end() ? QJsonValue() : row->second[columns.at(kind)];
    }

private:
    std::map<QString, QJsonObject> rows;
};

QStringList names(const QJsonValue& items) {
    QStringList all;
    for (const auto& item : items.toArray()) {
        all.append(item[QStringLiteral("name")].toString());
    }
    return all;
}

class PublishedDraft : public testing::DesktopTest {
protected:
    void SetUp() override {
        DesktopTest::SetUp();
        if (!IsSkipped() && !HasFatalFailure()) {
            startWindowManager();
        }
    }

    void startHeadless(const QString& language) {
        startPelloran(
            {QStringLiteral("--no-panel"), QStringLiteral("--snapshots"), QStringLiteral("--language"), language});
    }

    // Plays the scenario to its end and compares what is published at every step that shows offers, or none.
    void follow() {
        std::set<QString> seen;
        while (const auto step = stage.waitFor([](const QJsonObject&) { return true; })) {
            const QString kind = (*step)[QStringLiteral("kind")].toString();
            SCOPED_TRACE(kind.toStdString() + " at step " + std::to_string((*step)[QStringLiteral("step")].toInt()));
            if (kind == u"heroPick" || kind == u"cardPick") {
                expectOffers(kind, (*step)[QStringLiteral("offers")].toArray());
            } else if (kind == u"idle" || kind == u"end") {
                EXPECT_TRUE(pelloran.waitFor([](const QJsonObject& snapshot) {
                    return snapshot[QStringLiteral("phase")].toString() == u"idle" &&
                           !snapshot[QStringLiteral("inDraft")].toBool() &&
                           snapshot[QStringLiteral("cards")].toArray().isEmpty();
                }));
            } else if (kind == u"chooseHero") {
                EXPECT_TRUE(pelloran.waitFor([](const QJsonObject& snapshot) {
                    return snapshot[QStringLiteral("phase")].toString() == u"cardPick";
                }));
            }
            if (HasFailure()) {
                return;
            }
            seen.insert(kind);
            stage.write("next\n");
        }
        for (const QString& kind :
             {QStringLiteral("idle"), QStringLiteral("heroPick"), QStringLiteral("cardPick"), QStringLiteral("end")}) {
            EXPECT_TRUE(seen.contains(kind)) << "the scenario has no " << kind.toStdString();
        }
    }

    void expectOffers(const QString& phase, const QJsonArray& offers) {
        const auto snapshot = pelloran.waitFor([&](const QJsonObject& candidate) {
            return candidate[QStringLiteral("phase")].toString() == phase &&
                   names(candidate[QStringLiteral("cards")]) == names(offers);
        });
        ASSERT_TRUE(snapshot) << "offered: " << names(offers).join(u", ").toStdString()
                              << "; last published: " << QJsonDocument(pelloran.last).toJson().toStdString();
        EXPECT_TRUE((*snapshot)[QStringLiteral("inDraft")].toBool());
        const QJsonArray tiles = (*snapshot)[QStringLiteral("cards")].toArray();
        ASSERT_EQ(tiles.size(), 3);
        for (qsizetype slot = 0; slot < tiles.size(); ++slot) {
            EXPECT_TRUE(tiles[slot][QStringLiteral("recognized")].toBool());
            const QString id = offers[slot][QStringLiteral("id")].toString();
            const QJsonArray metrics = tiles[slot][QStringLiteral("metrics")].toArray();
            EXPECT_EQ(metrics.size(), phase == u"cardPick" ? 5 : 4);
            for (const auto& metric : metrics) {
                const QString kind = metric[QStringLiteral("kind")].toString();
                EXPECT_EQ(metric[QStringLiteral("value")], figures.figure(id, kind))
                    << id.toStdString() << ' ' << kind.toStdString();
            }
        }
    }

    ExpectedFigures figures;
};

TEST_F(PublishedDraft, PublishesAnEnglishDraftAsItIsPlayed) {
    startHeadless(QStringLiteral("en"));
    startStage({QStringLiteral("--scenario"), QStringLiteral("demo")});
    follow();
}

TEST_F(PublishedDraft, PublishesAChineseDraftWithARedraftAsItIsPlayed) {
    startHeadless(QStringLiteral("zh"));
    startStage({QStringLiteral("--scenario"), QStringLiteral("demo-zh"), QStringLiteral("--size"),
                QStringLiteral("1600x900")});
    follow();
}

} // namespace
} // namespace pelloran
