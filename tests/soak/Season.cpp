#include "tests/soak/Season.h"

#include <QtGlobal>

#include <algorithm>
#include <array>
#include <random>
#include <utility>

namespace pelloran::soak {

namespace {

using stage::ChineseLettering;
using stage::Language;
using stage::Look;
using stage::Step;
using stage::StepKind;

// How many ticks picks stay on screen: people take from four seconds to half a minute.
constexpr std::array pickTicks{20, 5, 11, 7, 14, 4, 10, 8};

Step stepOf(StepKind kind) {
    Step step;
    step.kind = kind;
    return step;
}

// Three different ones of what is offered in drafts.
template <typename Offer>
std::vector<Offer> three(const std::vector<Offer>& all, std::mt19937& random) {
    std::vector<Offer> chosen = all;
    for (std::size_t i = 0; i < 3; ++i) {
        std::swap(chosen[i], chosen[i + random() % (chosen.size() - i)]); // as it is on every machine
    }
    chosen.resize(3);
    return chosen;
}

stage::Scenario scenarioOf(Language language, std::size_t picks, std::mt19937& random) {
    const stage::Catalogue& catalogue = stage::Catalogue::sample();
    stage::Scenario scenario;
    scenario.language = language;
    scenario.steps.push_back(stepOf(StepKind::idle));
    Step heroes = stepOf(StepKind::heroPick);
    heroes.heroes = three(catalogue.heroClasses(), random);
    scenario.steps.push_back(heroes);
    for (const StepKind kind : {StepKind::lookAtHero, StepKind::chooseHero}) {
        heroes.kind = kind;
        heroes.chosen = 1;
        scenario.steps.push_back(heroes);
    }
    for (std::size_t i = 0; i < picks; ++i) {
        Step cards = stepOf(StepKind::cardPick);
        cards.cards = three(catalogue.cards(), random);
        scenario.steps.push_back(cards);
        cards.kind = StepKind::choose;
        cards.chosen = static_cast<int>(i % 3);
        scenario.steps.push_back(cards);
    }
    scenario.steps.push_back(stepOf(StepKind::end));
    return scenario;
}

// Plays drafts, tick by tick.
class Script {
public:
    // `everyStep`: choosing looks other than what is chosen from, as in the game.
    Script(Season& toWrite, bool everyStep)
        : season(toWrite)
        , showsChoosing(everyStep) {}

    void start() { next.emplace_back(StartGame()); }

    void happens(const Event& event) { next.push_back(event); }

    void begin(std::size_t step, QSize size, int ticks) {
        kind = season.drafts.back().scenario.steps[step].kind;
        const bool choosing = kind == StepKind::lookAtHero || kind == StepKind::chooseHero || kind == StepKind::choose;
        now = {season.drafts.size() - 1, choosing && !showsChoosing ? now.step : step, size};
        next.emplace_back(BeginStep{step, now});
        fresh = true;
        pass(ticks);
    }

    void resize(QSize size) {
        now.size = size;
        next.emplace_back(ResizeWindow{now});
        fresh = true;
    }

    void pass(int ticks) {
        const bool pick = kind == StepKind::heroPick || kind == StepKind::cardPick;
        for (int i = 0; i < ticks; ++i) {
            const Finds finds = !pick ? Finds::noPick : std::exchange(fresh, false) ? Finds::newPick : Finds::knownPick;
            season.ticks.push_back({std::exchange(next, {}), finds, std::nullopt});
        }
    }

    // The tick played last was the last of its pick.
    void endPick() { season.ticks.back().pick = now; }

