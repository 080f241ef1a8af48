#include "tests/soak/Player.h"
#include "tests/soak/Scenes.h"
#include "tests/soak/WholeProgram.h"
#include "tests/support/TestFonts.h"
#ifdef PELLORAN_PROGRAM
#include "tests/soak/DesktopRun.h"
#endif

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <iterator>
#include <optional>

// Thousands of ticks of the whole program: does it hold and cost as much at the end as it did before? See docs/soak.md.
namespace pelloran::soak {
namespace {

constexpr int held = 0;
constexpr int broken = 1;
constexpr int wrongUsage = 2;

volatile std::sig_atomic_t interrupted = 0;

struct Options {
    qint64 ticks = 20'000;
    int desktopMinutes = 0;
    bool brief = false;
    QString csv;
    QString scenes;
    QString paint;
    QString judge;
    Spoils spoils;
};

void say(const QString& text) {
    std::fputs(text.toUtf8().constData(), stdout);
    std::fflush(stdout);
}

// Null where it said what is wrong.
std::optional<Options> optionsOf(const QStringList& arguments) {
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Does the program hold as much after thousands of ticks as before?"));
    const QCommandLineOption help = parser.addHelpOption();
    const auto add = [&](const QString& name, const QString& does, const QString& value = {}) {
        parser.addOption({name, does, value});
    };
    add(QStringLiteral("ticks"), QStringLiteral("how many ticks, 20000 unless given"), QStringLiteral("N"));
    add(QStringLiteral("brief"), QStringLiteral("a short season, of which only the counts are judged"));
    add(QStringLiteral("csv"), QStringLiteral("writes the samples there"), QStringLiteral("FILE"));
    add(QStringLiteral("scenes"), QStringLiteral("keeps the painted scenes there"), QStringLiteral("FOLDER"));
    add(QStringLiteral("desktop"), QStringLiteral("the program itself on a virtual display, in its own time"),
        QStringLiteral("MINUTES"));
    add(QStringLiteral("leak"), QStringLiteral("forgets so much memory at every tick: the check must break"),
        QStringLiteral("KB"));
    add(QStringLiteral("spoil"), QStringLiteral("leaves these open, or makes every tick cost more: likewise"),
        QStringLiteral("descriptors|threads|cost"));
    add(QStringLiteral("judge"), QStringLiteral("only judges the samples of an earlier run"), QStringLiteral("FILE"));
    add(QStringLiteral("paint"), QStringLiteral("only paints the scenes"), QStringLiteral("FOLDER"));
    if (!parser.parse(arguments) || !parser.positionalArguments().isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(parser.errorText()));
        return std::nullopt;
    }
    if (parser.isSet(help)) {
        parser.showHelp();
    }
    bool understood = true;
    const auto number = [&](const QString& name, qint64 otherwise) {
        if (!parser.isSet(name)) {
            return otherwise;
        }
        bool isNumber = false;
        const qint64 value = parser.value(name).toLongLong(&isNumber);
        if (!isNumber || value <= 0) {
            std::fprintf(stderr, "--%s wants a number above 0\n", qPrintable(name));
            understood = false;
        }
        return value;
    };
    Options options;
    options.ticks = number(QStringLiteral("ticks"), options.ticks);
    options.desktopMinutes = static_cast<int>(number(QStringLiteral("desktop"), 0));
    options.spoils.leakKilobytes = static_cast<int>(number(QStringLiteral("leak"), 0));
    options.brief = parser.isSet(QStringLiteral("brief"));
    options.csv = parser.value(QStringLiteral("csv"));
    options.scenes = parser.value(QStringLiteral("scenes"));
    options.judge = parser.value(QStringLiteral("judge"));
    options.paint = parser.value(QStringLiteral("paint"));
    for (const QString& spoil : parser.values(QStringLiteral("spoil"))) {
        if (spoil == u"descriptors") {
            options.spoils.descriptors = true;
        } else if (spoil == u"threads") {
            options.spoils.threads = true;
        } else if (spoil == u"cost") {
            options.spoils.slowsDown = true;
        } else {
            std::fprintf(stderr, "--spoil knows descriptors, threads and cost\n");
            understood = false;
        }
    }
    return understood ? std::optional(options) : std::nullopt;
}

// Again and again during a run: one that is ended has something to show.
bool keep(const std::vector<Sample>& samples, const Options& options) {
    if (options.csv.isEmpty()) {
        return true;
    }
    QFile file(options.csv);
    if (!file.open(QIODevice::WriteOnly) || file.write(toCsv(samples)) < 0) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(options.csv));
        return false;
    }
    return true;
}

int report(const std::vector<Sample>& samples, const std::vector<Judged>& rows, const Options& options) {
    say(u'\n' + table(rows));
    if (!keep(samples, options)) {
        return broken;
    }
    const bool anyBroken = std::ranges::any_of(rows, &Judged::broken);
    say(anyBroken ? QStringLiteral("A bound is broken.\n") : QStringLiteral("All bounds hold.\n"));
    return anyBroken ? broken : held;
}

// In a process of its own: what painting leaves free in the memory would hide what is forgotten later.
bool paintElsewhere(const Options& options, const QString& folder) {
    say(QStringLiteral("painting the scenes\n"));
    QStringList arguments{QStringLiteral("--paint"), folder};
    if (options.brief) {
        arguments.append(QStringLiteral("--brief"));
    }
    return QProcess::execute(QCoreApplication::applicationFilePath(), arguments) == 0;
}

