#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>
#include <vector>

namespace pelloran {

// What one check came to, for people. Sentences of English, like all that is not the panel's.
struct Finding {
    enum class State {
        ok,
        note,    // worth knowing; Pelloran works
        problem, // something does not work until it is mended
    };

    QString check; // what was looked at, in a word or two
    State state = State::ok;
    QString what;    // what was found
    QString meaning; // what follows from it; empty where that is plain
    QString advice;  // what to do; empty where there is nothing to do

    bool operator==(const Finding&) const = default;
};

QString stateName(Finding::State state);

// With its line end.
QByteArray lineFor(const Finding& finding);

// The same for eyes on a terminal of so many columns: what was found, what it means and what to do each begin a line,
// and what does not fit goes on below, beside the state.
QByteArray linesFor(const Finding& finding, int columns);

QJsonObject toJson(const Finding& finding);

// The other way; absent for anything that toJson() does not make.
std::optional<Finding> findingFromJson(const QJsonObject& object);

// That of the program: 1 where there is a problem.
int exitCodeFor(const std::vector<Finding>& findings);

} // namespace pelloran
