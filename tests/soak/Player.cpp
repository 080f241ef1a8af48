#include "tests/soak/Player.h"

#include "app/Json.h"
#include "tests/soak/Trend.h"

#include <QDir>

#include <fcntl.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <thread>
#include <utility>

namespace pelloran::soak {

namespace {

using namespace std::chrono_literals;

template <typename... Handlers>
struct Overloads : Handlers... {
    using Handlers::operator()...;
};

constexpr qint64 firstDeckId = 9'510'000'000;
constexpr qsizetype sessionsKept = 3; // players clear away old ones; a folder of thousands would be its own matter

double microseconds(std::chrono::nanoseconds time) {
    return std::chrono::duration<double, std::micro>(time).count();
}

// The same work each time, of a tick's kind: through more memory than the nearest caches hold, and by branches that
// nobody foresees. What the machine's other work does to a tick it does to this too.
double yardstick() {
    static const std::vector<std::uint32_t> numbers = [] {
        std::vector<std::uint32_t> made(std::size_t{1} << 18U);
        std::ranges::generate(made, std::minstd_rand());
        return made;
    }();
    static std::vector<std::uint32_t> copy;
    const auto before = workOfThis();
    copy = numbers;
    std::ranges::sort(copy.begin(), copy.begin() + 2000);
    return microseconds(workOfThis() - before);
}

QStringList offersOf(const stage::Step& step) {
    const bool chinese = AppLanguage::resolvedPreference() == AppLanguage::zh;
    const auto shown = [&](const stage::Name& name) { return chinese ? name.chinese : name.english; };
    QStringList names;
    for (const stage::HeroClass& hero : step.heroes) {
        names.append(shown(hero.name));
    }
    for (const stage::Card& card : step.cards) {
        names.append(shown(card.name));
    }
    return names;
}

} // namespace

Player::Player(const Season& toPlay, Screen& itsScreen, DataServer& itsServer, WholeProgram& itsProgram,
               const QString& folder, const Spoils& toSpoil)
    : season(toPlay)
    , screen(itsScreen)
    , server(itsServer)
    , program(itsProgram)
    , logsDir(folder)
    , spoils(toSpoil) {}

void Player::play(qint64 count, const std::function<bool(int seasons)>& goOn) {
    const auto begin = std::chrono::steady_clock::now();
    const auto length = static_cast<qint64>(season.ticks.size());
    constexpr qint64 samplesOfSeason = 20;
    const qint64 ticksBetweenSamples = length / samplesOfSeason;
    taken.assign(static_cast<std::size_t>(count / ticksBetweenSamples + 1), Sample());
    taken.clear();
    for (const Finds finds : {Finds::noPick, Finds::knownPick, Finds::newPick}) {
        // The soak's own memory does not grow: it is there, and has been written to.
        costs[finds].assign(static_cast<std::size_t>(count), 1);
        costs[finds].clear();
    }
    std::vector<double> sinceSample;
    sinceSample.reserve(static_cast<std::size_t>(ticksBetweenSamples));
    std::vector<double> yardsticks;
    yardsticks.reserve(sinceSample.capacity());
    for (ticks = 0; ticks < count; ++ticks) {
        const auto number = static_cast<std::size_t>(ticks % length);
        const Tick& tick = season.ticks[number];
        for (const Event& event : tick.before) {
            happen(event);
        }
        if (tick.pick) {
            program.settle(); // data that came meanwhile shows in the tick
        }
        const auto before = workOfThis();
        program.tick();
        spoil(ticks);
        const double cost = microseconds(workOfThis() - before);
        sinceSample.push_back(cost);
        yardsticks.push_back(yardstick());
        costs[tick.finds].push_back(cost);
        if (tick.pick) {
            check(tick, number, ticks / length);
        }
        if ((ticks + 1) % ticksBetweenSamples == 0) {
            program.settle();
            Sample sample = sampleOfThis();
            sample.tick = ticks + 1;
            sample.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
            sample.tickCost = median(sinceSample);
            sample.yardstick = median(yardsticks);
            taken.push_back(sample);
            sinceSample.clear();
            yardsticks.clear();
        }
        if ((ticks + 1) % length == 0 && !goOn(static_cast<int>((ticks + 1) / length))) {
            break;
        }
    }
    program.settle();
}

void Player::happen(const Event& event) {
    std::visit(Overloads{
                   [&](const StartGame&) {
                       screen.closeWindow();
                       windowIsNew = true;
                       session.reset();
                       auto made = stage::SessionFolder::create(logsDir, [this] { return now(); });
                       if (!made) {
                           logsFailed = true;
                           return;
                       }
                       session = *std::move(made);
                       sessions.append(session->path());
                       if (sessions.size() > sessionsKept) {
                           QDir(sessions.takeFirst()).removeRecursively();
                       }
                   },
                   [&](const BeginStep& begun) {
                       const stage::Step& step = season.drafts[begun.scene.draft].scenario.steps[begun.step];
                       if (!script || begun.scene.draft != draftNumber ||
                           (windowIsNew && begun.step == 0)) { // another draft, if only of the next season
                           draftNumber = begun.scene.draft;
                           script.emplace(draft().client.production.language, firstDeckId + ticks);
                       }
                       if (std::exchange(windowIsNew, false)) {
                           write(script->start());
                           screen.openWindow(begun.scene);
                       } else {
                           screen.show(begun.scene);
                       }
                       write(script->begin(step));
                   },
                   [&](const ResizeWindow& resized) { screen.show(resized.scene); },
                   [&](const Sync& sync) {
                       program.settle();
                       switch (sync.server) {
                       case Sync::Server::newData:
                           publication = 1 - publication;
                           ++publications;
                           server.serve(publication);
                           break;
                       case Sync::Server::asBefore:
                           break;
                       case Sync::Server::gone:
                           server.serveNothing();
                           break;
                       }
                       program.sync();
                   },
                   [&](const ChooseLanguage& choice) { program.chooseLanguage(choice.language); },
                   [&](const TogglePanel&) { program.togglePanel(); },
                   [&](const ChangeLook&) { program.changeLook(); },
               },
               event);
}

void Player::check(const Tick& tick, std::size_t number, qint64 seasonNumber) {
    const QStringList expected = offersOf(season.drafts[tick.pick->draft].scenario.steps[tick.pick->step]);
    const OverlaySnapshot& shown = program.shown();
    for (qsizetype slot = 0; slot < expected.size(); ++slot) {
        ++offers;
        const auto* tile =
            std::cmp_less(slot, shown.cards.size()) ? &shown.cards[static_cast<std::size_t>(slot)] : nullptr;
        if (!tile || !tile->recognized) {
            ++unread;
        } else if (tile->name != expected[slot]) {
            ++wrong;
        }
    }
    if (seasonNumber == 0) {
        firstSeason[number] = shown;
    } else if (firstSeason[number] != shown) {
        ++otherThanBefore;
        constexpr qsizetype most = 5;
        if (toldDifferences.size() < most) {
            const auto line = [](const OverlaySnapshot& snapshot) {
                return QString::fromUtf8(json::line(json::toJson(snapshot)).trimmed());
            };
            toldDifferences.append(QStringLiteral("tick %1, season %2: %3 was %4")
                                       .arg(QString::number(ticks), QString::number(seasonNumber + 1), line(shown),
                                            line(firstSeason[number])));
        }
    }
}

void Player::spoil(qint64 tick) const {
    if (spoils.leakKilobytes > 0) {
        const auto bytes = static_cast<std::size_t>(spoils.leakKilobytes) * 1024;
        static void* volatile forgotten = nullptr;
        forgotten = std::malloc(bytes);
        std::memset(forgotten, 1, bytes);
    }
    if (spoils.descriptors && tick % 100 == 0) {
        (void)open("/dev/null", O_RDONLY | O_CLOEXEC);
    }
    if (spoils.threads && tick % 100 == 0) {
        std::thread([] { std::this_thread::sleep_for(1h); }).detach();
    }
    if (spoils.slowsDown) {
        constexpr auto more = 1us;
        const auto until = workOfThis() + tick * more;
        while (workOfThis() < until) {
        }
    }
}

void Player::write(const std::vector<stage::LogLine>& lines) {
    if (!session || !session->write(lines)) {
        logsFailed = true;
    }
}

std::chrono::system_clock::time_point Player::now() const {
    return std::chrono::system_clock::time_point(1'750'000'000s) + ticks * 900ms;
}

std::vector<Judged> Player::remarks() const {
    std::vector<Judged> rows{
        {QStringLiteral("offers at the end of picks"),
         QStringLiteral("%1 shown by name, %2 unread, %3 wrong").arg(offers - unread - wrong).arg(unread).arg(wrong),
         QStringLiteral("none wrong, one in twenty unread"), wrong > 0 || unread * 20 > offers},
        {QStringLiteral("picks shown other than in the first season"), QString::number(otherThanBefore),
         QStringLiteral("none"), otherThanBefore > 0},
        {QStringLiteral("syncs"),
         QStringLiteral("%1, of which %2 brought data").arg(program.syncs()).arg(program.reloads()),
         QStringLiteral("%1 bring data").arg(publications), program.reloads() != publications},
    };
    if (logsFailed) {
        rows.push_back({QStringLiteral("the game's logs"), QStringLiteral("could not be written"), {}, true});
    }
    const std::pair<Finds, QString> sorts[] = {
        {Finds::noPick, QStringLiteral("between picks")},
        {Finds::knownPick, QStringLiteral("of a pick seen before")},
        {Finds::newPick, QStringLiteral("of a new pick")},
    };
    for (const auto& [finds, name] : sorts) {
        const std::vector<double>& all = costs.at(finds);
        const auto middle = all.begin() + static_cast<std::ptrdiff_t>(all.size() / 2);
        rows.push_back({QStringLiteral("a tick ") + name,
                        QStringLiteral("median %1 ms in the first half, %2 ms in the second")
                            .arg(median({all.begin(), middle}) / 1000, 0, 'f', 2)
                            .arg(median({middle, all.end()}) / 1000, 0, 'f', 2),
                        {},
                        false});
    }
    return rows;
}

} // namespace pelloran::soak
