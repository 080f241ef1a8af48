#pragma once

#include "names/CardNameIndex.h"
#include "names/ClassNameIndex.h"

#include <QString>
#include <QStringList>

#include <map>
#include <optional>
#include <vector>

// The matching of names written down as plainly as it can be said: what the fast one has to agree with, bit by bit, and
// what its speed is measured against. Shares no code with it.
namespace pelloran::reference {

QString normalize(const QString& text);
bool isPlausibleName(const QString& text);
std::size_t lcsLength(const QString& a, const QString& b);
double scoreName(const QString& query, const QString& targetNorm);

// Normalises and takes apart each line and each name again for every pair.
std::optional<CardNameIndex::Hit> matchName(const std::vector<QString>& normalizedNames, const QStringList& lines,
                                            NameLengths lengths = NameLengths::limited);

std::optional<ClassMatch> matchClass(const std::vector<NamedClass>& classes, const QStringList& lines,
                                     NameLengths lengths = NameLengths::limited);

// matchName with every name and line normalised and taken apart once, and characters numbered: scores every pair all
// the same, but in time for tests of many lines.
class PreparedNames {
public:
    explicit PreparedNames(const std::vector<QString>& normalizedNames);

    std::optional<CardNameIndex::Hit> matchName(const QStringList& lines, NameLengths lengths = NameLengths::limited);

private:
    std::vector<int> numbered(const QString& text);

    std::map<QString, int> numbers;
    std::vector<std::vector<int>> split;
};

} // namespace pelloran::reference
