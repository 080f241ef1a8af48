#include "tests/names/LexiconReference.h"

#include "names/NameMatching.h"
#include "names/ReadingDistance.h"
#include "tests/names/ReadingDistanceReference.h"

#include <algorithm>
#include <map>
#include <utility>

namespace pelloran::reference {

namespace {

bool hasIdeograph(const QString& text) {
    return std::ranges::any_of(text, [](QChar each) { return each >= QChar(0x4E00) && each <= QChar(0x9FFF); });
}

} // namespace

PlainLexicon::PlainLexicon(const std::vector<KnownName>& names, const Lexicon::Tolerance& nearEnough)
    : tolerance(nearEnough) {
    std::map<QString, std::size_t> places;
    for (const KnownName& name : names) {
        const QString normalized = NameMatching::normalize(name.text);
        if (const auto same = places.find(normalized); same != places.end()) {
            Candidate& candidate = candidates[same->second];
            candidate.kinds |= name.kinds;
            candidate.anyKind |= !name.kinds;
            candidate.isStrict &= name.isStrict;
        } else if (!normalized.isEmpty()) {
            places.emplace(normalized, candidates.size());
            candidates.push_back(
                {name.text, normalized, ReadingDistance::folded(name.text), name.kinds, !name.kinds, name.isStrict});
        }
    }
}

std::optional<Lexicon::Settled> PlainLexicon::settle(const QString& line, NameKinds fitting) const {
    const QString normalized = NameMatching::normalize(line);
    const QString folded = ReadingDistance::folded(line);
    if (normalized.isEmpty()) {
        return std::nullopt;
    }
    if (const auto exact = std::ranges::find(candidates, normalized, &Candidate::normalized);
        exact != candidates.end()) {
        return Lexicon::Settled{exact->text, 0};
    }
    if (folded.isEmpty()) {
        return std::nullopt;
    }
    const auto spelled = [this](const QString& text) {
        std::vector<const Candidate*> found;
        for (const Candidate& candidate : candidates) {
            if (candidate.folded == text) {
                found.push_back(&candidate);
            }
        }
        return found;
    };
    if (const auto alike = spelled(folded); !alike.empty()) {
        return alike.size() > 1 ? std::nullopt : std::optional(Lexicon::Settled{alike.front()->text, 0});
    }
    const bool chinese = hasIdeograph(folded);
    if (!chinese) {
        // Marks within the line may be the letter l.
        const auto alike = spelled(ReadingDistance::folded(ReadingDistance::withLettersForMarks(line)));
        if (alike.size() == 1) {
            return Lexicon::Settled{alike.front()->text, 0.5};
        }
    }
    std::vector<std::pair<double, const Candidate*>> distances;
    for (const Candidate& candidate : candidates) {
        if (candidate.folded.isEmpty() || hasIdeograph(candidate.folded) != chinese) {
            continue;
        }
        const bool misfit = fitting && !candidate.anyKind && !(candidate.kinds & fitting);
        distances.emplace_back(readingDistance(folded, candidate.folded) + (misfit ? 1 : 0), &candidate);
    }
    std::ranges::sort(distances);
    if (distances.empty()) {
        return std::nullopt;
    }
    const auto& [distance, nearest] = distances.front();
    const auto length = static_cast<double>(nearest->folded.size());
    double perCharacter = chinese ? std::max(tolerance.perCharacter, 0.34) : tolerance.perCharacter;
    if (nearest->isStrict) {
        perCharacter = std::min(perCharacter, chinese ? 0.34 : Lexicon::forCards.perCharacter);
    }
    const bool near = distance <= 4 && distance <= perCharacter * length;
    const bool alone = distances.size() == 1 || distances[1].first - distance >= tolerance.margin;
    const bool cutFromAnother =
        !nearest->folded.startsWith(folded) &&
        std::ranges::any_of(distances, [&](const auto& other) { return other.second->folded.startsWith(folded); });
    return near && alone && !cutFromAnother ? std::optional(Lexicon::Settled{nearest->text, distance}) : std::nullopt;
}

double resemblance(const QString& line, const QStringList& names) {
    const QString a = NameMatching::normalize(line);
    double best = 0;
    for (const QString& name : names) {
        const QString b = NameMatching::normalize(name);
        std::vector<std::vector<int>> table(static_cast<std::size_t>(a.size()) + 1,
                                            std::vector<int>(static_cast<std::size_t>(b.size()) + 1, 0));
        for (std::size_t i = 1; i < table.size(); ++i) {
            for (std::size_t j = 1; j < table[i].size(); ++j) {
                table[i][j] = a[static_cast<qsizetype>(i - 1)] == b[static_cast<qsizetype>(j - 1)]
                                  ? table[i - 1][j - 1] + 1
                                  : std::max(table[i - 1][j], table[i][j - 1]);
            }
        }
        if (!a.isEmpty() && !b.isEmpty()) {
            best = std::max(best, 2.0 * table.back().back() / static_cast<double>(a.size() + b.size()));
        }
    }
    return best;
}

} // namespace pelloran::reference
