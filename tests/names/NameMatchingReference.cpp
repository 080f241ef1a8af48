#include "tests/names/NameMatchingReference.h"

#include <QRegularExpression>
#include <QTextBoundaryFinder>

#include <algorithm>

namespace pelloran::reference {

namespace {

// User-perceived characters, each in composed form.
std::vector<QString> characters(const QString& text) {
    std::vector<QString> result;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype start = 0;
    while (finder.toNextBoundary() != -1) {
        result.push_back(text.mid(start, finder.position() - start).normalized(QString::NormalizationForm_C));
        start = finder.position();
    }
    return result;
}

template <typename Characters>
bool contains(const Characters& text, const Characters& part) {
    return std::search(text.begin(), text.end(), part.begin(), part.end()) != text.end();
}

template <typename Characters>
std::size_t lcsOf(const Characters& a, const Characters& b) {
    if (a.empty() || b.empty()) {
        return 0;
    }
    std::vector<std::size_t> row(b.size() + 1, 0);
    for (const auto& character : a) {
        std::size_t diagonal = 0;
        for (std::size_t i = 0; i < b.size(); ++i) {
            const std::size_t old = row[i + 1];
            row[i + 1] = character == b[i] ? diagonal + 1 : std::max(row[i], old);
            diagonal = old;
        }
    }
    return row[b.size()];
}

template <typename Characters>
double scoreOf(const Characters& q, const Characters& t) {
    if (q.empty() || t.empty()) {
        return 0;
    }
    if (q == t) {
        return 1.0;
    }
    const auto qLength = static_cast<double>(q.size());
    const auto tLength = static_cast<double>(t.size());
    if (contains(t, q) || contains(q, t)) {
        return 0.95 * std::min(qLength, tLength) / std::max(qLength, tLength);
    }
    const std::size_t common = lcsOf(q, t);
    const double ratio = static_cast<double>(common) / std::max(tLength, 1.0);
    if (ratio >= 0.75 && common >= 2) {
        return 0.8 + 0.15 * ratio;
    }
    Characters distinct = t;
    std::sort(distinct.begin(), distinct.end());
    distinct.erase(std::unique(distinct.begin(), distinct.end()), distinct.end());
    const auto shared = std::count_if(distinct.begin(), distinct.end(), [&q](const auto& character) {
        return std::find(q.begin(), q.end(), character) != q.end();
    });
    return 0.65 * static_cast<double>(shared) / std::max(static_cast<double>(distinct.size()), 1.0);
}

} // namespace

QString normalize(const QString& text) {
    static const QRegularExpression ignored(QStringLiteral(R"([\s·・'"“”‘’!?？，。、：:（）()\[\]{}！．.0-9④])"),
                                            QRegularExpression::UseUnicodePropertiesOption);
    return text.normalized(QString::NormalizationForm_C).toLower().remove(ignored);
}

bool isPlausibleName(const QString& text) {
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty()) {
        return false;
    }
    // ^[\d\W]+$ with the word characters of ICU, which include every alphabetic one.
    static const QRegularExpression noWord(
        QStringLiteral(R"(^[^\p{L}\p{M}\p{Nl}\p{Pc}\x{200C}\x{200D}\x{24B6}-\x{24E9}\x{1F130}-\x{1F149})"
                       R"(\x{1F150}-\x{1F169}\x{1F170}-\x{1F189}]+$)"),
        QRegularExpression::UseUnicodePropertiesOption);
    if (noWord.match(trimmed).hasMatch()) {
        return false;
    }
    const QList<uint> scalars = normalize(trimmed).toUcs4();
    if (std::any_of(scalars.begin(), scalars.end(), [](uint scalar) { return scalar >= 0x4E00 && scalar <= 0x9FFF; })) {
        return true;
    }
    return std::count_if(scalars.begin(), scalars.end(),
                         [](uint scalar) { return QChar::category(scalar) == QChar::Letter_Lowercase; }) > 2;
}

std::size_t lcsLength(const QString& a, const QString& b) {
    return lcsOf(characters(a), characters(b));
}

double scoreName(const QString& query, const QString& targetNorm) {
    return scoreOf(characters(normalize(query)), characters(targetNorm));
}

