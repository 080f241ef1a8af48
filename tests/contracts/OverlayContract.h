#pragma once

#include "overlay/Overlay.h"
#include "tests/contracts/BackEnd.h"

#include <QCoreApplication>

#include <memory>

namespace pelloran::testing {

struct MadeOverlay {
    std::shared_ptr<void> owned; // what has to live as long
    std::unique_ptr<Overlay> overlay;
};

class OverlayContract : public ::testing::TestWithParam<BackEnd<MadeOverlay>> {
protected:
    // Tiles as of a pick: all, some, none read.
    static OverlaySnapshot pick(int read) {
        OverlaySnapshot snapshot;
        snapshot.title = QStringLiteral("Pelloran");
        snapshot.inDraft = true;
        for (int i = 0; i < 3; ++i) {
            OverlayCardViewModel card;
            card.slotLabel = QString::number(i + 1);
            card.recognized = i < read;
            card.name = card.recognized ? QStringLiteral("Fireball") : QString();
            card.metrics = {{MetricKind::deckWinRate, 55.2, MetricHighlight::high}};
            snapshot.cards.push_back(card);
        }
        return snapshot;
    }

    const MadeOverlay made = GetParam().make();
    Overlay& overlay = *made.overlay;
};

TEST_P(OverlayContract, IsMadeHidden) {
    EXPECT_FALSE(overlay.isVisible());
}

TEST_P(OverlayContract, OpensShownWhereNoRunWasBefore) {
    overlay.open();
    EXPECT_TRUE(overlay.isVisible());
}

TEST_P(OverlayContract, IsSeenFromShowingToHiding) {
    overlay.hide(); // already
    EXPECT_FALSE(overlay.isVisible());
    for (int round = 0; round < 2; ++round) {
        overlay.show();
        EXPECT_TRUE(overlay.isVisible());
        overlay.show();
        EXPECT_TRUE(overlay.isVisible());
        overlay.hide();
        EXPECT_FALSE(overlay.isVisible());
        overlay.hide();
        EXPECT_FALSE(overlay.isVisible());
    }
}

TEST_P(OverlayContract, TakesAnySnapshotWithoutShowingOrHidingItself) {
    for (const bool visible : {false, true}) {
        SCOPED_TRACE(visible);
        if (visible) {
            overlay.show();
        }
        for (const OverlaySnapshot& snapshot : {OverlaySnapshot(), OverlaySnapshot::idle(QStringLiteral("Waiting")),
                                                pick(3), pick(1), pick(0), OverlaySnapshot::status(QString(), true)}) {
            overlay.update(snapshot);
            QCoreApplication::processEvents();
            EXPECT_EQ(overlay.isVisible(), visible);
        }
    }
}

TEST_P(OverlayContract, ALookThatMayHaveChangedChangesNothingElse) {
    overlay.systemSettingsChanged();
    EXPECT_FALSE(overlay.isVisible());
    overlay.show();
    overlay.systemSettingsChanged();
    EXPECT_TRUE(overlay.isVisible());
}

} // namespace pelloran::testing
