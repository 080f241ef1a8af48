#include "tools/stage/ScreenSeries.h"

#include "tools/stage/painting/Materials.h"
#include "tools/stage/painting/ScenePainter.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QPainter>
#include <QSet>

#include <algorithm>
#include <array>
#include <utility>

namespace pelloran::stage {

namespace {

enum class Subject {
    cardPick,
    heroPick,
    burning,
    arriving,
    heroZoomed,
    faceDown,
    finished,
    menu,
    collection,
    decks,
    mainMenu,
};

// Half of the screens are card picks; a third of them offers nothing.
constexpr std::array<Subject, 24> programme{
    Subject::cardPick,   Subject::heroPick, Subject::burning,  Subject::cardPick,   Subject::cardPick,
    Subject::arriving,   Subject::cardPick, Subject::heroPick, Subject::heroZoomed, Subject::cardPick,
    Subject::collection, Subject::cardPick, Subject::cardPick, Subject::heroPick,   Subject::finished,
    Subject::cardPick,   Subject::cardPick, Subject::menu,     Subject::faceDown,   Subject::heroPick,
    Subject::cardPick,   Subject::decks,    Subject::cardPick, Subject::mainMenu,
};

QString subjectName(Subject subject) {
    switch (subject) {
    case Subject::cardPick:
        return QStringLiteral("cards");
    case Subject::heroPick:
        return QStringLiteral("heroes");
    case Subject::burning:
        return QStringLiteral("burning");
    case Subject::arriving:
        return QStringLiteral("arriving");
    case Subject::heroZoomed:
        return QStringLiteral("zoomed");
    case Subject::faceDown:
        return QStringLiteral("facedown");
    case Subject::finished:
        return QStringLiteral("finished");
    case Subject::menu:
        return QStringLiteral("menu");
    case Subject::collection:
        return QStringLiteral("collection");
    case Subject::decks:
        return QStringLiteral("decks");
    case Subject::mainMenu:
        return QStringLiteral("mainmenu");
    }
    return {};
}

std::size_t below(Random& random, std::size_t limit) {
    return random() % limit;
}

bool chance(Random& random, double share) {
    return between(random, 0, 1) < share;
}

// Minions are the rule, weapons and heroes the exception.
QString anyType(Random& random) {
    const double dice = between(random, 0, 1);
    return dice < 0.55   ? QStringLiteral("MINION")
           : dice < 0.85 ? QStringLiteral("SPELL")
           : dice < 0.94 ? QStringLiteral("WEAPON")
                         : QStringLiteral("HERO");
}

// A file of names knows neither rules nor strengths: they are lent by cards of the sample data.
void furnish(Card& card, Random& random) {
    if (!card.rules.isEmpty() || card.attack != 0 || card.health != 0) {
        return;
    }
    const std::vector<Card>& sample = Catalogue::sample().cards();
    card.rules = sample[below(random, sample.size())].rules;
    if (card.rules.isEmpty() && card.type != u"MINION") {
        card.rules = {QStringLiteral("damage:3"), QStringLiteral("draw:1")};
    }
    card.attack = static_cast<int>(below(random, 9));
    card.health = 1 + static_cast<int>(below(random, 8));
}

QString languageName(Language language) {
    return language == Language::english ? QStringLiteral("en") : QStringLiteral("zh");
}

} // namespace

struct ScreenSeries::Plot {
    Subject subject;
    Production production;
    ChineseLettering lettering;
    Screen screen;
};

std::expected<ScreenSeries, QString> ScreenSeries::create(const SeriesWishes& wishes, std::vector<Card> allCards) {
    ScreenSeries series(wishes);
    for (const Language language : {Language::english, Language::chinese}) {
        QSet<QString> names;
        for (const Card& card : allCards) {
            names.insert(card.name.in(language));
        }
        names.remove(QString());
        if (wishes.language.value_or(language) == language && names.size() < 3) {
            return std::unexpected(QStringLiteral("the cards have fewer than three different names in the language"));
        }
    }
    Random random(wishes.seed);
    for (Card& card : allCards) {
        furnish(card, random);
    }
    series.cards = std::move(allCards);
    std::ranges::stable_sort(series.cards, {}, &Card::type);
    for (const ChineseLettering style : {ChineseLettering::printed, ChineseLettering::clerical}) {
        for (const Language language : {Language::english, Language::chinese}) {
            std::expected<Lettering, QString> lettering = Lettering::create(language, style);
            if (!lettering) {
                return std::unexpected(lettering.error());
            }
            series.letterings.push_back(*std::move(lettering));
        }
    }
    return series;
}

const Card& ScreenSeries::anyCard(Random& random, Language language, const QString& type) const {
    const auto ofType = std::ranges::equal_range(cards, type, {}, &Card::type);
    for (int attempt = 0; attempt < 100; ++attempt) {
        const Card& card = ofType.empty() ? cards[below(random, cards.size())]
                                          : ofType[static_cast<std::ptrdiff_t>(below(random, ofType.size()))];
        if (!card.name.in(language).isEmpty()) {
            return card;
        }
    }
    return *std::ranges::find_if(cards, [&](const Card& card) { return !card.name.in(language).isEmpty(); });
}

std::vector<Card> ScreenSeries::deck(Random& random, Language language, std::size_t size) const {
    std::vector<Card> picked;
    for (std::size_t i = 0; i < size; ++i) {
        picked.push_back(anyCard(random, language, anyType(random)));
        picked.back().golden = chance(random, 0.1);
    }
    return picked;
}

// Three of different names.
std::vector<Card> ScreenSeries::offers(Random& random, Language language) const {
    std::vector<Card> offered;
    while (offered.size() < 3) {
        Card card = anyCard(random, language, anyType(random));
        card.golden = chance(random, 0.15);
        const bool again = std::ranges::any_of(
            offered, [&](const Card& other) { return other.name.in(language) == card.name.in(language); });
        if (!again) {
            offered.push_back(std::move(card));
        }
    }
    return offered;
}

ScreenSeries::Plot ScreenSeries::plotOf(int number) const {
    Random random(wishes.seed * 2654435761U + static_cast<quint32>(number) * 40503U + 17);
    Plot plot{};
    plot.subject = programme[static_cast<std::size_t>(number) % programme.size()];
    const bool oldByChance = chance(random, 0.5);
    const bool chineseByChance = chance(random, 0.5);
    const bool clericalByChance = chance(random, 0.5);
    plot.production.look = wishes.look.value_or(oldByChance ? Look::parchment : Look::felt);
    plot.production.language = wishes.language.value_or(chineseByChance ? Language::chinese : Language::english);
    plot.lettering =
        wishes.lettering.value_or(clericalByChance ? ChineseLettering::clerical : ChineseLettering::printed);
    plot.production.heroesByName = wishes.heroesByName;
    plot.production.seed = static_cast<quint32>(random());
    const Language language = plot.production.language;

    Situation& situation = plot.screen.situation;
    std::vector<HeroClass> heroes = Catalogue::sample().heroClasses();
    for (std::size_t i = heroes.size() - 1; i > 0; --i) {
        std::swap(heroes[i], heroes[below(random, i + 1)]);
    }
    heroes.resize(3);
    situation.hero = heroes.front();
    situation.deck = deck(random, language, below(random, deckSize));
    Step& step = situation.step;
    step.kind = StepKind::cardPick;
    step.cards = offers(random, language);
    if (chance(random, 0.6)) {
        plot.screen.hovered = static_cast<int>(below(random, 3));
        plot.screen.glow = std::array{Glow::white, Glow::white, Glow::yellow, Glow::green}[below(random, 4)];
        plot.screen.tooltip = chance(random, 0.5);
    }

    const auto pickHero = [&](StepKind kind) {
        step = {.kind = kind, .heroes = heroes, .cards = {}, .chosen = {}};
        situation.hero.reset();
        situation.deck.clear();
    };
    switch (plot.subject) {
    case Subject::cardPick:
        break;
    case Subject::heroPick:
        pickHero(StepKind::heroPick);
        break;
    case Subject::heroZoomed:
        pickHero(StepKind::lookAtHero);
        step.chosen = static_cast<int>(below(random, 3));
        break;
    case Subject::burning:
        plot.screen.moment = Moment::burning;
        plot.screen.progress = between(random, 0.4, 0.9); // earlier, the names can still be read
        step.chosen = static_cast<int>(below(random, 3));
        break;
    case Subject::arriving:
        plot.screen.moment = Moment::arriving;
        plot.screen.progress = between(random, 0.1, 0.7); // later, they have come
        break;
    case Subject::faceDown:
        step.kind = chance(random, 0.5) ? StepKind::skipAhead : StepKind::redraft;
        break;
    case Subject::finished:
        step.kind = StepKind::end;
        situation.deck = deck(random, language, deckSize);
        situation.deckComplete = true;
        break;
    case Subject::menu:
        plot.screen.moment = Moment::menu;
        break;
    case Subject::collection:
        plot.screen.moment = Moment::collection;
        situation.deck = deck(random, language, 8);
        break;
    case Subject::decks:
        plot.screen.moment = Moment::decks;
        break;
    case Subject::mainMenu:
        step.kind = StepKind::idle;
        break;
    }
    return plot;
}

ScreenSeries::Picture ScreenSeries::picture(int number) const {
    const Plot plot = plotOf(number);
    const bool chinese = plot.production.language == Language::chinese;
    const bool clerical = plot.lettering == ChineseLettering::clerical;
    ScenePainter painter(wishes.size, plot.production, letterings[(clerical ? 2U : 0U) + (chinese ? 1U : 0U)]);
    painter.show(plot.screen);
    Picture made{.name = QStringLiteral("%1-%2-%3")
                             .arg(number, 4, 10, QLatin1Char('0'))
                             .arg(subjectName(plot.subject), languageName(plot.production.language)),
                 .image = QImage(wishes.size, QImage::Format_RGB32),
                 .truth = {}};
    QPainter canvas(&made.image);
    painter.paint(canvas, number);
    canvas.end();

    const bool heroPick = plot.subject == Subject::heroPick;
    const bool cardPick = plot.subject == Subject::cardPick;
    QJsonArray names;
    QJsonArray boxes;
    QJsonArray kinds;
    QJsonArray golden;
    if (heroPick || cardPick) {
        for (const PrintedName& name : painter.names()) {
            names.append(name.text);
            const QRect box = name.box.toAlignedRect();
            boxes.append(QJsonArray{box.left(), box.top(), box.right() + 1, box.bottom() + 1});
        }
    }
    if (cardPick) {
        for (const Card& card : plot.screen.situation.step.cards) {
            kinds.append(card.type.toLower());
            golden.append(card.golden);
        }
    }
    QJsonObject& truth = made.truth;
    truth[QStringLiteral("phase")] = heroPick   ? QStringLiteral("heroPick")
                                     : cardPick ? QStringLiteral("cardPick")
                                                : QStringLiteral("none");
    truth[QStringLiteral("language")] = languageName(plot.production.language);
    truth[QStringLiteral("names")] = names;
    truth[QStringLiteral("nameBoxes")] = boxes;
    truth[QStringLiteral("kinds")] = kinds;
    truth[QStringLiteral("golden")] = golden;
    truth[QStringLiteral("era")] =
        plot.production.look == Look::parchment ? QStringLiteral("old") : QStringLiteral("new");
    truth[QStringLiteral("width")] = wishes.size.width();
    truth[QStringLiteral("height")] = wishes.size.height();
    truth[QStringLiteral("shows")] = subjectName(plot.subject);
    if (chinese) {
        truth[QStringLiteral("lettering")] = clerical ? QStringLiteral("clerical") : QStringLiteral("printed");
    }
    if (cardPick && plot.screen.hovered) {
        truth[QStringLiteral("hovered")] = *plot.screen.hovered;
    }
    return made;
}

std::optional<QString> ScreenSeries::write(const QString& folder, int count) const {
    if (!QDir().mkpath(folder)) {
        return QStringLiteral("cannot make the folder %1").arg(folder);
    }
    for (int number = 0; number < count; ++number) {
        const Picture made = picture(number);
        const QString path = folder + u'/' + made.name;
        QFile truth(path + QStringLiteral(".json"));
        const QByteArray text = QJsonDocument(made.truth).toJson();
        // Fast rather than small: the time to press a large picture is longer than that to paint it.
        if (!made.image.save(path + QStringLiteral(".png"), "PNG", 80) || !truth.open(QIODevice::WriteOnly) ||
            truth.write(text) != text.size()) {
            return QStringLiteral("cannot write %1").arg(path);
        }
    }
    return std::nullopt;
}

} // namespace pelloran::stage
