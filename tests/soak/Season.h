#pragma once

#include "localisation/AppLanguage.h"
#include "tools/stage/painting/Lettering.h"
#include "tools/stage/painting/ScenePainter.h"
#include "tools/stage/Scenario.h"

#include <QSize>

#include <optional>
#include <tuple>
#include <variant>
#include <vector>

// What is played while the program follows: drafts with different clients, and between and within them all that
// happens in an evening. A season takes the same ticks every time and leaves everything as it was at its beginning, so
// seasons can be compared.
namespace pelloran::soak {

// How the game looks in a draft, and the screens of its window before and after it is started again.
struct Client {
    stage::Production production;
    stage::ChineseLettering lettering = stage::ChineseLettering::printed;
    QSize before;
    QSize after;
};

struct Draft {
    Client client;
    stage::Scenario scenario;
};

// A step of a draft, in a window of this size.
struct Scene {
    std::size_t draft = 0;
    std::size_t step = 0;
    QSize size;

    auto key() const { return std::tuple(draft, step, size.width(), size.height()); }

    bool operator==(const Scene& other) const { return key() == other.key(); }
};

// What happens before a tick.

// The game is started: another session of the logs, and another window once the next step begins.
struct StartGame {};

// The game goes on to this step of the draft, and its logs with it.
struct BeginStep {
    std::size_t step;
    Scene scene; // what is seen of it
};

// The window takes another size within a step.
struct ResizeWindow {
    Scene scene;
};

// The player looks for new data, while the server has other data, the same, or none.
struct Sync {
    enum class Server { newData, asBefore, gone };
    Server server;
};

struct ChooseLanguage {
    AppLanguage language;
};

struct TogglePanel {};

// The desktop turns light or dark.
struct ChangeLook {};

using Event = std::variant<StartGame, BeginStep, ResizeWindow, Sync, ChooseLanguage, TogglePanel, ChangeLook>;

// What a tick finds.
enum class Finds { noPick, knownPick, newPick };

struct Tick {
    std::vector<Event> before;
    Finds finds = Finds::noPick;
    // The last of a pick: what is shown has to be right, and the same in every season.
    std::optional<Scene> pick;
};

struct Season {
    std::vector<Draft> drafts;
    std::vector<Tick> ticks;

    // Four drafts of eight picks, 500 ticks: the usual one.
    static Season whole();

    // Two drafts of two picks in small windows, 120 ticks: for a test.
    static Season brief();

    // Every scene that a window shows, once.
    std::vector<Scene> scenes() const;
};

} // namespace pelloran::soak
