#include "draft/DraftService.h"

#include "base/SerialQueue.h"
#include "data/WinrateStore.h"
#include "localisation/L10n.h"
#include "recognition/ScreenReader.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace pelloran {

namespace {

bool hasRecognizedTile(const OverlaySnapshot& snapshot) {
    return std::ranges::any_of(snapshot.cards, &OverlayCardViewModel::recognized);
}

OverlayCardViewModel unrecognizedSlot(const QString& label, std::span<const MetricKind::Value> kinds) {
    OverlayCardViewModel tile{label, L10n::tr(u"overlay.unrecognized"), std::nullopt, {}, false};
    for (const MetricKind kind : kinds) {
        tile.metrics.push_back({kind, std::nullopt});
    }
    return tile;
}

} // namespace

DraftService::DraftService(const AppConfig& settings, const WinrateStore& winrates, SerialQueue& recognitionQueue,
                           ScreenReader& reader)
    : idleMessage(L10n::tr(u"idle.waitDraft"))
    , config(settings)
    , store(winrates)
    , watcher(settings.logsDir)
    , recognizer(winrates, settings.nameLengths)
    , queue(recognitionQueue)
    , screenReader(reader) {
    connect(&timer, &QTimer::timeout, this, &DraftService::timerFired);
}

void DraftService::start() {
    timer.start(std::chrono::milliseconds(std::llround(config.pollInterval * 1000)));
    tick();
}

void DraftService::stop() {
    timer.stop();
    awaited.reset();
}

void DraftService::tick() {
    if (awaited) {
        awaited->tickAgain = true;
    } else {
        beginTick();
    }
}

void DraftService::timerFired() {
    if (!awaited) {
        beginTick();
    }
}

void DraftService::relocalizeAndRefresh() {
    forgetTiles();
    Q_EMIT tilesForgotten();
    if (awaited) {
        awaited->dropped = true;
    }
    tick();
}

void DraftService::beginTick() {
    const GameLogs logs = watcher.read();
    Q_EMIT logsRead(logs);
    const DraftState state = LogWatcher::stateOf(logs);
    if (state.phase != lastPhase) {
        if (state.phase == DraftPhase::idle) {
            forgetTiles();
        } else if (lastPhase == DraftPhase::cardPick) {
            lastGoodCardsBySlot.clear();
        } else if (lastPhase == DraftPhase::heroPick) {
            lastGoodHeroesBySlot.clear();
        }
        lastPhase = state.phase;
    }
    if (!state.inDraft) {
        isInDraft = false;
        forgetTiles();
        lastPhase = DraftPhase::idle;
        publish(OverlaySnapshot::idle(idleMessage));
        return;
    }
    isInDraft = true;

    std::optional<ReadingHints> hints;
    if (state.phase == DraftPhase::heroPick) {
        hints = recognizer.heroHints();
    } else if (state.phase == DraftPhase::cardPick) {
        hints = recognizer.cardHints();
    }
    const int number = ++looks;
    awaited = {.number = number, .dropped = false, .tickAgain = false};
    // The piece may outlive this object, never the reader.
    const auto answer = std::make_shared<Look>();
    queue.submit([answer, hints = std::move(hints), hint = config.windowOwnerHint,
                  &reader = screenReader] { *answer = reader.look(hint, hints); },
                 this,
                 [this, answer, number, phase = state.phase] {
                     if (!awaits(number)) {
                         return;
                     }
                     if (!awaited->dropped) {
                         finishTick(phase, *answer);
                     }
                     // Unless the receiver of what was published has stopped the service.
                     if (awaits(number) && std::exchange(awaited, std::nullopt)->tickAgain) {
                         beginTick();
                     }
                 });
}

