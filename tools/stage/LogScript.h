#pragma once

#include "tools/stage/Scenario.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace pelloran::stage {

enum class LogFile { arena, loadingScreen };

struct LogLine {
    LogFile file;
    QString text; // without the time that the game puts before it

    bool operator==(const LogLine&) const = default;
};

// Knows what the game writes to its logs, step by step. Remembers the scene and the draft under way, as the game does.
class LogScript {
public:
    // `firstDeckId` numbers the first draft; later ones count up from it.
    LogScript(Language language, qint64 firstDeckId);

    // From the start of the program to the main menu.
    std::vector<LogLine> start();

    // Steps come in the order of a scenario; after the last one the first may come again.
    std::vector<LogLine> begin(const Step& step);

private:
    void changeScene(const QString& next);
    void enterDraft();
    void beginDraft();
    void writeDeck();
    void setMode(const QString& next);
    void choose(const QString& displayName, const QString& id);
    void arena(const QString& text);
    void loadingScreen(const QString& text);

    Language language;
    qint64 deckId;
    QString scene = QStringLiteral("STARTUP");
    QString mode = QStringLiteral("NO_ACTIVE_DRAFT");
    QString hero; // "" before one is confirmed
    QStringList deck;
    std::vector<LogLine> lines; // of the step under way
};

} // namespace pelloran::stage
