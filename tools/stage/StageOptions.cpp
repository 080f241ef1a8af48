#include "tools/stage/StageOptions.h"

#include <QRegularExpression>

#include <cmath>
#include <functional>
#include <map>
#include <utility>
#include <variant>

namespace pelloran::stage {

namespace {

// What is wrong with the value, or nothing.
using Problem = std::optional<QString>;
using Flag = std::function<void(StageOptions&)>;
using Setting = std::function<Problem(StageOptions&, const QString& value)>;

Problem readSize(StageOptions& options, const QString& value) {
    static const QRegularExpression pattern(QStringLiteral("^(\\d{1,5})x(\\d{1,5})$"));
    const QRegularExpressionMatch match = pattern.match(value);
    const QSize size(match.captured(1).toInt(), match.captured(2).toInt());
    if (!match.hasMatch() || size.width() < 400 || size.height() < 300 || size.width() > 7680 || size.height() > 4320) {
        return QStringLiteral("must be WIDTHxHEIGHT, from 400x300 to 7680x4320");
    }
    options.size = size;
    return std::nullopt;
}

Problem readLanguage(StageOptions& options, const QString& value) {
    if (value != u"en" && value != u"zh") {
        return QStringLiteral("must be en or zh");
    }
    options.language = value == u"zh" ? Language::chinese : Language::english;
    return std::nullopt;
}

Problem readLook(StageOptions& options, const QString& value) {
    if (value != u"old" && value != u"new") {
        return QStringLiteral("must be old or new");
    }
    options.look = value == u"old" ? Look::parchment : Look::felt;
    return std::nullopt;
}

Problem readLettering(StageOptions& options, const QString& value) {
    if (value != u"printed" && value != u"clerical") {
        return QStringLiteral("must be printed or clerical");
    }
    options.lettering = value == u"clerical" ? ChineseLettering::clerical : ChineseLettering::printed;
    return std::nullopt;
}

Problem readCount(StageOptions& options, const QString& value) {
    bool isNumber = false;
    options.count = value.toInt(&isNumber);
    return isNumber && options.count >= 1 && options.count <= 100000
               ? Problem()
               : QStringLiteral("must be a whole number from 1 to 100000");
}

Problem readSpeed(StageOptions& options, const QString& value) {
    bool isNumber = false;
    options.speed = value.toDouble(&isNumber);
    if (!isNumber || !(options.speed >= 0.01 && options.speed <= 1000)) {
        return QStringLiteral("must be a number from 0.01 to 1000");
    }
    return std::nullopt;
}

Problem readSeed(StageOptions& options, const QString& value) {
    bool isNumber = false;
    options.seed = value.toUInt(&isNumber);
    return isNumber ? Problem() : QStringLiteral("must be a whole number from 0 to 4294967295");
}

Problem readStep(StageOptions& options, const QString& value) {
    bool isNumber = false;
    options.step = value.toInt(&isNumber);
    return isNumber && options.step >= 0 ? Problem() : QStringLiteral("must be a whole number from 0");
}

Setting text(QString StageOptions::* field) {
    return [field](StageOptions& options, const QString& value) -> Problem {
        options.*field = value;
        return value.isEmpty() ? QStringLiteral("must not be empty") : Problem();
    };
}

Flag flag(bool StageOptions::* field) {
    return [field](StageOptions& options) { options.*field = true; };
}

const std::map<QString, std::variant<Flag, Setting>>& knownOptions() {
    static const std::map<QString, std::variant<Flag, Setting>> known{
        {QStringLiteral("--help"), flag(&StageOptions::help)},
        {QStringLiteral("--list-scenarios"), flag(&StageOptions::listScenarios)},
        {QStringLiteral("--loop"), flag(&StageOptions::loop)},
        {QStringLiteral("--full-screen"), flag(&StageOptions::fullScreen)},
        {QStringLiteral("--heroes-by-name"), flag(&StageOptions::heroesByName)},
        {QStringLiteral("--steps-on-stdin"), flag(&StageOptions::stepsOnStdin)},
        {QStringLiteral("--exit-at-end"), flag(&StageOptions::exitAtEnd)},
        {QStringLiteral("--scenario"), text(&StageOptions::scenario)},
        {QStringLiteral("--logs-dir"), text(&StageOptions::logsDir)},
        {QStringLiteral("--picture"), text(&StageOptions::picture)},
        {QStringLiteral("--paint-screens"), text(&StageOptions::paintScreens)},
        {QStringLiteral("--cards"), text(&StageOptions::cards)},
        {QStringLiteral("--count"), readCount},
        {QStringLiteral("--look"), readLook},
        {QStringLiteral("--lettering"), readLettering},
        {QStringLiteral("--size"), readSize},
        {QStringLiteral("--language"), readLanguage},
        {QStringLiteral("--speed"), readSpeed},
        {QStringLiteral("--seed"), readSeed},
        {QStringLiteral("--step"), readStep},
    };
    return known;
}

} // namespace

std::expected<StageOptions, QString> StageOptions::parse(const QStringList& arguments) {
    StageOptions options;
    QStringList given;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString name = arguments[i].section(u'=', 0, 0);
        const bool hasOwnValue = arguments[i].contains(u'=');
        const auto known = knownOptions().find(name);
        if (known == knownOptions().end()) {
            return std::unexpected(QStringLiteral("unknown argument %1").arg(arguments[i]));
        }
        given.append(name);
        if (const Flag* set = std::get_if<Flag>(&known->second)) {
            if (hasOwnValue) {
                return std::unexpected(QStringLiteral("%1 takes no value").arg(name));
            }
            (*set)(options);
            continue;
        }
        if (!hasOwnValue && i + 1 == arguments.size()) {
            return std::unexpected(QStringLiteral("%1 needs a value").arg(name));
        }
        const QString value = hasOwnValue ? arguments[i].section(u'=', 1) : arguments[++i];
        if (const Problem problem = std::get<Setting>(known->second)(options, value)) {
            return std::unexpected(QStringLiteral("%1 %2").arg(name, *problem));
        }
    }
    if (given.contains(QStringLiteral("--step")) && options.picture.isEmpty()) {
        return std::unexpected(QStringLiteral("--step goes with --picture"));
    }
    for (const QString& name : {QStringLiteral("--count"), QStringLiteral("--cards")}) {
        if (given.contains(name) && options.paintScreens.isEmpty()) {
            return std::unexpected(QStringLiteral("%1 goes with --paint-screens").arg(name));
        }
    }
    if (!options.paintScreens.isEmpty() && !options.picture.isEmpty()) {
        return std::unexpected(QStringLiteral("--picture paints one step, --paint-screens a series: not both"));
    }
    if (options.loop && options.exitAtEnd) {
        return std::unexpected(QStringLiteral("--loop has no end to exit at"));
    }
    return options;
}

