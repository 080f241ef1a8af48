#include "tests/desktop/Picture.h"
#include "tests/platform/x11/TestClient.h"
#include "tests/support/ProcessStatus.h"
#include "tests/support/VirtualDisplay.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>

// What the whole program costs on a desktop of its own, with as many cards as the game has: the time from its start to
// a panel that can be read, its memory in a pick, its work while nothing happens. Prints figures and judges none.
namespace pelloran {
namespace {

using testing::TestClient;
using testing::VirtualDisplay;

constexpr int cardCount = 7195;
constexpr int starts = 9;
constexpr int idleSeconds = 30;
const QColor titleColor = QColor::fromRgbF(0.95F, 0.78F, 0.35F);

QJsonArray readArray(const QString& path, const char* key) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    return document.isArray() ? document.array() : document.object()[QLatin1StringView(key)].toArray();
}

// The game's cards where their names are at hand, else the sample's over and over under names of their own.
QJsonArray cards() {
    const QJsonArray sample =
        readArray(QStringLiteral(PELLORAN_RESOURCES "/winrates/all_classes_LAST_7_DAYS.json"), "cards");
    QJsonArray rows = readArray(QStringLiteral(PELLORAN_TEST_DATA "/cards.json"), "cards");
    std::printf("names: %s\n", rows.size() == cardCount ? "the game's" : "invented");
    if (rows.size() != cardCount) {
        rows = sample;
    }
    for (qsizetype i = 0; i < cardCount; ++i) {
        QJsonObject row = i < rows.size() ? rows[i].toObject() : sample[i % sample.size()].toObject();
        if (i >= rows.size()) {
            for (const auto& key : {QStringLiteral("card_id"), QStringLiteral("name_en"), QStringLiteral("name_zh")}) {
                row[key] = row[key].toString() + QStringLiteral(" %1").arg(i);
            }
        }
        const QJsonObject figures = sample[i % sample.size()].toObject();
        for (const auto& key :
             {QStringLiteral("deck_win_rate"), QStringLiteral("drawn_win_rate"), QStringLiteral("played_win_rate"),
              QStringLiteral("popularity"), QStringLiteral("avg_copies_in_deck"), QStringLiteral("num_games")}) {
            row[key] = figures[key];
        }
        if (i < rows.size()) {
            rows[i] = row;
        } else {
            rows.append(row);
        }
    }
    return rows;
}

bool until(const std::function<bool()>& condition, int milliseconds = 60'000) {
    return testing::eventually(condition, milliseconds);
}

class Desktop {
public:
    // Null when this machine cannot show one.
    static std::unique_ptr<Desktop> furnish() {
        auto desktop = std::make_unique<Desktop>();
        desktop->display =
            VirtualDisplay::start({QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("1920x1080x24")});
        if (!desktop->display) {
            return nullptr;
        }
        desktop->client = std::make_unique<TestClient>(desktop->display->name());
        if (!testing::startWindowManager(*desktop->display, *desktop->client)) {
            return nullptr;
        }
        const QString home = desktop->home.path();
        for (const char* folder : {"logs", "session", "data/Pelloran/config/winrates"}) {
            QDir().mkpath(home + u'/' + QLatin1StringView(folder));
        }
        QFile::setPermissions(home + QStringLiteral("/session"),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QFile file(home + QStringLiteral("/data/Pelloran/config/winrates/all_classes_LAST_7_DAYS.json"));
        if (!file.open(QIODevice::WriteOnly)) {
            return nullptr;
        }
        file.write(QJsonDocument(QJsonObject{{QStringLiteral("cards"), cards()}}).toJson(QJsonDocument::Compact));
        auto& variables = desktop->environment;
        variables.insert(QStringLiteral("PATH"), qEnvironmentVariable("PATH"));
        variables.insert(QStringLiteral("HOME"), home);
        variables.insert(QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/data"));
        variables.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/config"));
        variables.insert(QStringLiteral("XDG_RUNTIME_DIR"), home + QStringLiteral("/session"));
        variables.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("disabled:"));
        variables.insert(QStringLiteral("LANG"), QStringLiteral("C.UTF-8"));
        variables.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(desktop->display->name()));
        return desktop;
    }

    std::unique_ptr<QProcess> start(const char* program, const QStringList& arguments) const {
        auto process = std::make_unique<QProcess>();
        process->setProcessEnvironment(environment);
        process->setStandardErrorFile(home.path() + QStringLiteral("/log"), QIODevice::Append);
        process->start(QString::fromLocal8Bit(program),
                       QStringList{QStringLiteral("--logs-dir"), home.path() + QStringLiteral("/logs")} + arguments);
        process->waitForStarted();
        return process;
    }

    xcb_window_t panel() const {
        for (const xcb_window_t window : client->children(client->root())) {
            if (client->text(window, "WM_CLASS").startsWith("pelloran") && client->isViewable(window)) {
                return window;
            }
        }
        return XCB_WINDOW_NONE;
    }

    bool panelHasTitle() const {
        const xcb_window_t window = panel();
        if (window == XCB_WINDOW_NONE) {
            return false;
        }
        QRect title = client->bounds(window);
        title.setSize({160, 40});
        return testing::shows(client->screenshot(title), titleColor);
    }

