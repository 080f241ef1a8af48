#include "draft/logs/ArenaLog.h"
#include "draft/logs/LogWatcher.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace pelloran {

namespace {

// What a log of many megabytes is made of, beside the lines that its name says.
enum Kind {
    earlierDrafts,   // many drafts; the current one is a few lines at the end
    onlyPicks,       // one endless draft without any beginning
    deckListings,    // the deck is listed again and again
    endlessDeck,     // one listing that never ends
    nothingFamiliar, // no line means anything
    tornPicks,       // picks that all lack their end
    oneLine,         // opening words without a line end
};

constexpr const char* kindNames[] = {"earlier drafts",   "only picks", "deck listings", "endless deck",
                                     "nothing familiar", "torn picks", "one line"};

QByteArray draft(int number) {
    const QByteArray n = QByteArray::number(number);
    QByteArray lines = "D 21:40:33.5093810 DraftManager.OnBegin - Got new draft deck with ID: " + n +
                       "\nD 21:40:33.5094250 SetDraftMode - DRAFTING\n"
                       "D 21:40:40.6655490 Client chooses: 吉安娜·普罗德摩尔 (HERO_08)\n"
                       "D 21:40:41.7454610 DraftManager.OnChosen(): hero=HERO_08\n";
    for (int pick = 0; pick < 30; ++pick) {
        lines += "D 21:40:44.5296560 Client chooses: 从不存在的牌 (XYZ_" + QByteArray::number(pick) + ")\n";
    }
    return lines + "D 21:50:20.5556690 SetDraftMode - ACTIVE_DRAFT_DECK\n";
}

QByteArray listing(int cards) {
    QByteArray lines = "D 21:40:33.5093810 DraftManager.OnChoicesAndContents - Draft Deck ID: 7, Hero Card = HERO_08\n";
    for (int card = 0; card < cards; ++card) {
        lines += "D 21:40:33.5093810 DraftManager.OnChoicesAndContents - Draft deck contains card XYZ_" +
                 QByteArray::number(card) + '\n';
    }
    return lines;
}

QByteArray makeLog(Kind kind, qsizetype size) {
    QByteArray log;
    switch (kind) {
    case earlierDrafts:
        for (int number = 0; log.size() < size; ++number) {
            log += draft(number);
        }
        break;
    case onlyPicks:
        log = "D 21:40:33.5094250 SetDraftMode - DRAFTING\n";
        for (int pick = 0; log.size() < size; ++pick) {
            log += "D 21:40:44.5296560 Client chooses: 从不存在的牌 (XYZ_" + QByteArray::number(pick) + ")\n";
        }
        break;
    case deckListings:
        while (log.size() < size) {
            log += listing(30);
        }
        break;
    case endlessDeck:
        log = listing(static_cast<int>(size / 90));
        break;
    case nothingFamiliar:
        log = QByteArray("D 21:40:33.5094250 Nothing of 意义 here\n").repeated(size / 42);
        break;
    case tornPicks:
        log = QByteArray("D 21:40:44.5296560 Client chooses: 从不存在的牌\n").repeated(size / 56);
        break;
    case oneLine:
        log = QByteArray("Client chooses: ").repeated(size / 16);
        break;
    }
    return log;
}

void poll(benchmark::State& state) {
    const auto kind = static_cast<Kind>(state.range(0));
    const QTemporaryDir folder;
    const QString session = folder.path() + QStringLiteral("/Hearthstone_1");
    QDir().mkdir(session);
    QFile arenaLog(session + QStringLiteral("/Arena.log"));
    if (!arenaLog.open(QIODevice::WriteOnly) || arenaLog.write(makeLog(kind, state.range(1) << 20)) < 0) {
        state.SkipWithError("cannot write the log");
        return;
    }
    arenaLog.close();
    const LogWatcher watcher(folder.path());
    for (auto step : state) {
        benchmark::DoNotOptimize(watcher.poll());
    }
    state.SetLabel(kindNames[kind]);
}

BENCHMARK(poll)
    ->ArgNames({"kind", "MiB"})
    ->ArgsProduct({benchmark::CreateDenseRange(earlierDrafts, oneLine, 1), {1, 10}})
    ->Unit(benchmark::kMillisecond);

} // namespace

} // namespace pelloran

BENCHMARK_MAIN();
