#include "tests/names/ReadingDistanceReference.h"

#include <QStringList>

#include <algorithm>
#include <limits>
#include <vector>

namespace pelloran::reference {

namespace {

double substitution(QChar read, QChar meant) {
    static const auto costs = [] {
        const QString all =
            QStringLiteral("il tf tl it ec oc oe hb hn nu mn rt gq gy vy uv bd as ae kh kr k1 i1 l1 o0 s5 "
                           "b8 g9 z2 fr ij lj jt pf da oa pn sg es wv uo xz xk ce mw wm rf be eo");
        std::vector<std::vector<double>> table(128, std::vector<double>(128, 1));
        for (const QString& pair : all.split(QLatin1Char(' '))) {
            table[pair[0].unicode()][pair[1].unicode()] = 0.5;
            table[pair[1].unicode()][pair[0].unicode()] = 0.5;
        }
        return table;
    }();
    if (read == meant) {
        return 0;
    }
    return read.unicode() < 128 && meant.unicode() < 128 ? costs[read.unicode()][meant.unicode()] : 1;
}

bool twoForOne(QChar first, QChar second, QChar meant) {
    for (const char16_t* each : {u"rnm", u"iiu", u"cld", u"vvw", u"inm", u"nim", u"lih"}) {
        if (first == each[0] && second == each[1] && meant == each[2]) {
            return true;
        }
    }
    return false;
}

} // namespace

double readingDistance(const QString& reading, const QString& name) {
    const qsizetype rows = reading.size() + 1;
    const qsizetype columns = name.size() + 1;
    std::vector<double> table(static_cast<std::size_t>(rows * columns), std::numeric_limits<double>::infinity());
    const auto at = [&](qsizetype i, qsizetype j) -> double& {
        return table[static_cast<std::size_t>(i * columns + j)];
    };
    at(0, 0) = 0;
    for (qsizetype i = 0; i < rows; ++i) {
        for (qsizetype j = 0; j < columns; ++j) {
            const auto way = [&](double cost) { at(i, j) = std::min(at(i, j), cost); };
            if (i > 0) {
                way(at(i - 1, j) + (j == 0 || j == columns - 1 ? 0.5 : 1));
            }
            if (j > 0) {
                way(at(i, j - 1) + 1);
            }
            if (i > 0 && j > 0) {
                way(at(i - 1, j - 1) + substitution(reading[i - 1], name[j - 1]));
            }
            if (i > 1 && j > 0 && twoForOne(reading[i - 2], reading[i - 1], name[j - 1])) {
                way(at(i - 2, j - 1) + 0.5);
            }
        }
    }
    return at(rows - 1, columns - 1);
}

} // namespace pelloran::reference
