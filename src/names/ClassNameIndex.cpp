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
    for (const NamedClass& each : classes) {
        for (const QString& name : each.heroNames) {
            if (const QString norm = normalize(name); !norm.isEmpty()) {
                const auto [hero, isNew] = heroes.try_emplace(norm, Hero{name, each.key});
                if (!isNew && hero->second.key != each.key) {
                    hero->second.key.clear();
                }
            }
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

std::optional<ClassMatch> ClassNameIndex::heroNamed(const QString& line, NameLengths lengths) const {
    const QString norm = normalize(line);
    const auto hero = heroes.find(norm);
    const bool tooLong = lengths == NameLengths::limited && characterCount(norm) >= classQueryLimit;
    if (hero == heroes.end() || hero->second.key.isEmpty() || tooLong) {
        return std::nullopt;
    }
    return ClassMatch{hero->second.key, 1.0, line};
}

QStringList ClassNameIndex::heroTexts() const {
    QStringList texts;
    for (const auto& [norm, hero] : heroes) {
        if (!hero.key.isEmpty()) {
            texts += hero.text;
        }
    }
    return texts;
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
