#include "app/doctor/Finding.h"

#include "base/OneLine.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

constexpr std::array states{Finding::State::ok, Finding::State::note, Finding::State::problem};

constexpr qsizetype stateWidth = 7; // of "problem"
constexpr qsizetype gap = 2;        // behind it

QString headOf(const Finding& finding) {
    return stateName(finding.state).leftJustified(stateWidth + gap) + finding.check + u':';
}

// Chinese characters take two.
qsizetype columnsOf(const QString& text) {
    return text.size() +
           std::ranges::count_if(text, [](QChar character) { return character.script() == QChar::Script_Han; });
}

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
    QString line = headOf(finding);
    for (const QString& sentence : {finding.what, finding.meaning, finding.advice}) {
        if (!sentence.isEmpty()) {
            line += u' ' + sentence;
        }
    }
    return inOneLine(line).toUtf8() + '\n'; // paths and servers' answers come from outside
}

QByteArray linesFor(const Finding& finding, int columns) {
    const QString indent(stateWidth + gap, u' ');
    QString lines;
    QString line = headOf(finding);
    bool isEmpty = false; // but for the indent
    const auto finish = [&] {
        lines += line + u'\n';
        line = indent;
        isEmpty = true;
    };
    for (const QString& sentences : {finding.what, finding.meaning, finding.advice}) {
        for (const QString& word : inOneLine(sentences).split(u' ', Qt::SkipEmptyParts)) {
            if (!isEmpty && columnsOf(line) + 1 + columnsOf(word) > columns) {
                finish();
            }
            line += isEmpty ? word : u' ' + word;
            isEmpty = false;
        }
        if (!isEmpty) {
            finish();
        }
    }
    return lines.toUtf8();
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
