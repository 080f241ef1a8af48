#include "benchmarks/SharedCards.h"
#include "data/WinrateStore.h"
#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/names/NameMatchingReference.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

// A card file as it would come from a server, and a store that holds it.
struct Setting {
    QTemporaryDir folder;
    testing::FakeApplicationFiles files{folder.path()};
    QString cardFile = files.configurationFolder() + u"/all_classes_LAST_7_DAYS.json"_s;
    WinrateStore store{files};
    bool available = false;

    Setting() {
        const auto cards = benchmarks::cardFileOfSharedNames();
        QDir().mkpath(files.configurationFolder());
        QFile target(cardFile);
        available = cards && target.open(QFile::WriteOnly) && target.write(*cards) > 0;
        target.close();
        available = available && store.loadCards(cardFile).has_value();
    }
};

Setting& setting() {
    static Setting shared;
    return shared;
}

bool skipped(benchmark::State& state) {
    if (!setting().available) {
        state.SkipWithError("needs cards.json of the shared test data");
    }
    return !setting().available;
}

// Twelve lines as a reader gives them: three offers among rules texts, numbers and deck entries.
const QStringList& typicalScreen() {
    static const QStringList lines{u"Choose a card"_s,
                                   u"Fireball"_s,
                                   u"Deal 6 damage."_s,
                                   u"4"_s,
                                   u"Flame Lance"_s,
                                   u"Deal 25 damage to a minion."_s,
                                   u"5"_s,
                                   u"Effigy"_s,
                                   u"Secret: When a friendly minion dies"_s,
                                   u"Arcane Blast"_s,
                                   u"2 x Frostbolt"_s,
                                   u"12 / 30"_s};
    return lines;
}

// Nothing to stop early for: every line is near some name or other and equal to none.
const QStringList& misreadScreen() {
    static const QStringList lines{u"Firebxll"_s,       u"Flamo Lamce"_s,  u"Arcame Blasf"_s, u"Dalaran Aspramt"_s,
                                   u"Coldanra Drske"_s, u"Spelslimger"_s,  u"Fallan Heno"_s,  u"Polymonph: Boan"_s,
                                   u"奥木冲去"_s,       u"达拉燃铁骑土"_s, u"考达拉纺龙"_s,   u"暴躁的牧羊入"_s};
    return lines;
}

// Sixteen letters each, the most that is looked at, and hardly a match: what costs most.
const QStringList& worstScreen() {
    static const QStringList lines{u"taerinoslcdhumgp"_s, u"ratesinoldchumpg"_s, u"aeiournstlcdmghb"_s,
                                   u"stoneraildemachu"_s, u"eartaeoinslrdtec"_s, u"inaresteolardneh"_s,
                                   u"sartelinodaresit"_s, u"enotarisedlahcre"_s, u"orianeltsedarcta"_s,
                                   u"lerdanosietrachm"_s, u"tirenaosledarnth"_s, u"draneotsilareche"_s};
    return lines;
}

void matchName(benchmark::State& state, const QStringList& lines) {
    if (skipped(state)) {
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(setting().store.matchName(lines));
    }
}

// As a screen is read: each line is matched by itself.
void matchNameLineByLine(benchmark::State& state, const QStringList& lines) {
    if (skipped(state)) {
        return;
    }
    for (auto _ : state) {
        for (const QString& line : lines) {
            benchmark::DoNotOptimize(setting().store.matchName({line}));
        }
    }
}

std::vector<QString> normalizedNames() {
    std::vector<QString> names;
    for (const CardName& name : setting().store.names()) {
        names.push_back(name.norm);
    }
    return names;
}

void matchNamePlainly(benchmark::State& state, const QStringList& lines) {
    if (skipped(state)) {
        return;
    }
    const auto names = normalizedNames();
    for (auto _ : state) {
        benchmark::DoNotOptimize(reference::matchName(names, lines));
    }
}

