#pragma once

#include "names/Lexicon.h"

#include <QString>

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

} // namespace pelloran::reference
