#pragma once

#include "app/evaluation/Tally.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <map>
#include <tuple>
#include <utility>

// How all pictures were recognised. docs/formats.md describes what is printed.
namespace pelloran::evaluation {

// Of all pictures, and by language, lettering and phase; boxed texts by themselves, and by language and ink.
class Totals {
public:
    void add(const Picture& picture);

    // Lines of a table in columns of equal width, and of a second one where boxed texts were read. The first has a
    // column for the lettering where any is known.
    QStringList table() const;

    QJsonObject toJson() const;

private:
    Tally all;
    TextTally allTexts;
    std::map<std::tuple<QString, QString, QString>, Tally> groups; // by language, lettering and name of the phase
    std::map<std::pair<QString, QString>, TextTally> textGroups;   // by language and ink
};

} // namespace pelloran::evaluation
