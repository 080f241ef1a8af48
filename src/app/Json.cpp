#include "app/Json.h"

#include "base/OneLine.h"

#include <QJsonDocument>

#include <algorithm>

namespace pelloran::json {

namespace {

QString highlightName(MetricHighlight highlight) {
    switch (highlight) {
    case MetricHighlight::high:
        return QStringLiteral("high");
    case MetricHighlight::low:
        return QStringLiteral("low");
    case MetricHighlight::normal:
        return QStringLiteral("normal");
    }
    Q_UNREACHABLE();
}

QJsonObject toJson(const MetricValue& metric) {
    return {
        {QStringLiteral("kind"), metric.kind.rawValue()},
        {QStringLiteral("value"), optional(metric.value)},
        {QStringLiteral("formatted"), metric.formatted()},
        {QStringLiteral("highlight"), highlightName(metric.highlight)},
    };
}

QJsonObject toJson(const OverlayCardViewModel& tile) {
    QJsonArray metrics;
    for (const MetricValue& metric : tile.metrics) {
        metrics.append(toJson(metric));
    }
    return {
        {QStringLiteral("slotLabel"), tile.slotLabel},         {QStringLiteral("name"), tile.name},
        {QStringLiteral("subtitle"), optional(tile.subtitle)}, {QStringLiteral("metrics"), metrics},
        {QStringLiteral("recognized"), tile.recognized},
    };
}

} // namespace

QString phaseName(DraftPhase phase) {
    switch (phase) {
    case DraftPhase::idle:
        return QStringLiteral("idle");
    case DraftPhase::heroPick:
        return QStringLiteral("heroPick");
    case DraftPhase::cardPick:
        return QStringLiteral("cardPick");
    }
    Q_UNREACHABLE();
}

QJsonObject toJson(const DraftState& state) {
    return {
        {QStringLiteral("inDraft"), state.inDraft},
        {QStringLiteral("draftMode"), state.draftMode},
        {QStringLiteral("scene"), state.scene},
        {QStringLiteral("deckId"), optional(state.deckId)},
        {QStringLiteral("hero"), optional(state.hero)},
        {QStringLiteral("hasHero"), state.hasHero},
        {QStringLiteral("deckCardIds"), QJsonArray::fromStringList(state.deckCardIds)},
        {QStringLiteral("lastChoiceName"), optional(state.lastChoiceName)},
        {QStringLiteral("lastChoiceId"), optional(state.lastChoiceId)},
        {QStringLiteral("sessionDir"), optional(state.sessionDir)},
        {QStringLiteral("phase"), phaseName(state.phase)},
    };
}

QJsonObject toJson(const SlotMatch& match) {
    return {
        {QStringLiteral("slot"), match.slot.rawValue()},  {QStringLiteral("cardId"), optional(match.cardId)},
        {QStringLiteral("confidence"), match.confidence}, {QStringLiteral("method"), match.method},
        {QStringLiteral("ocrText"), match.ocrText},
    };
}

QJsonObject toJson(const OCRToken& token) {
    return {
        {QStringLiteral("text"), token.text},   {QStringLiteral("confidence"), static_cast<double>(token.confidence)},
        {QStringLiteral("midX"), token.midX},   {QStringLiteral("midY"), token.midY},
        {QStringLiteral("width"), token.width}, {QStringLiteral("height"), token.height},
    };
}

QJsonObject toJson(const OverlaySnapshot& snapshot) {
    QJsonArray cards;
    for (const OverlayCardViewModel& tile : snapshot.cards) {
        cards.append(toJson(tile));
    }
    return {
        {QStringLiteral("title"), snapshot.title},
        {QStringLiteral("message"), optional(snapshot.message)},
        {QStringLiteral("cards"), cards},
        {QStringLiteral("inDraft"), snapshot.inDraft},
        {QStringLiteral("phase"), phaseName(snapshot.phase)},
    };
}

QByteArray line(const QJsonObject& object) {
    QByteArray json = QJsonDocument(object).toJson(QJsonDocument::Compact);
    // Qt escapes only what it must. Texts come from outside, and the line may go to a terminal.
    if (const QString text = QString::fromUtf8(json); std::ranges::any_of(text, isObeyedByTerminals)) {
        QString escaped;
        for (const QChar character : text) {
            escaped += isObeyedByTerminals(character)
                           ? QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QChar(u'0'))
                           : QString(character);
        }
        json = escaped.toUtf8();
    }
    return json + '\n';
}

} // namespace pelloran::json
