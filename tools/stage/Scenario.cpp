#include "tools/stage/Scenario.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <utility>

namespace pelloran::stage {

namespace {

constexpr std::array<std::pair<StepKind, QStringView>, 9> kindNames{{
    {StepKind::idle, u"idle"},
    {StepKind::heroPick, u"heroPick"},
    {StepKind::lookAtHero, u"lookAtHero"},
    {StepKind::chooseHero, u"chooseHero"},
    {StepKind::cardPick, u"cardPick"},
    {StepKind::choose, u"choose"},
    {StepKind::skipAhead, u"skipAhead"},
    {StepKind::redraft, u"redraft"},
    {StepKind::end, u"end"},
}};

const QString scenarioFolder = QStringLiteral(":/stage/stage/scenarios");

using Problem = std::optional<QString>;

// Reads one scenario. Every function returns what is wrong, or nothing.
class Reader {
public:
    std::expected<Scenario, QString> read(const QByteArray& json) {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(json, &error);
        if (error.error != QJsonParseError::NoError) {
            return std::unexpected(
                QStringLiteral("not JSON: %1 at byte %2").arg(error.errorString()).arg(error.offset));
        }
        if (!document.isObject()) {
            return std::unexpected(QStringLiteral("a scenario is a JSON object"));
        }
        if (const Problem problem = readHead(document.object())) {
            return std::unexpected(*problem);
        }
        const QJsonArray steps = document[u"steps"].toArray();
        if (steps.isEmpty()) {
            return std::unexpected(QStringLiteral("\"steps\" must be an array with at least one step"));
        }
        for (qsizetype i = 0; i < steps.size(); ++i) {
            if (const Problem problem = readStep(steps[i])) {
                return std::unexpected(QStringLiteral("step %1: %2").arg(i).arg(*problem));
            }
        }
        return std::move(scenario);
    }

private:
    static Problem unknownKey(const QJsonObject& object, const QStringList& known) {
        for (const QString& key : object.keys()) {
            if (!known.contains(key)) {
                return QStringLiteral("\"%1\" has no meaning here").arg(key);
            }
        }
        return std::nullopt;
    }

    Problem readHead(const QJsonObject& head) {
        scenario.name = head[u"name"].toString();
        scenario.about = head[u"about"].toString();
        const QString language = head[u"language"].toString(QStringLiteral("en"));
        if (language != u"en" && language != u"zh") {
            return QStringLiteral("\"language\" must be \"en\" or \"zh\"");
        }
        scenario.language = language == u"zh" ? Language::chinese : Language::english;
        const QString look = head.contains(u"look") ? head[u"look"].toString() : QStringLiteral("new");
        if (look != u"old" && look != u"new") {
            return QStringLiteral("\"look\" must be \"old\" or \"new\"");
        }
        scenario.look = look == u"old" ? Look::parchment : Look::felt;
        return unknownKey(head, {QStringLiteral("name"), QStringLiteral("about"), QStringLiteral("language"),
                                 QStringLiteral("look"), QStringLiteral("steps")});
    }

    Problem readStep(const QJsonValue& value) {
        if (!value.isObject()) {
            return QStringLiteral("must be an object");
        }
        const QJsonObject object = value.toObject();
        if (const Problem problem =
                unknownKey(object, {QStringLiteral("kind"), QStringLiteral("seconds"), QStringLiteral("offers"),
                                    QStringLiteral("choice"), QStringLiteral("picks")})) {
            return problem;
        }
        const auto kind = std::ranges::find_if(
            kindNames, [name = object[u"kind"].toString()](const auto& entry) { return name == entry.second; });
        if (kind == kindNames.end()) {
            return QStringLiteral("\"%1\" is no kind of step").arg(object[u"kind"].toString());
        }
        Step step;
        step.kind = kind->first;
        if (object.contains(u"seconds")) {
            const double seconds = object[u"seconds"].toDouble();
            if (!(seconds > 0 && seconds <= 3600)) {
                return QStringLiteral("\"seconds\" must be a number above 0 and up to 3600");
            }
            step.duration = std::chrono::milliseconds(static_cast<int>(seconds * 1000));
        }
        if (const Problem problem = fill(step, object)) {
            return problem;
        }
        scenario.steps.push_back(std::move(step));
        return std::nullopt;
    }

