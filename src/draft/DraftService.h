#pragma once

#include "draft/logs/LogWatcher.h"
#include "model/DraftModel.h"
#include "model/OverlayModel.h"
#include "platform/TextReader.h"
#include "recognition/CardRecognizer.h"
#include "recognition/WindowCapture.h"

#include <QObject>
#include <QTimer>

#include <expected>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace pelloran {

class ScreenReader;
class SerialQueue;
class WinrateStore;

// Receives what the service publishes.
class DraftServiceDelegate {
public:
    virtual ~DraftServiceDelegate() = default;

    // On the main thread. May call the service, but not destroy it.
    virtual void draftServiceDidUpdate(const OverlaySnapshot& snapshot) = 0;
};

// The loop at the heart of the program. Every tick asks the logs whether a draft runs, has the game's window read while
// a pick is on screen, looks the figures up, and publishes a snapshot. What a bad tick could not read is shown as the
// last good tick had it: a flicker of recognition must not blank good figures.
//
// Main thread only. Looking at the window is handed to `queue`; a tick that needs it ends there and goes on, with the
// `DraftState` it began with, when the answer comes. Until then timer firings do nothing, so snapshots are published in
// the order of their ticks.
class DraftService final : public QObject {
    Q_OBJECT

public:
    // All references must outlive the service; `screenReader` is used on the queue's thread only. Starts nothing.
    DraftService(const AppConfig& config, const WinrateStore& store, SerialQueue& queue, ScreenReader& screenReader);

    // Ticks at once, then every `config.pollInterval` seconds from now, until stopped or destroyed.
    void start();

    // Ends the ticking and drops the answer that is still awaited.
    void stop();

    // One pass now; when one is under way, one more after it.
    void tick();

    // Forgets every tile built in the old language and ticks.
    void relocalizeAndRefresh();

    // Held weakly: with no delegate alive, snapshots are dropped.
    std::weak_ptr<DraftServiceDelegate> delegate;

    bool isInDraft = false; // as of the last tick
    QString idleMessage;    // shown outside a draft; begins as the localised "idle.waitDraft"

Q_SIGNALS:
    // For those who look on; nothing comes of it here. What a tick begins with,
    void logsRead(const GameLogs& logs);
    // that the tiles of before are forgotten,
    void tilesForgotten();
    // and every snapshot, before the delegate has it.
    void published(const OverlaySnapshot& snapshot);

private:
    using TileCache = std::map<QString, OverlayCardViewModel>; // by DraftSlot::key()

    // A look at the window that has been asked for. Its number tells a late answer from the one awaited.
    struct Awaited {
        int number;
        bool dropped;   // its answer counts no more
        bool tickAgain; // once it has come
    };

    using Look = std::expected<ReadText, WindowCaptureError>;

    void timerFired();
    void beginTick();
    void finishTick(DraftPhase phase, const Look& look);
    void forgetTiles();

    bool awaits(int look) const { return awaited && awaited->number == look; }

    // What becomes of one offer that recognition gave back: its figures if it was recognised.
    std::optional<OverlayCardViewModel> heroTile(const SlotMatch& match) const;
    std::optional<OverlayCardViewModel> cardTile(const SlotMatch& match) const;

    // The recognised tile, else the cached one of the slot, else one that says so. A recognised tile enters the cache.
    static OverlayCardViewModel steadyTile(std::optional<OverlayCardViewModel> recognized, const DraftSlot& slot,
                                           TileCache& cache, std::span<const MetricKind::Value> kinds);

    void publish(const OverlaySnapshot& snapshot);
    void publishSticky(const OverlaySnapshot& snapshot, DraftPhase phase);
    void keepPreviousOrStatus(const QString& message);

    const AppConfig config;
    const WinrateStore& store;
    const LogWatcher watcher;
    const CardRecognizer recognizer;
    SerialQueue& queue;
    ScreenReader& screenReader;
    QTimer timer{this};

    TileCache lastGoodCardsBySlot;
    TileCache lastGoodHeroesBySlot;
    std::optional<OverlaySnapshot> lastGoodSnapshot; // the last with at least one recognised tile
    DraftPhase lastPhase = DraftPhase::idle;

    std::optional<Awaited> awaited;
    int looks = 0;
};

} // namespace pelloran
