#include "app/Json.h"

#include "tests/support/Printing.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

namespace pelloran {
namespace {

// Keys are compared without regard to their order, as JSON has it.
QJsonObject object(const char* text) {
    QJsonParseError error{};
    const QJsonObject parsed = QJsonDocument::fromJson(text, &error).object();
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    return parsed;
}

TEST(Json, WritesADraftStateWithAbsentValuesAsNull) {
    EXPECT_EQ(json::toJson(DraftState()), object(R"({"inDraft": false, "draftMode": "UNKNOWN", "scene": "UNKNOWN",
        "deckId": null, "hero": null, "hasHero": false, "deckCardIds": [], "lastChoiceName": null, "lastChoiceId": null,
        "sessionDir": null, "phase": "idle"})"));
    DraftState state;
    state.inDraft = state.hasHero = true;
    state.deckId = QStringLiteral("12");
    state.deckCardIds = {QStringLiteral("A"), QStringLiteral("A")};
    state.lastChoiceName = QStringLiteral("火球术");
    state.phase = DraftPhase::cardPick;
    EXPECT_EQ(json::toJson(state), object(R"({"inDraft": true, "draftMode": "UNKNOWN", "scene": "UNKNOWN",
        "deckId": "12", "hero": null, "hasHero": true, "deckCardIds": ["A", "A"], "lastChoiceName": "火球术",
        "lastChoiceId": null, "sessionDir": null, "phase": "cardPick"})"));
}

TEST(Json, WritesASlotMatchAndAToken) {
    EXPECT_EQ(
        json::toJson(
            SlotMatch{DraftSlot::right, QStringLiteral("X"), 0.95, QStringLiteral("card-layout"), QStringLiteral("x")}),
        object(R"({"slot": "right", "cardId": "X", "confidence": 0.95, "method": "card-layout", "ocrText": "x"})"));
    EXPECT_EQ(json::toJson(OCRToken{QStringLiteral("x"), 0.5F, 0.1, 0.2, 0.3, 0.4}),
              object(R"({"text": "x", "confidence": 0.5, "midX": 0.1, "midY": 0.2, "width": 0.3, "height": 0.4})"));
}

TEST(Json, WritesASnapshotOnOneLine) {
    const OverlaySnapshot snapshot{
        .title = QStringLiteral("Pelloran"),
        .message = std::nullopt,
        .cards = {{QStringLiteral("L"),
                   QStringLiteral("Line\nbreak"),
                   QStringLiteral("MAGE"),
                   {{MetricKind::classRank, 3, MetricHighlight::high}, {MetricKind::pickRate, std::nullopt}},
                   true}},
        .inDraft = true,
        .phase = DraftPhase::heroPick,
    };
    const QByteArray line = json::line(json::toJson(snapshot));
    EXPECT_EQ(line.count('\n'), 1);
    EXPECT_TRUE(line.endsWith('\n'));
    EXPECT_EQ(object(line.constData()),
              object(R"({"title": "Pelloran", "message": null, "inDraft": true, "phase": "heroPick",
        "cards": [{"slotLabel": "L", "name": "Line\nbreak", "subtitle": "MAGE", "recognized": true, "metrics": [
            {"kind": "classRank", "value": 3, "formatted": "#3", "highlight": "high"},
            {"kind": "pickRate", "value": null, "formatted": "—", "highlight": "normal"}]}]})"));
}

TEST(Json, CommandsNoTerminal) {
    struct Case {
        const char* why;
        QString text;
        QByteArray line;
    };

    const Case cases[] = {
        {"what is shown stays as it is", QStringLiteral("炉石 \\ \"é\""), "{\"a\":\"炉石 \\\\ \\\"é\\\"\"}\n"},
        {"an escape sequence", QStringLiteral("\x1b[2J"), "{\"a\":\"\\u001b[2J\"}\n"},
        {"one in a single character", QStringLiteral("\u009b2J"), "{\"a\":\"\\u009b2J\"}\n"},
        {"what rubs out", QStringLiteral("\x7f"), "{\"a\":\"\\u007f\"}\n"},
        {"what turns the line round", QStringLiteral("\u202Ea\u2028"), "{\"a\":\"\\u202ea\\u2028\"}\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const QByteArray line = json::line({{QStringLiteral("a"), c.text}});
        EXPECT_EQ(line, c.line);
        EXPECT_EQ(object(line.constData()).value(QStringLiteral("a")).toString(), c.text) << "and means the same";
    }
}

} // namespace
} // namespace pelloran