Bounds boundsOf(const Season& season, const Options& options) {
    Bounds bounds = acceleratedBounds;
    bounds.period = static_cast<double>(season.ticks.size());
    if (options.brief) { // a few hundred ticks tell nothing of growth
        bounds.resident.reset();
        bounds.inUse.reset();
        bounds.tickCost.reset();
    }
    return bounds;
}

// What an earlier run has left.
int judgeAgain(const Options& options) {
    QFile file(options.judge);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(options.judge));
        return wrongUsage;
    }
    const auto samples = fromCsv(file.readAll());
    if (!samples) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(options.judge), qPrintable(samples.error()));
        return wrongUsage;
    }
    const Season season = options.brief ? Season::brief() : Season::whole();
    const bool onDesktop = !samples->empty() && !samples->front().inUse;
    return report(*samples, judge(*samples, onDesktop ? desktopBounds : boundsOf(season, options)), options);
}

int followFaster(const Options& options, const QString& home) {
    const Season season = options.brief ? Season::brief() : Season::whole();
    const QString scenes = options.scenes.isEmpty() ? home + QStringLiteral("/scenes") : options.scenes;
    if (!QDir().mkpath(scenes) || !paintElsewhere(options, scenes)) {
        return broken;
    }
    DataServer server;
    if (!server.start(home + QStringLiteral("/published"))) {
        return broken;
    }
    const QString logs = home + QStringLiteral("/logs");
    Screen screen(scenes);
    WholeProgram program(screen, logs, server.url());
    if (!program.launch()) {
        std::fprintf(stderr, "the program does not start: %s\n", qPrintable(program.complaints().join(u'\n')));
        return broken;
    }
    Player player(season, screen, server, program, logs, options.spoils);
    player.play(options.ticks, [&](int seasons) {
        const Sample& last = player.samples().back();
        keep(player.samples(), options);
        say(QStringLiteral("%1 ticks, %2 seasons, %3 s: %4 KB resident, %5 KB asked for, %6 descriptors, %7 threads\n")
                .arg(last.tick)
                .arg(seasons)
                .arg(last.seconds, 0, 'f', 0)
                .arg(last.resident)
                .arg(last.inUse.value_or(0))
                .arg(last.descriptors)
                .arg(last.threads));
        return interrupted == 0;
    });
    std::vector<Judged> rows = judge(player.samples(), boundsOf(season, options));
    std::ranges::copy(player.remarks(), std::back_inserter(rows));
    const QStringList complaints = program.complaints();
    rows.push_back({QStringLiteral("lines of the log that nobody expects"), QString::number(complaints.size()),
                    QStringLiteral("none"), !complaints.isEmpty()});
    for (const QString& difference : player.differences()) {
        std::fprintf(stderr, "pick: %s\n", qPrintable(difference));
    }
    for (const QString& line : complaints) {
        std::fprintf(stderr, "log: %s\n", qPrintable(line));
    }
    return report(player.samples(), rows, options);
}

int followInItsTime([[maybe_unused]] const Options& options) {
#ifdef PELLORAN_PROGRAM
    const auto samples = followOnDesktop(std::chrono::minutes(options.desktopMinutes), [](const Sample& sample) {
        say(QStringLiteral("%1 s: %2 ticks, %3 KB resident, %4 descriptors, %5 threads\n")
                .arg(sample.seconds, 0, 'f', 0)
                .arg(sample.tick)
                .arg(sample.resident)
                .arg(sample.descriptors)
                .arg(sample.threads));
        return interrupted == 0;
    });
    if (!samples) {
        std::fprintf(stderr, "%s\n", qPrintable(samples.error()));
        return broken;
    }
    return report(*samples, judge(*samples, desktopBounds), options);
#else
    std::fprintf(stderr, "there is no desktop to be had in this build\n");
    return wrongUsage;
#endif
}

// Begins this program anew with an allocator that keeps no pieces of each size back for each thread: to it they are
// asked for, and they take hours to become as many as they get. What is forgotten would show among them only when it is
// much.
void measureExactly(char** argv) {
    constexpr const char* variable = "GLIBC_TUNABLES";
    if (!qEnvironmentVariableIsSet(variable)) {
        qputenv(variable, "glibc.malloc.tcache_count=0");
        execv("/proc/self/exe", argv); // comes back only where that cannot be; then it is measured as it is
    }
}

int run(int argc, char** argv) {
    const QTemporaryDir home;
    for (const char* variable : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) {
        const QString folder = home.filePath(QString::fromLatin1(variable));
        QDir().mkpath(folder);
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv(variable, folder.toLocal8Bit());
    }
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::useTestFonts();
    const QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Pelloran"));
    QApplication::setQuitOnLastWindowClosed(false);
    const auto options = optionsOf(QApplication::arguments());
    if (!options) {
        return wrongUsage;
    }
    if (!options->paint.isEmpty()) {
        return paint(options->brief ? Season::brief() : Season::whole(), options->paint) ? held : broken;
    }
    if (!options->judge.isEmpty()) {
        return judgeAgain(*options);
    }
    // A run that is ended before its time ends with its season, and tells what it found.
    std::signal(SIGINT, [](int) { interrupted = 1; });
    std::signal(SIGTERM, [](int) { interrupted = 1; });
    return options->desktopMinutes > 0 ? followInItsTime(*options) : followFaster(*options, home.path());
}

} // namespace
} // namespace pelloran::soak

int main(int argc, char** argv) {
    pelloran::soak::measureExactly(argv);
    return pelloran::soak::run(argc, argv);
}