std::optional<CardNameIndex::Hit> matchName(const std::vector<QString>& normalizedNames, const QStringList& lines,
                                            NameLengths lengths) {
    std::optional<CardNameIndex::Hit> best;
    for (qsizetype line = 0; line < lines.size(); ++line) {
        const bool tooLong = characters(normalize(lines[line])).size() >= 17;
        if (!isPlausibleName(lines[line]) || (tooLong && lengths == NameLengths::limited)) {
            continue;
        }
        for (std::size_t i = 0; i < normalizedNames.size(); ++i) {
            const double score = scoreName(lines[line], normalizedNames[i]);
            if (score >= (tooLong ? 1 : 0.78) && (!best || score > best->score)) {
                best = CardNameIndex::Hit{i, score, line};
            }
        }
    }
    return best;
}

std::optional<ClassMatch> matchClass(const std::vector<NamedClass>& classes, const QStringList& lines,
                                     NameLengths lengths) {
    struct Candidate {
        QString norm;
        QString key;
    };

    std::vector<Candidate> candidates;
    for (const auto& [key, names, heroNames] : classes) {
        for (const QString& name : names) {
            candidates.push_back({normalize(name), key});
        }
    }
    for (const auto& [key, names, heroNames] : classes) {
        candidates.push_back({normalize(key), key});
    }

    std::optional<ClassMatch> best;
    for (const QString& line : lines) {
        const auto n = characters(normalize(line));
        if (n.empty() || (n.size() >= 11 && lengths == NameLengths::limited)) {
            continue;
        }
        for (const Candidate& candidate : candidates) {
            if (characters(candidate.norm) == n) {
                return ClassMatch{candidate.key, 1.0, line};
            }
        }
        for (const Candidate& candidate : candidates) {
            const auto norm = characters(candidate.norm);
            if (n.size() >= 11 || norm.size() < 2 || !(contains(n, norm) || (contains(norm, n) && n.size() >= 2))) {
                continue;
            }
            const double score = scoreName(line, candidate.norm);
            if (score >= 0.88 && (!best || score > best->score)) {
                best = ClassMatch{candidate.key, score, line};
            }
        }
    }
    const std::map<QString, QString> aliases{{QStringLiteral("萨满"), QStringLiteral("SHAMAN")},
                                             {QStringLiteral("死骑"), QStringLiteral("DEATHKNIGHT")},
                                             {QStringLiteral("瞎"), QStringLiteral("DEMONHUNTER")}};
    for (const QString& line : lines) {
        const auto alias = aliases.find(normalize(line));
        if (alias == aliases.end()) {
            continue;
        }
        const bool there = std::any_of(classes.begin(), classes.end(),
                                       [&](const NamedClass& each) { return each.key == alias->second; });
        if (there && (!best || best->score < 0.95)) {
            best = ClassMatch{alias->second, 0.95, line};
        }
    }
    return best;
}

PreparedNames::PreparedNames(const std::vector<QString>& normalizedNames) {
    for (const QString& name : normalizedNames) {
        split.push_back(numbered(name));
    }
}

std::vector<int> PreparedNames::numbered(const QString& text) {
    std::vector<int> result;
    for (const QString& character : characters(text)) {
        result.push_back(numbers.try_emplace(character, static_cast<int>(numbers.size())).first->second);
    }
    return result;
}

std::optional<CardNameIndex::Hit> PreparedNames::matchName(const QStringList& lines, NameLengths lengths) {
    std::optional<CardNameIndex::Hit> best;
    for (qsizetype line = 0; line < lines.size(); ++line) {
        const std::vector<int> query = numbered(normalize(lines[line]));
        const bool tooLong = query.size() >= 17;
        if (!isPlausibleName(lines[line]) || (tooLong && lengths == NameLengths::limited)) {
            continue;
        }
        for (std::size_t i = 0; i < split.size(); ++i) {
            const double score = scoreOf(query, split[i]);
            if (score >= (tooLong ? 1 : 0.78) && (!best || score > best->score)) {
                best = CardNameIndex::Hit{i, score, line};
            }
        }
    }
    return best;
}

} // namespace pelloran::reference
