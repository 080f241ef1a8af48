#include "tools/stage/CardFile.h"
#include "tools/stage/LogScript.h"
#include "tools/stage/Scenario.h"
#include "tools/stage/ScreenSeries.h"
#include "tools/stage/SessionFolder.h"
#include "tools/stage/StageOptions.h"
#include "tools/stage/StageWindow.h"

#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSocketNotifier>
#include <QSysInfo>
#include <QTimer>

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <optional>

namespace pelloran::stage {

namespace {

constexpr int done = 0;
constexpr int failed = 1;
constexpr int wrongUsage = 2;

void say(std::FILE* stream, const QString& text) {
    std::fputs(text.toUtf8().constData(), stream);
    std::fflush(stream);
}

QJsonObject named(const QString& id, const Name& name, Language language) {
    return {{QStringLiteral("id"), id}, {QStringLiteral("name"), name.in(language)}};
}

// One line that says what is on stage.
QString report(const Situation& situation, std::size_t step, Language language, const QString& sessionDir) {
    QJsonArray offers;
    for (const HeroClass& hero : situation.step.heroes) {
        offers.append(named(hero.key, hero.name, language));
    }
    const bool onScreen = situation.step.kind == StepKind::cardPick || situation.step.kind == StepKind::choose;
    for (const Card& card : situation.step.cards) {
        if (onScreen) {
            offers.append(named(card.id, card.name, language));
        }
    }
    QJsonArray deck;
    for (const Card& card : situation.deck) {
        deck.append(card.id);
    }
    const QJsonObject line{
        {QStringLiteral("step"), static_cast<qint64>(step)},
        {QStringLiteral("kind"), kindName(situation.step.kind)},
        {QStringLiteral("language"), language == Language::english ? QStringLiteral("en") : QStringLiteral("zh")},
        {QStringLiteral("offers"), offers},
        {QStringLiteral("chosen"), situation.step.chosen ? offers[*situation.step.chosen] : QJsonValue()},
        {QStringLiteral("hero"), situation.hero ? QJsonValue(situation.hero->key) : QJsonValue()},
        {QStringLiteral("deck"), deck},
        {QStringLiteral("sessionDir"), sessionDir.isEmpty() ? QJsonValue() : QJsonValue(sessionDir)},
    };
    return QString::fromUtf8(QJsonDocument(line).toJson(QJsonDocument::Compact)) + u'\n';
}

// Plays the steps one after the other, by time or by lines on standard input.
class Play final : public QObject {
public:
    Play(const StageOptions& playOptions, Scenario playScenario, Language playLanguage, StageWindow& playWindow,
         std::optional<SessionFolder> playSession)
        : options(playOptions)
        , scenario(std::move(playScenario))
        , language(playLanguage)
        , window(playWindow)
        , session(std::move(playSession))
        , script(playLanguage, 9'510'000'000 + playOptions.seed % 1'000'000) {
        timer.setSingleShot(true);
        connect(&timer, &QTimer::timeout, this, &Play::next);
    }

    void start() {
        write(script.start());
        begin(0);
        if (options.stepsOnStdin) {
            input = std::make_unique<QSocketNotifier>(STDIN_FILENO, QSocketNotifier::Read);
            connect(input.get(), &QSocketNotifier::activated, this, &Play::readInput);
        }
    }

private:
    void begin(std::size_t step) {
        current = step;
        const Situation situation = situationAt(scenario, step);
        write(script.begin(situation.step));
        window.show(situation, [this, situation, step] {
            say(stdout, report(situation, step, language, session ? session->path() : QString()));
        });
        if (!options.stepsOnStdin) {
            timer.start(std::chrono::duration_cast<std::chrono::milliseconds>(situation.step.duration / options.speed));
        }
    }

    void next() {
        if (current + 1 < scenario.steps.size()) {
            begin(current + 1);
        } else if (options.loop) {
            begin(0);
        } else if (options.exitAtEnd) {
            QCoreApplication::exit(done);
        } else if (options.stepsOnStdin) {
            say(stderr, QStringLiteral("pelloran-stage: that was the last step\n"));
        }
    }

    void readInput() {
        char bytes[4096];
        const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
        if (count <= 0) {
            QCoreApplication::exit(done);
            return;
        }
        pending.append(bytes, count);
        for (qsizetype end = pending.indexOf('\n'); end >= 0; end = pending.indexOf('\n')) {
            const QByteArray line = pending.left(end).trimmed();
            pending.remove(0, end + 1);
            if (line == "next") {
                next();
            } else if (line == "quit") {
                QCoreApplication::exit(done);
            } else {
                say(stderr, QStringLiteral("pelloran-stage: on standard input I know \"next\" and \"quit\"\n"));
            }
        }
    }

    void write(const std::vector<LogLine>& lines) {
        if (session && !session->write(lines)) {
            say(stderr, QStringLiteral("pelloran-stage: cannot write to the logs in %1\n").arg(session->path()));
            QCoreApplication::exit(failed);
        }
    }

