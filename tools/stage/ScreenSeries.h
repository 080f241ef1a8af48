#pragma once

#include "tools/stage/Catalogue.h"
#include "tools/stage/Look.h"
#include "tools/stage/painting/Lettering.h"
#include "tools/stage/painting/Screen.h"

#include <QImage>
#include <QJsonObject>
#include <QSize>
#include <QString>

#include <expected>
#include <optional>
#include <random>
#include <vector>

namespace pelloran::stage {

// What all screens of a series have in common. What is absent changes from screen to screen.
struct SeriesWishes {
    quint32 seed = 1;
    QSize size{1920, 1080};
    std::optional<Language> language = std::nullopt;
    std::optional<Look> look = std::nullopt;
    std::optional<ChineseLettering> lettering = std::nullopt;
    bool heroesByName = false; // see Production
};

// Screens as they occur during drafts, in turn: card picks, hero picks, and what comes between and around them. Each
// comes with the truth about it, so that what reads screens can be tried on any number of them. A screen depends on the
// wishes, the cards and its number only, not on how many there are.
class ScreenSeries {
public:
    // `allCards` serve as offers and decks. Fails when they or the installed fonts are not enough for the wishes.
    static std::expected<ScreenSeries, QString> create(const SeriesWishes& wishes, std::vector<Card> allCards);

    struct Picture {
        QString name; // of its files, without an ending
        QImage image;
        QJsonObject truth;
    };

    Picture picture(int number) const;

    // Writes the first `count` pictures and their truths into `folder`, which is made where it is missing.
    std::optional<QString> write(const QString& folder, int count) const;

private:
    // What is on screen at a number.
    struct Plot;

    explicit ScreenSeries(SeriesWishes seriesWishes)
        : wishes(seriesWishes) {}

    Plot plotOf(int number) const;
    std::vector<Card> offers(std::mt19937& random, Language language) const;
    std::vector<Card> deck(std::mt19937& random, Language language, std::size_t size) const;
    const Card& anyCard(std::mt19937& random, Language language, const QString& type) const;

    SeriesWishes wishes;
    std::vector<Card> cards; // with rules and strengths, sorted by type
    std::vector<Lettering> letterings;
};

} // namespace pelloran::stage
