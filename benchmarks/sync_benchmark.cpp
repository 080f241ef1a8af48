// What a sync of all cards costs, and the steps it is made of. The server is a plain one on loopback, so what is
// measured is ours: the network of a player comes on top.

#include "base/Digest.h"
#include "base/SerialQueue.h"
#include "benchmarks/SharedCards.h"
#include "data/WinrateData.h"
#include "platform/HttpClient.h"
#include "publish/Publisher.h"
#include "sync/ConfigSync.h"
#include "sync/TarArchive.h"
#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/support/ScriptedServer.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QNetworkProxyFactory>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <variant>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

using testing::ScriptedServer;

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    require(file.open(QFile::ReadOnly));
    return file.readAll();
}

// A published folder behind a server, and a client of it.
class Setting {
public:
    Setting() {
        const auto cards = benchmarks::cardFileOfSharedNames();
        if (!cards) {
            return;
        }
        const QString source = folder.filePath(u"source"_s);
        require(QDir().mkpath(source + u"/winrates"_s));
        QFile file(source + u"/winrates/all_classes_LAST_7_DAYS.json"_s);
        require(file.open(QFile::WriteOnly) && file.write(*cards) == cards->size());
        file.close();
        const auto publication = publish(source, folder.filePath(u"www"_s), std::nullopt);
        require(publication.has_value());
        published = *publication;
        std::printf("%lld bytes of cards, bundle of %lld, manifest of %lld\n", static_cast<long long>(cards->size()),
                    static_cast<long long>(published.bundleBytes), static_cast<long long>(published.manifestBytes));
        serve(u"manifest.json"_s);
        serve(published.bundle);
        available = true;
    }

    QString onServer(const QString& name) const { return published.folder + u'/' + name; }

    void forgetInstalled() { require(QDir(files.applicationSupportFolder()).removeRecursively()); }

    bool available = false;
    QTemporaryDir folder;
    testing::FakeApplicationFiles files{folder.filePath(u"user"_s)};
    Publication published;
    ScriptedServer server;
    ConfigSync sync{server.base(), LocalConfig(files), HttpClient::create(), SerialQueue::create(u"sync"_s)};

private:
    void serve(const QString& name) {
        server.on("/pelloran/latest/" + name.toUtf8(), ScriptedServer::answer("200 OK", {}, contentOf(onServer(name))));
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

void syncUpdated(benchmark::State& state) {
    if (skipped(state)) {
        return;
    }
    for (auto _ : state) {
        state.PauseTiming();
        setting().forgetInstalled();
        state.ResumeTiming();
        require(std::holds_alternative<ConfigSyncResult::Updated>(setting().sync.syncAtLaunch().outcome));
    }
}

void syncUpToDate(benchmark::State& state) {
    if (skipped(state)) {
        return;
    }
    setting().sync.syncAtLaunch();
    const std::size_t before = setting().server.requests().size();
    for (auto _ : state) {
        require(std::holds_alternative<ConfigSyncResult::UpToDate>(setting().sync.syncAtLaunch().outcome));
    }
    const auto requests = setting().server.requests();
    state.counters["requests"] =
        benchmark::Counter(static_cast<double>(requests.size() - before), benchmark::Counter::kAvgIterations);
    state.counters["requestBytes"] = static_cast<double>(requests.back().size());
}

// What the sync's thread does with new files once they are installed. The main thread's share is data_benchmark's
// reload.
void readInstalled(benchmark::State& state) {
    if (skipped(state)) {
        return;
    }
    setting().sync.syncAtLaunch();
    for (auto _ : state) {
        require(WinrateData::read(setting().files).cards.has_value());
    }
}

void digest(benchmark::State& state) {
    if (skipped(state)) {
        return;
    }
    const QByteArray bundle = contentOf(setting().onServer(setting().published.bundle));
    for (auto _ : state) {
        benchmark::DoNotOptimize(sha256Hex(bundle));
    }
}

void checkArchive(benchmark::State& state) {
    if (skipped(state)) {
        return;
    }
    for (auto _ : state) {
        require(TarArchive::check(setting().onServer(setting().published.bundle)).has_value());
    }
}

void extractArchive(benchmark::State& state) {
    if (skipped(state)) {
        return;
    }
    for (auto _ : state) {
        const QTemporaryDir target;
        require(TarArchive::extract(setting().onServer(setting().published.bundle), target.path()).has_value());
    }
}

// Children and the server's thread work too, so the clock on the wall counts.
BENCHMARK(syncUpdated)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(syncUpToDate)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(readInstalled)->Unit(benchmark::kMillisecond);
BENCHMARK(digest)->Unit(benchmark::kMillisecond);
BENCHMARK(checkArchive)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(extractArchive)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

} // namespace pelloran

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QNetworkProxyFactory::setUseSystemConfiguration(false);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