    Problem fill(Step& step, const QJsonObject& object) {
        const StepKind before = scenario.steps.empty() ? StepKind::idle : scenario.steps.back().kind;
        switch (step.kind) {
        case StepKind::idle:
            return std::nullopt;
        case StepKind::heroPick:
            if (heroChosen && !deckComplete) {
                return QStringLiteral("a draft is under way already");
            }
            heroChosen = deckComplete = false;
            return readHeroes(object[u"offers"], step);
        case StepKind::lookAtHero:
        case StepKind::chooseHero:
            if (before != StepKind::heroPick && before != StepKind::lookAtHero) {
                return QStringLiteral("a hero can only be chosen right after heroPick or lookAtHero");
            }
            step.heroes = scenario.steps.back().heroes;
            heroChosen = step.kind == StepKind::chooseHero;
            return readChoice(object[u"choice"], step, step.heroes, &HeroClass::key);
        case StepKind::cardPick:
            if (!heroChosen || deckComplete) {
                return QStringLiteral("cards are only offered after chooseHero or redraft and before end");
            }
            return readCards(object[u"offers"], QStringLiteral("offers"), 3, 3, step);
        case StepKind::choose:
            if (before != StepKind::cardPick) {
                return QStringLiteral("a card can only be chosen right after cardPick");
            }
            step.cards = scenario.steps.back().cards;
            return readChoice(object[u"choice"], step, step.cards, &Card::id);
        case StepKind::skipAhead:
            if (!heroChosen || deckComplete) {
                return QStringLiteral("picks are only made after chooseHero or redraft and before end");
            }
            return readCards(object[u"picks"], QStringLiteral("picks"), 1, 60, step);
        case StepKind::redraft:
            if (!deckComplete) {
                return QStringLiteral("only a complete deck (end) can be redrafted");
            }
            deckComplete = false;
            return std::nullopt;
        case StepKind::end:
            if (!heroChosen) {
                return QStringLiteral("a deck without a hero cannot be complete");
            }
            deckComplete = true;
            return std::nullopt;
        }
        std::unreachable();
    }

    template <typename Offer>
    static Problem readChoice(const QJsonValue& value, Step& step, const std::vector<Offer>& offers,
                              QString Offer::* id) {
        const auto chosen = std::ranges::find(offers, value.toString(), id);
        if (chosen == offers.end()) {
            return QStringLiteral("\"choice\" must be the identifier of one of the three offers");
        }
        step.chosen = static_cast<int>(chosen - offers.begin());
        return std::nullopt;
    }

    static Problem readHeroes(const QJsonValue& value, Step& step) {
        for (const auto& entry : value.toArray()) {
            const HeroClass* hero = Catalogue::sample().heroClass(entry.toString());
            if (!hero) {
                return QStringLiteral("there is no class \"%1\"").arg(entry.toString());
            }
            if (std::ranges::find(step.heroes, hero->key, &HeroClass::key) != step.heroes.end()) {
                return QStringLiteral("\"%1\" is offered twice").arg(hero->key);
            }
            step.heroes.push_back(*hero);
        }
        if (step.heroes.size() != 3) {
            return QStringLiteral("\"offers\" must hold three classes");
        }
        return std::nullopt;
    }

    static Problem readCards(const QJsonValue& value, const QString& key, std::size_t fewest, std::size_t most,
                             Step& step) {
        for (const auto& entry : value.toArray()) {
            const std::expected<Card, QString> card = readCard(entry);
            if (!card) {
                return card.error();
            }
            step.cards.push_back(*card);
        }
        if (step.cards.size() < fewest || step.cards.size() > most) {
            return fewest == most ? QStringLiteral("\"%1\" must hold three cards").arg(key)
                                  : QStringLiteral("\"%1\" must hold %2 to %3 cards").arg(key).arg(fewest).arg(most);
        }
        return std::nullopt;
    }