void matchNamePlainlyPrepared(benchmark::State& state, const QStringList& lines) {
    if (skipped(state)) {
        return;
    }
    reference::PreparedNames names(normalizedNames());
    for (auto _ : state) {
        benchmark::DoNotOptimize(names.matchName(lines));
    }
}

// All that a load does: reading, decoding and indexing.
void loadCards(benchmark::State& state) {
    if (skipped(state)) {
        return;
    }
    for (auto _ : state) {
        WinrateStore store(setting().files);
        if (!store.loadCards(setting().cardFile)) {
            std::abort();
        }
    }
}

// The main thread's share of a sync that brought new files. Other threads have read them, and let go of what was
// before.
void reload(benchmark::State& state) {
    if (skipped(state)) {
        return;
    }
    WinrateStore store(setting().files);
    std::vector<double> milliseconds;
    for (auto _ : state) {
        std::optional<WinrateData> data;
        std::thread([&data] { data = WinrateData::read(setting().files); }).join();
        const auto begin = std::chrono::steady_clock::now();
        if (!store.adopt(*data)) {
            std::abort();
        }
        const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - begin;
        state.SetIterationTime(spent.count());
        milliseconds.push_back(spent.count() * 1000);
        std::thread([&data] { data.reset(); }).join();
    }
    std::ranges::sort(milliseconds);
    state.counters["rows"] = static_cast<double>(store.byId().size());
    state.counters["medianMs"] = milliseconds[milliseconds.size() / 2];
    state.counters["worstMs"] = milliseconds.back();
}

// The first question to a new lexicon: it is not part of the load, and waited for by whoever reads the screen.
void indexLexicon(benchmark::State& state) {
    if (skipped(state)) {
        return;
    }
    std::vector<KnownName> names;
    for (const CardName& name : setting().store.names()) {
        names.push_back({name.original, {}});
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(Lexicon(names, Lexicon::forCards).contains(u"Fireball"_s));
    }
}

// Each line by itself.
void settle(benchmark::State& state, const QStringList& lines) {
    if (skipped(state)) {
        return;
    }
    const auto lexicon = setting().store.cardLexicon();
    for (auto _ : state) {
        for (const QString& line : lines) {
            benchmark::DoNotOptimize(lexicon->settle(line, NameKind::minion));
        }
    }
    state.SetItemsProcessed(state.iterations() * lines.size());
}

void resemblance(benchmark::State& state, const QStringList& lines) {
    if (skipped(state)) {
        return;
    }
    const auto lexicon = setting().store.cardLexicon();
    for (auto _ : state) {
        for (const QString& line : lines) {
            benchmark::DoNotOptimize(lexicon->resemblance(line));
        }
    }
    state.SetItemsProcessed(state.iterations() * lines.size());
}

void normalize(benchmark::State& state, const QString& text) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(NameMatching::normalize(text));
    }
}

BENCHMARK_CAPTURE(matchName, typicalScreen, typicalScreen())->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(matchName, misreadScreen, misreadScreen())->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(matchName, worstScreen, worstScreen())->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(matchNameLineByLine, typicalScreen, typicalScreen())->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(matchNameLineByLine, misreadScreen, misreadScreen())->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(matchNameLineByLine, worstScreen, worstScreen())->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(matchNamePlainly, typicalScreen, typicalScreen())->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK_CAPTURE(matchNamePlainly, misreadScreen, misreadScreen())->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK_CAPTURE(matchNamePlainlyPrepared, misreadScreen, misreadScreen())->Unit(benchmark::kMillisecond);
BENCHMARK(loadCards)->Unit(benchmark::kMillisecond);
BENCHMARK(reload)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(200);
BENCHMARK(indexLexicon)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(settle, typicalScreen, typicalScreen())->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(settle, misreadScreen, misreadScreen())->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(settle, worstScreen, worstScreen())->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(resemblance, misreadScreen, misreadScreen())->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(normalize, English, u"Deal 4 damage to a Minion."_s);
BENCHMARK_CAPTURE(normalize, Chinese, u"暴躁的牧羊人（4）"_s);

} // namespace

} // namespace pelloran

BENCHMARK_MAIN();