    QByteArray log() const {
        QFile file(home.path() + QStringLiteral("/log"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    QTemporaryDir home;
    QProcessEnvironment environment;
    std::unique_ptr<VirtualDisplay> display;
    std::unique_ptr<TestClient> client;
};

void end(QProcess& process) {
    process.terminate();
    process.waitForFinished(10'000);
}

bool measureStart(const Desktop& desktop) {
    std::vector<qint64> mapped;
    std::vector<qint64> painted;
    for (int i = 0; i < starts; ++i) {
        QElapsedTimer sinceStart;
        sinceStart.start();
        const auto program = desktop.start(PELLORAN_PROGRAM, {});
        if (!until([&] { return desktop.panel() != XCB_WINDOW_NONE; })) {
            return false;
        }
        mapped.push_back(sinceStart.elapsed());
        if (!until([&] { return desktop.panelHasTitle(); })) {
            return false;
        }
        painted.push_back(sinceStart.elapsed());
        end(*program);
    }
    for (auto* times : {&mapped, &painted}) {
        std::ranges::sort(*times);
        std::printf("start to panel %s: median %lld ms, from %lld to %lld\n",
                    times == &mapped ? "on screen" : "painted", static_cast<long long>((*times)[starts / 2]),
                    static_cast<long long>(times->front()), static_cast<long long>(times->back()));
    }
    return desktop.log().contains(QByteArray::number(cardCount) + " cards");
}

// Of /proc/PID/status, in kB.
int memory(qint64 process, const QByteArray& field) {
    QFile file(QStringLiteral("/proc/%1/status").arg(process));
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray& line : file.readAll().split('\n')) {
            if (line.startsWith(field)) {
                return line.simplified().split(' ').value(1).toInt();
            }
        }
    }
    return -1;
}

// Processor time so far, in seconds.
double work(qint64 process) {
    using Seconds = std::chrono::duration<double>;
    return Seconds(testing::processorTimeOf(process).value_or(std::chrono::milliseconds())).count();
}

bool measurePick(const Desktop& desktop) {
    const auto stage =
        desktop.start(PELLORAN_STAGE, {QStringLiteral("--full-screen"), QStringLiteral("--steps-on-stdin")});
    const auto program = desktop.start(PELLORAN_PROGRAM, {QStringLiteral("--snapshots")});
    const auto readUntil = [](QProcess& process, const std::function<bool(const QByteArray&)>& wanted) {
        const QDeadlineTimer deadline(60'000);
        while (!deadline.hasExpired()) {
            if (!process.canReadLine()) {
                process.waitForReadyRead(100);
            } else if (wanted(process.readLine())) {
                return true;
            }
        }
        return false;
    };
    bool read = true;
    for (const char* phase : {"heroPick", "cardPick", "cardPick", "cardPick"}) {
        read = read && readUntil(*stage, [&](const QByteArray& line) {
                   const bool there = line.contains("\"kind\":\"" + QByteArray(phase) + '"');
                   if (!there) {
                       stage->write("next\n");
                   }
                   return there;
               });
        read = read && readUntil(*program, [&](const QByteArray& line) {
                   return line.contains("\"phase\":\"" + QByteArray(phase) + '"') &&
                          line.count("\"recognized\":true") == 3;
               });
        stage->write("next\n");
        if (read) {
            std::printf("memory in a pick (%s): %d MB resident, %d MB at most\n", phase,
                        memory(program->processId(), "VmRSS:") / 1024, memory(program->processId(), "VmHWM:") / 1024);
        }
    }
    end(*program);
    end(*stage);
    return read;
}

bool measureIdle(const Desktop& desktop) {
    // The last draft's logs lie in their folder still; a stage at its main menu writes newer ones.
    const auto stage = desktop.start(PELLORAN_STAGE, {QStringLiteral("--steps-on-stdin")});
    const auto program = desktop.start(PELLORAN_PROGRAM, {});
    if (!until([&] { return desktop.panelHasTitle(); })) {
        return false;
    }
    QTest::qSleep(3000); // until the panel has come to rest
    const double before = work(program->processId());
    QTest::qSleep(idleSeconds * 1000);
    const double after = work(program->processId());
    std::printf("outside of a draft: %.2f %% of a core over %d s, %d MB resident\n",
                100 * (after - before) / idleSeconds, idleSeconds, memory(program->processId(), "VmRSS:") / 1024);
    end(*program);
    end(*stage);
    return true;
}

int run() {
    const auto desktop = Desktop::furnish();
    if (!desktop) {
        std::fputs("needs Xvfb and openbox\n", stderr);
        return 1;
    }
    for (const auto measure : {measureStart, measurePick, measureIdle}) {
        if (!measure(*desktop)) {
            std::fprintf(stderr, "the program did not do what was to be measured; its log:\n%s\n",
                         desktop->log().constData());
            return 1;
        }
        std::fflush(stdout);
    }
    return 0;
}

} // namespace
} // namespace pelloran

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    return pelloran::run();
}