    // An identifier of the sample data, or an object that brings a card of its own.
    static std::expected<Card, QString> readCard(const QJsonValue& value) {
        if (value.isString()) {
            const Card* card = Catalogue::sample().card(value.toString());
            if (!card) {
                return std::unexpected(
                    QStringLiteral("there is no card \"%1\" in the sample data").arg(value.toString()));
            }
            return *card;
        }
        const QJsonObject object = value.toObject();
        Card card{
            .id = object[u"card_id"].toString(),
            .name = {object[u"name_en"].toString(object[u"name_zh"].toString()),
                     object[u"name_zh"].toString(object[u"name_en"].toString())},
            .cost = object[u"cost"].toInt(),
            .rarity = object[u"rarity"].toString(QStringLiteral("COMMON")),
            .type = object[u"type"].toString(QStringLiteral("SPELL")),
            .cardClass = object[u"card_class"].toString(QStringLiteral("NEUTRAL")),
            .attack = object[u"attack"].toInt(),
            .health = object[u"health"].toInt(1),
            .rules = object[u"rules"].toString().split(u' ', Qt::SkipEmptyParts),
            .golden = object[u"golden"].toBool(),
        };
        if (card.id.isEmpty() || card.name.english.isEmpty()) {
            return std::unexpected(QStringLiteral(
                "a card is an identifier, or an object with \"card_id\" and \"name_en\" or \"name_zh\""));
        }
        return card;
    }

    Scenario scenario;
    bool heroChosen = false;
    bool deckComplete = false;
};

} // namespace

QString kindName(StepKind kind) {
    return std::ranges::find(kindNames, kind, &decltype(kindNames)::value_type::first)->second.toString();
}

std::expected<Scenario, QString> Scenario::parse(const QByteArray& json) {
    return Reader().read(json);
}

std::expected<Scenario, QString> Scenario::load(const QString& nameOrPath) {
    const QString path =
        shippedNames().contains(nameOrPath) ? scenarioFolder + u'/' + nameOrPath + QStringLiteral(".json") : nameOrPath;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::unexpected(QStringLiteral("%1: %2 (scenarios that ship: %3)")
                                   .arg(nameOrPath, file.errorString(), shippedNames().join(QStringLiteral(", "))));
    }
    std::expected<Scenario, QString> scenario = parse(file.readAll());
    if (!scenario) {
        return std::unexpected(nameOrPath + QStringLiteral(": ") + scenario.error());
    }
    if (scenario->name.isEmpty()) {
        scenario->name = QFileInfo(path).completeBaseName();
    }
    return scenario;
}

QStringList Scenario::shippedNames() {
    QStringList names;
    for (const QString& file : QDir(scenarioFolder).entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name)) {
        names.append(QFileInfo(file).completeBaseName());
    }
    return names;
}

Situation situationAt(const Scenario& scenario, std::size_t step) {
    Situation situation;
    for (std::size_t i = 0; i <= step && i < scenario.steps.size(); ++i) {
        const Step& now = scenario.steps[i];
        situation.step = now;
        switch (now.kind) {
        case StepKind::heroPick:
            situation = Situation();
            situation.step = now;
            break;
        case StepKind::chooseHero:
            situation.hero = now.heroes[static_cast<std::size_t>(*now.chosen)];
            break;
        case StepKind::choose:
            situation.deck.push_back(now.cards[static_cast<std::size_t>(*now.chosen)]);
            break;
        case StepKind::skipAhead:
            situation.deck.insert(situation.deck.end(), now.cards.begin(), now.cards.end());
            break;
        case StepKind::redraft:
            situation.redrafting = true;
            situation.deckComplete = false;
            break;
        case StepKind::end:
            situation.deckComplete = true;
            if (situation.deck.size() > deckSize) {
                situation.deck.erase(situation.deck.begin(), situation.deck.end() - deckSize);
            }
            break;
        case StepKind::idle:
        case StepKind::lookAtHero:
        case StepKind::cardPick:
            break;
        }
    }
    return situation;
}

} // namespace pelloran::stage