    void leaveGame() { kind = StepKind::idle; }

private:
    Season& season;
    const bool showsChoosing;
    std::vector<Event> next;
    Scene now;
    StepKind kind = StepKind::idle;
    bool fresh = false;
};

// What else happens in a draft.
struct Course {
    Client client;
    Sync::Server atHeroes;
    AppLanguage language;
};

// How long drafts are, in ticks in all, of which the rest comes at the end.
struct Length {
    std::size_t picks;
    std::size_t ticks;
    bool everyStep; // see Script
};

void play(Season& season, const Course& course, const Length& length, std::mt19937& random) {
    const std::size_t picks = length.picks;
    const std::size_t end = season.ticks.size() + length.ticks;
    season.drafts.push_back({course.client, scenarioOf(course.client.production.language, picks, random)});
    Script script(season, length.everyStep);
    QSize size = course.client.before;
    script.start();
    script.pass(2); // no window is there yet
    script.begin(0, size, 3);
    script.happens(Sync{course.atHeroes});
    script.begin(1, size, 8);
    script.endPick();
    script.begin(2, size, 2);
    script.begin(3, size, 1);
    for (std::size_t pick = 0; pick < picks; ++pick) {
        const std::size_t step = 4 + 2 * pick;
        const bool restarts = pick == picks / 2;
        if (restarts) { // the game has crashed
            script.start();
            script.leaveGame();
            script.pass(3);
            size = course.client.after;
        }
        if (pick == picks - 2) {
            script.happens(Sync{Sync::Server::newData});
        } else if (pick == picks - 1) {
            script.happens(ChooseLanguage{course.language});
        }
        const int pickLength = pickTicks[pick % pickTicks.size()];
        if (pick == 0) { // hidden for a while, and the window is dragged larger and back
            script.happens(TogglePanel());
            script.begin(step, size, pickLength / 4);
            script.happens(TogglePanel());
            script.resize(course.client.after);
            script.pass(pickLength / 4);
            script.resize(size);
            script.pass(pickLength / 2);
        } else {
            script.begin(step, size, pickLength);
        }
        script.endPick();
        script.begin(step + 1, size, 2);
    }
    script.happens(ChangeLook());
    script.begin(season.drafts.back().scenario.steps.size() - 1, size, 2);
    Q_ASSERT(season.ticks.size() < end);
    script.begin(0, size, static_cast<int>(end - season.ticks.size()));
}

Client client(Language language, Look look, QSize before, QSize after,
              ChineseLettering lettering = ChineseLettering::printed, bool heroesByName = false) {
    return {{.language = language, .look = look, .seed = 3, .heroesByName = heroesByName}, lettering, before, after};
}

} // namespace

Season Season::whole() {
    constexpr Length length{.picks = 8, .ticks = 125, .everyStep = true};
    using enum Sync::Server;
    const Course courses[] = {
        {client(Language::english, Look::felt, {1920, 1080}, {1280, 720}), newData, AppLanguage::zh},
        {client(Language::chinese, Look::felt, {1280, 720}, {1512, 945}), asBefore, AppLanguage::en},
        {client(Language::english, Look::parchment, {1024, 768}, {1366, 768}), newData, AppLanguage::zh},
        {client(Language::chinese, Look::felt, {1600, 900}, {1280, 800}, ChineseLettering::clerical, true), gone,
         AppLanguage::system},
    };
    Season season;
    std::mt19937 random(7);
    for (const Course& course : courses) {
        play(season, course, length, random);
    }
    return season;
}

Season Season::brief() {
    constexpr Length length{.picks = 2, .ticks = 60, .everyStep = false};
    using enum Sync::Server;
    const QSize small(960, 720); // as low as Chinese names are surely read
    const QSize larger(1040, 720);
    const Course courses[] = {
        {client(Language::english, Look::felt, larger, small), newData, AppLanguage::zh},
        {client(Language::chinese, Look::felt, small, larger), newData, AppLanguage::system},
    };
    Season season;
    std::mt19937 random(7);
    for (const Course& course : courses) {
        play(season, course, length, random);
    }
    return season;
}

std::vector<Scene> Season::scenes() const {
    std::vector<Scene> all;
    const auto add = [&](const Scene& scene) {
        const StepKind kind = drafts[scene.draft].scenario.steps[scene.step].kind;
        // Outside of a draft nobody looks at the window.
        if (kind != StepKind::idle && kind != StepKind::end && std::ranges::find(all, scene) == all.end()) {
            all.push_back(scene);
        }
    };
    for (const Tick& tick : ticks) {
        for (const Event& event : tick.before) {
            if (const auto* begun = std::get_if<BeginStep>(&event)) {
                add(begun->scene);
            } else if (const auto* resized = std::get_if<ResizeWindow>(&event)) {
                add(resized->scene);
            }
        }
    }
    return all;
}

} // namespace pelloran::soak
