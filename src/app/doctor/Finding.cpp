#include "app/doctor/Finding.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

constexpr std::array states{Finding::State::ok, Finding::State::note, Finding::State::problem};

constexpr qsizetype stateWidth = 7; // of "problem"

} // namespace

QString stateName(Finding::State state) {
    switch (state) {
    case Finding::State::ok:
        return u"ok"_s;
    case Finding::State::note:
        return u"note"_s;
    case Finding::State::problem:
        return u"problem"_s;
    }
    Q_UNREACHABLE();
}

QByteArray lineFor(const Finding& finding) {
    QString line = stateName(finding.state).leftJustified(stateWidth) + u"  "_s + finding.check + u':';
    for (const QString& sentence : {finding.what, finding.meaning, finding.advice}) {
        if (!sentence.isEmpty()) {
            line += u' ' + sentence;
        }
    }
    // Paths and servers' answers come from outside: one line, and nothing that a terminal would obey.
    std::ranges::replace_if(line, [](QChar character) { return character.category() == QChar::Other_Control; }, u' ');
    return line.toUtf8() + '\n';
}

QJsonObject toJson(const Finding& finding) {
    return {{u"check"_s, finding.check},
            {u"state"_s, stateName(finding.state)},
            {u"what"_s, finding.what},
            {u"meaning"_s, finding.meaning},
            {u"advice"_s, finding.advice}};
}

std::optional<Finding> findingFromJson(const QJsonObject& object) {
    const auto state = std::ranges::find(states, object[u"state"_s].toString(), stateName);
    const QString check = object[u"check"_s].toString();
    const QString what = object[u"what"_s].toString();
    if (state == states.end() || check.isEmpty() || what.isEmpty()) {
        return std::nullopt;
    }
    return Finding{check, *state, what, object[u"meaning"_s].toString(), object[u"advice"_s].toString()};
}

int exitCodeFor(const std::vector<Finding>& findings) {
    const bool hasProblem = std::ranges::find(findings, Finding::State::problem, &Finding::state) != findings.end();
    return hasProblem ? EXIT_FAILURE : EXIT_SUCCESS;
}

} // namespace pelloran
