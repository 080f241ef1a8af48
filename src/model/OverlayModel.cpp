#include "model/OverlayModel.h"

#include "localisation/L10n.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace pelloran {

namespace {

// printf's "%.<decimals>f" in the POSIX locale. Qt's number functions round exact ties such as 55.25 up, and snprintf
// follows the process's locale.
QString fixed(double number, int decimals) {
    char digits[400]; // the longest double has 309 digits before the point
    const auto end =
        std::to_chars(std::begin(digits), std::end(digits), number, std::chars_format::fixed, decimals).ptr;
    return QString::fromLatin1(digits, end - digits);
}

} // namespace

std::optional<MetricKind> MetricKind::fromRawValue(QStringView text) {
    for (const MetricKind kind : allCases()) {
        if (text == kind.rawValue()) {
            return kind;
        }
    }
    return std::nullopt;
}

QString MetricKind::rawValue() const {
    switch (value) {
    case deckWinRate:
        return QStringLiteral("deckWinRate");
    case drawnWinRate:
        return QStringLiteral("drawnWinRate");
    case playedWinRate:
        return QStringLiteral("playedWinRate");
    case popularity:
        return QStringLiteral("popularity");
    case avgCopies:
        return QStringLiteral("avgCopies");
    case classWinRate:
        return QStringLiteral("classWinRate");
    case pickRate:
        return QStringLiteral("pickRate");
    case pct7Plus:
        return QStringLiteral("pct7Plus");
    case classRank:
        return QStringLiteral("classRank");
    }
    Q_UNREACHABLE();
}

QString MetricKind::label() const {
    return L10n::tr(QStringLiteral("metric.") + rawValue());
}

bool MetricKind::isPercent() const {
    switch (value) {
    case deckWinRate:
    case drawnWinRate:
    case playedWinRate:
    case classWinRate:
    case pickRate:
    case pct7Plus:
        return true;
    case popularity:
    case avgCopies:
    case classRank:
        return false;
    }
    Q_UNREACHABLE();
}

bool MetricKind::higherIsBetter() const {
    return value != classRank;
}

QString MetricValue::formatted() const {
    if (!value) {
        return QStringLiteral("—");
    }
    if (kind == MetricKind::classRank) {
        return u'#' + fixed(*value, 0);
    }
    if (kind.isPercent()) {
        return fixed(*value, 1) + u'%';
    }
    return fixed(*value, kind == MetricKind::avgCopies ? 2 : 1);
}

OverlaySnapshot OverlaySnapshot::idle(const QString& message) {
    return status(message, false);
}

OverlaySnapshot OverlaySnapshot::status(const QString& message, bool inDraft) {
    return {L10n::tr(u"overlay.arena"), message, {}, inDraft, DraftPhase::idle};
}

void MetricHighlighter::applyHighlights(std::vector<OverlayCardViewModel>& tiles) {
    for (const MetricKind kind : MetricKind::allCases()) {
        std::vector<MetricValue*> known;
        for (OverlayCardViewModel& tile : tiles) {
            const auto metric = std::ranges::find(tile.metrics, kind, &MetricValue::kind);
            if (metric != tile.metrics.end() && metric->value) {
                known.push_back(&*metric);
            }
        }
        if (known.size() < 2) {
            continue;
        }
        double best = *known.front()->value;
        double worst = best;
        for (const MetricValue* metric : known) {
            best = *metric->value > best ? *metric->value : best;
            worst = *metric->value < worst ? *metric->value : worst;
        }
        if (!(worst < best)) {
            continue;
        }
        if (!kind.higherIsBetter()) {
            std::swap(best, worst);
        }
        for (MetricValue* metric : known) {
            metric->highlight = *metric->value == best    ? MetricHighlight::high
                                : *metric->value == worst ? MetricHighlight::low
                                                          : MetricHighlight::normal;
        }
    }
}

} // namespace pelloran