QString StageOptions::usage() {
    return QStringLiteral(R"(Usage: pelloran-stage [OPTIONS]

Plays the Arena draft of a card game for Pelloran to watch: a window owned by and titled "Hearthstone", and log files
written as the game writes them. Prints one JSON line for every step begun.

  --scenario NAME|FILE  the draft to play (default: demo)
  --list-scenarios      say which ones ship
  --logs-dir DIR        log folder in which to make a session; without it no logs are written
  --size WxH            of the window (default: 1920x1080)
  --full-screen         fill the screen instead
  --language en|zh      of the texts (default: the scenario's own)
  --look old|new        how the game looked until 2024 or has since (default: the scenario's own, else new)
  --heroes-by-name      no line tells the class of a hero on the new look
  --lettering printed|clerical  of Chinese: as in a book (default), or wide, flat and thin as on old inscriptions
  --speed FACTOR        2 is twice as fast
  --loop                begin again after the last step
  --exit-at-end         leave after the last step instead of staying on it
  --seed N              of the pictures on the cards and of the number of the deck
  --steps-on-stdin      each step waits for a line "next" on standard input, in place of its time; "quit" or the end of
                        the input leaves
  --picture FILE        paint one step to a PNG file, without a display, and leave
  --step N              which step that is, counted from 0
  --paint-screens DIR   paint a series of screens of an Arena draft into a folder, each a PNG file and a JSON file that
                        says what is on it, without a display, and leave
  --count N             how many (default: 24)
  --cards FILE          with the cards of that JSON file instead of the sample data
  --help                say this

A line on standard output is written once the step's log lines are in the files and its picture is in the window:
  {"step":1,"kind":"heroPick","language":"en","offers":[{"id":"MAGE","name":"Mage"},…],"chosen":null,
   "hero":null,"deck":[],"sessionDir":"…"}
)");
}

} // namespace pelloran::stage