void DraftService::finishTick(DraftPhase phase, const Look& look) {
    if (!look) {
        keepPreviousOrStatus(look.error() == WindowCaptureError::noWindow ? L10n::tr(u"overlay.noWindow")
                                                                          : L10n::tr(u"overlay.captureFailed"));
        return;
    }
    OverlaySnapshot snapshot{.title = {}, .message = {}, .cards = {}, .inDraft = true, .phase = phase};
    switch (phase) {
    case DraftPhase::idle: // the logs' rules never say so within a draft
        publish(OverlaySnapshot::idle(L10n::tr(u"idle.waitArena")));
        return;
    case DraftPhase::heroPick:
        snapshot.title = L10n::tr(u"overlay.heroPick");
        for (const SlotMatch& match : recognizer.recognizeHeroes(*look)) {
            snapshot.cards.push_back(
                steadyTile(heroTile(match), match.slot, lastGoodHeroesBySlot, MetricKind::heroKinds()));
        }
        break;
    case DraftPhase::cardPick:
        snapshot.title = L10n::tr(u"overlay.cardPick");
        for (const SlotMatch& match : recognizer.recognizeCards(*look)) {
            snapshot.cards.push_back(
                steadyTile(cardTile(match), match.slot, lastGoodCardsBySlot, MetricKind::cardKinds()));
        }
        break;
    }
    // The caches hold tiles without marks: which value is best depends on the neighbours of the moment.
    MetricHighlighter::applyHighlights(snapshot.cards);
    publishSticky(snapshot, phase);
}

void DraftService::forgetTiles() {
    lastGoodCardsBySlot.clear();
    lastGoodHeroesBySlot.clear();
    lastGoodSnapshot.reset();
}

std::optional<OverlayCardViewModel> DraftService::heroTile(const SlotMatch& match) const {
    const auto row = match.cardId ? store.classStats(*match.cardId) : std::nullopt;
    if (!row) {
        return std::nullopt;
    }
    const std::optional<double> rank = row->rank ? std::optional(static_cast<double>(*row->rank)) : std::nullopt;
    return OverlayCardViewModel{
        match.slot.label(),
        row->displayName(),
        row->playerClass,
        {
            {MetricKind::classWinRate, row->winRate},
            {MetricKind::pickRate, row->pickRate},
            {MetricKind::pct7Plus, row->pct7Plus},
            {MetricKind::classRank, rank},
        },
        true,
    };
}

std::optional<OverlayCardViewModel> DraftService::cardTile(const SlotMatch& match) const {
    const auto stats = match.cardId ? store.stats(*match.cardId) : std::nullopt;
    if (!stats) {
        return std::nullopt;
    }
    return OverlayCardViewModel{
        match.slot.label(),
        stats->displayName(),
        std::nullopt,
        {
            {MetricKind::deckWinRate, stats->deckWinRate},
            {MetricKind::drawnWinRate, stats->drawnWinRate},
            {MetricKind::playedWinRate, stats->playedWinRate},
            {MetricKind::popularity, stats->popularity},
            {MetricKind::avgCopies, stats->avgCopiesInDeck},
        },
        true,
    };
}

OverlayCardViewModel DraftService::steadyTile(std::optional<OverlayCardViewModel> recognized, const DraftSlot& slot,
                                              TileCache& cache, std::span<const MetricKind::Value> kinds) {
    if (recognized) {
        cache[slot.key()] = *recognized;
        return *recognized;
    }
    const auto cached = cache.find(slot.key());
    if (cached == cache.end()) {
        return unrecognizedSlot(slot.label(), kinds);
    }
    OverlayCardViewModel tile = cached->second;
    tile.slotLabel = slot.label();
    return tile;
}

// Whoever receives it may have the service drop its last good one, which therefore is copied before.
void DraftService::publish(const OverlaySnapshot& snapshot) {
    Q_EMIT published(snapshot);
    if (const auto receiver = delegate.lock()) {
        receiver->draftServiceDidUpdate(snapshot);
    }
}

void DraftService::publishSticky(const OverlaySnapshot& snapshot, DraftPhase phase) {
    if (hasRecognizedTile(snapshot)) {
        lastGoodSnapshot = snapshot;
        publish(snapshot);
    } else if (lastGoodSnapshot && lastGoodSnapshot->phase == phase && hasRecognizedTile(*lastGoodSnapshot)) {
        publish(OverlaySnapshot(*lastGoodSnapshot));
    } else {
        publish(snapshot);
    }
}

void DraftService::keepPreviousOrStatus(const QString& message) {
    if (lastGoodSnapshot && hasRecognizedTile(*lastGoodSnapshot)) {
        publish(OverlaySnapshot(*lastGoodSnapshot));
    } else {
        publish(OverlaySnapshot::status(message, true));
    }
}

} // namespace pelloran
