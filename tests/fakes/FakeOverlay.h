#pragma once

#include "overlay/Overlay.h"

#include <QStringList>

#include <memory>
#include <vector>

namespace pelloran::testing {

// What a fake panel has been asked for; outlives the panel.
struct OverlayRecord {
    bool visible = false;
    std::vector<OverlaySnapshot> snapshots;
    int settingsChanges = 0;
    std::function<void(QPoint)>* contextMenu = nullptr; // while there is a panel
};

class FakeOverlay final : public Overlay {
public:
    FakeOverlay(OverlayRecord& overlayRecord, QStringList& allSteps)
        : record(overlayRecord)
        , steps(allSteps) {
        record.contextMenu = &contextMenuRequested;
        steps << QStringLiteral("panel made");
    }

    ~FakeOverlay() override { record.contextMenu = nullptr; }

    void show() override {
        steps << QStringLiteral("panel shown");
        record.visible = true;
    }

    // Of an earlier run nothing is known.
    void open() override {
        steps << QStringLiteral("panel opened");
        record.visible = true;
    }

    void hide() override { record.visible = false; }

    bool isVisible() const override { return record.visible; }

    void update(const OverlaySnapshot& snapshot) override {
        steps << QStringLiteral("snapshot ") + snapshot.message.value_or(QString());
        record.snapshots.push_back(snapshot);
    }

    void systemSettingsChanged() override { ++record.settingsChanges; }

private:
    OverlayRecord& record;
    QStringList& steps;
};

} // namespace pelloran::testing
