#include "tests/desktop/Desktop.h"

#include "tests/desktop/ExpectedFigures.h"
#include "tests/support/Printing.h"

#include <gtest/gtest.h>

#include <set>

// The real program beside the simulated game, on a display of their own: what stands on the stage must be what is
// published, step by step.
namespace pelloran {
namespace {

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

    testing::ExpectedFigures figures{QStringLiteral(PELLORAN_RESOURCES)};
};

TEST_F(PublishedDraft, PublishesAnEnglishDraftAsItIsPlayed) {
    startHeadless(QStringLiteral("en"));
    startStage({QStringLiteral("--scenario"), QStringLiteral("demo")});
    follow();
}

TEST_F(PublishedDraft, PublishesADraftInTheLookOfEarlierYears) {
    startHeadless(QStringLiteral("en"));
    startStage({QStringLiteral("--scenario"), QStringLiteral("demo"), QStringLiteral("--look"), QStringLiteral("old")});
    follow();
}

TEST_F(PublishedDraft, PublishesAChineseDraftWithARedraftAsItIsPlayed) {
    startHeadless(QStringLiteral("zh"));
    startStage({QStringLiteral("--scenario"), QStringLiteral("demo-zh"), QStringLiteral("--size"),
                QStringLiteral("1600x900")});
    follow();
}

TEST_F(PublishedDraft, PublishesAChineseDraftInClericalLetteringAsItIsPlayed) {
    startHeadless(QStringLiteral("zh"));
    startStage({QStringLiteral("--scenario"), QStringLiteral("demo-zh"), QStringLiteral("--lettering"),
                QStringLiteral("clerical"), QStringLiteral("--size"), QStringLiteral("1600x900")});
    follow();
}

} // namespace
} // namespace pelloran
