#pragma once

#include "localisation/AppLanguage.h"
#include "model/DraftModel.h"

#include <QByteArray>
#include <QRect>
#include <QString>

#include <array>
#include <expected>
#include <optional>
#include <vector>

// What stands on a picture, as its truth file says. docs/formats.md describes that file.
namespace pelloran::evaluation {

// What is really offered in one slot, as far as the truth file says.
struct Offer {
    QString id;   // a card's identifier or a class's key; "" where only the name is known
    QString name; // as printed, in the language of the picture; "" where only the identifier is known

    bool operator==(const Offer&) const = default;
};

// A text that stands on the picture, wherever and whatever it is.
struct BoxedText {
    QRect box; // in pixels
    QString text;
    QString ink; // "light", "dark" or "orange"; "" where the truth file does not say

    bool operator==(const BoxedText&) const = default;
};

struct Truth {
    DraftPhase phase = DraftPhase::idle;        // idle: the picture shows no pick at all
    AppLanguage language = AppLanguage::en;     // never `system`
    std::array<std::optional<Offer>, 3> offers; // by slot; absent: not legible, does not count
    std::optional<QString> file;                // name of the picture; absent: the truth file's own, but for the ending
    QString lettering{}; // in which the names are set, such as "printed"; "" where nothing is said
    std::vector<BoxedText> texts{};

    bool operator==(const Truth&) const = default;
};

// An error is a sentence on what is wrong with the file.
std::expected<Truth, QString> parseTruth(const QByteArray& json);

// The rules by which such a picture is looked at: without a pick on it those of either, since none may find anything.
std::vector<DraftPhase> rulesFor(const Truth& truth);

// As truth files and answers name it.
QString phaseName(DraftPhase phase);

} // namespace pelloran::evaluation