    StageOptions options;
    Scenario scenario;
    Language language;
    StageWindow& window;
    std::optional<SessionFolder> session;
    LogScript script;
    std::size_t current = 0;
    QTimer timer;
    std::unique_ptr<QSocketNotifier> input;
    QByteArray pending;
};

int paintPicture(const StageOptions& options, const Scenario& scenario, const Production& production,
                 const Lettering& lettering) {
    const auto step = static_cast<std::size_t>(options.step);
    const Situation situation = situationAt(scenario, step);
    ScenePainter painter(options.size, production, lettering);
    painter.show(Screen::onStage(situation));
    QImage picture(options.size, QImage::Format_RGB32);
    QPainter canvas(&picture);
    painter.paint(canvas, 2.4);
    canvas.end();
    if (!picture.save(options.picture, "PNG")) {
        say(stderr, QStringLiteral("pelloran-stage: cannot write %1\n").arg(options.picture));
        return failed;
    }
    say(stdout, report(situation, step, production.language, {}));
    return done;
}

int paintSeries(const StageOptions& options) {
    std::vector<Card> cards = Catalogue::sample().cards();
    if (!options.cards.isEmpty()) {
        std::expected<std::vector<Card>, QString> read = readCardFile(options.cards);
        if (!read) {
            say(stderr, QStringLiteral("pelloran-stage: %1\n").arg(read.error()));
            return failed;
        }
        cards = *std::move(read);
    }
    const std::expected<ScreenSeries, QString> series = ScreenSeries::create({.seed = options.seed,
                                                                              .size = options.size,
                                                                              .language = options.language,
                                                                              .look = options.look,
                                                                              .lettering = options.lettering,
                                                                              .heroesByName = options.heroesByName},
                                                                             std::move(cards));
    const std::optional<QString> problem =
        series ? series->write(options.paintScreens, options.count) : std::optional(series.error());
    if (problem) {
        say(stderr, QStringLiteral("pelloran-stage: %1\n").arg(*problem));
    }
    return problem ? failed : done;
}

int playInWindow(const StageOptions& options, const Scenario& scenario, const Production& production,
                 const Lettering& lettering) {
    std::optional<SessionFolder> session;
    if (!options.logsDir.isEmpty()) {
        std::expected<SessionFolder, QString> made =
            SessionFolder::create(options.logsDir, [] { return std::chrono::system_clock::now(); });
        if (!made) {
            say(stderr, QStringLiteral("pelloran-stage: %1\n").arg(made.error()));
            return failed;
        }
        session = std::move(*made);
    }
    StageWindow window([&](QSize size) { return std::make_unique<ScenePainter>(size, production, lettering); });
    window.resize(options.size / window.devicePixelRatio());
    options.fullScreen ? window.showFullScreen() : window.QWindow::show();
    Play play(options, scenario, production.language, window, std::move(session));
    play.start();
    return QGuiApplication::exec();
}

int run(int argc, char** argv) {
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    const std::expected<StageOptions, QString> options = StageOptions::parse(arguments);
    if (!options) {
        say(stderr, QStringLiteral("pelloran-stage: %1\n\n").arg(options.error()) + StageOptions::usage());
        return wrongUsage;
    }
    if (options->help) {
        say(stdout, StageOptions::usage());
        return done;
    }
    if (options->listScenarios) {
        for (const QString& name : Scenario::shippedNames()) {
            const std::expected<Scenario, QString> shipped = Scenario::load(name);
            say(stdout, QStringLiteral("%1: %2\n").arg(name, shipped ? shipped->about : shipped.error()));
        }
        return done;
    }
    const std::expected<Scenario, QString> scenario = Scenario::load(options->scenario);
    if (!scenario) {
        say(stderr, QStringLiteral("pelloran-stage: %1\n").arg(scenario.error()));
        return wrongUsage;
    }
    if (!options->picture.isEmpty() && static_cast<std::size_t>(options->step) >= scenario->steps.size()) {
        say(stderr, QStringLiteral("pelloran-stage: the last step is %1\n").arg(scenario->steps.size() - 1));
        return wrongUsage;
    }

    // Decided before the application object is made, which opens the display.
    if (!options->picture.isEmpty() || !options->paintScreens.isEmpty()) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    } else if (QSysInfo::kernelType() == u"linux" && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        if (qEnvironmentVariableIsEmpty("DISPLAY")) {
            say(stderr,
                QStringLiteral("pelloran-stage: no X display (DISPLAY is not set); --picture works without one\n"));
            return failed;
        }
        qputenv("QT_QPA_PLATFORM", "xcb"); // where windows of other programs can be captured
    }
    // A reader that leaves must not end the play.
    std::signal(SIGPIPE, SIG_IGN);
    // Makes the class of the window, by which the game is known.
    QCoreApplication::setApplicationName(QStringLiteral("Hearthstone"));
    int noArguments = 1;
    const QGuiApplication application(noArguments, argv);

    if (!options->paintScreens.isEmpty()) {
        return paintSeries(*options);
    }
    const Production production{.language = options->language.value_or(scenario->language),
                                .look = options->look.value_or(scenario->look),
                                .seed = options->seed,
                                .heroesByName = options->heroesByName};
    const std::expected<Lettering, QString> lettering =
        Lettering::create(production.language, options->lettering.value_or(ChineseLettering::printed));
    if (!lettering) {
        say(stderr, QStringLiteral("pelloran-stage: %1\n").arg(lettering.error()));
        return failed;
    }
    return options->picture.isEmpty() ? playInWindow(*options, *scenario, production, *lettering)
                                      : paintPicture(*options, *scenario, production, *lettering);
}

} // namespace

} // namespace pelloran::stage

int main(int argc, char** argv) {
    return pelloran::stage::run(argc, argv);
}
