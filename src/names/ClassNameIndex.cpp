#include "names/ClassNameIndex.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pelloran {

using namespace NameMatching;

ClassNameIndex::ClassNameIndex(const std::vector<NamedClass>& classes) {
    for (const NamedClass& each : classes) {
        for (const QString& name : each.names) {
            add(name, each.key);
        }
    }
    for (const NamedClass& each : classes) {
        add(each.key, each.key);
    }
    for (const auto& [nickname, key] : {std::pair(u"萨满"_s, u"SHAMAN"_s), std::pair(u"死骑"_s, u"DEATHKNIGHT"_s),
                                        std::pair(u"瞎"_s, u"DEMONHUNTER"_s)}) {
        if (std::ranges::find(classes, key, &NamedClass::key) != classes.end()) {
            nicknames.emplace(nickname, key);
        }
    }
}

void ClassNameIndex::add(const QString& name, const QString& key) {
    const QString norm = normalize(name);
    candidates.push_back({name, norm, table.add(norm), key});
}

std::optional<ClassMatch> ClassNameIndex::bestMatch(const QStringList& lines, NameLengths lengths) const {
    std::optional<ClassMatch> best;
    for (const QString& line : lines) {
        const std::u32string query = table.find(normalize(line));
        const bool tooLong = query.size() >= classQueryLimit;
        if (query.empty() || (tooLong && lengths == NameLengths::limited)) {
            continue;
        }
        const auto exact = std::ranges::find(candidates, query, &Candidate::characters);
        if (exact != candidates.end()) {
            return ClassMatch{exact->key, 1.0, line};
        }
        if (tooLong) {
            continue;
        }
        for (const Candidate& candidate : candidates) {
            const std::u32string& name = candidate.characters;
            const bool related = contains(query, name) || (query.size() >= 2 && contains(name, query));
            if (name.size() < 2 || !related) {
                continue;
            }
            const double s = score(query, name);
            if (s >= classThreshold && (!best || s > best->score)) {
                best = ClassMatch{candidate.key, s, line};
            }
        }
    }
    for (const QString& line : lines) {
        const auto nickname = nicknames.find(normalize(line));
        if (nickname != nicknames.end() && (!best || best->score < aliasScore)) {
            best = ClassMatch{nickname->second, aliasScore, line};
        }
    }
    return best;
}

QStringList ClassNameIndex::texts() const {
    QStringList texts;
    for (const Candidate& candidate : candidates) {
        if (!candidate.characters.empty()) {
            texts += candidate.text;
        }
    }
    for (const auto& [nickname, key] : nicknames) {
        texts += nickname;
    }
    return texts;
}

} // namespace pelloran
