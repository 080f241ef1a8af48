#pragma once

#include "names/Lexicon.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace pelloran::reference {

// What settling comes to when every name is looked at.
class PlainLexicon {
public:
    PlainLexicon(const std::vector<KnownName>& names, const Lexicon::Tolerance& nearEnough);

    std::optional<Lexicon::Settled> settle(const QString& line, NameKinds fitting = {}) const;

private:
    struct Candidate {
        QString text;
        QString normalized;
        QString folded;
        NameKinds kinds;
        bool anyKind;
        bool isStrict;
    };

    Lexicon::Tolerance tolerance;
    std::vector<Candidate> candidates;
};

// To the nearest of the names: twice the longest common subsequence as a share of both lengths, by the usual table.
double resemblance(const QString& line, const QStringList& names);

} // namespace pelloran::reference
