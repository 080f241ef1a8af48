#include "draft/logs/ArenaLog.h"

#include "draft/logs/TextPatterns.h"

#include <QRegularExpression>

#include <algorithm>
#include <cstring>
#include <string_view>

namespace pelloran {

namespace {

using Bytes = std::string_view;

// memmem: several times as fast as std::string_view::find on log lines, which all begin alike.
std::size_t find(Bytes text, Bytes word, std::size_t from = 0) {
    if (text.size() < from + word.size()) {
        return Bytes::npos;
    }
    const void* hit = memmem(text.data() + from, text.size() - from, word.data(), word.size());
    return hit ? static_cast<std::size_t>(static_cast<const char*>(hit) - text.data()) : Bytes::npos;
}

// Searches forward in blocks from the end; rfind would compare at every byte. Blocks grow, so that a near hit costs
// little and a far one is found at full speed.
std::size_t findLast(Bytes text, Bytes word) {
    std::size_t blockSize = 512;
    for (std::size_t top = text.size(); top > 0; blockSize = std::min<std::size_t>(blockSize * 2, 1 << 16)) {
        const std::size_t bottom = top - std::min(top, blockSize);
        const Bytes block = text.substr(bottom, top - bottom + word.size() - 1);
        std::size_t last = Bytes::npos;
        for (std::size_t hit = find(block, word); hit != Bytes::npos; hit = find(block, word, hit + 1)) {
            last = bottom + hit;
        }
        if (last != Bytes::npos) {
            return last;
        }
        top = bottom;
    }
    return Bytes::npos;
}

struct Line {
    std::size_t begin;
    std::size_t end;
};

// The line around a place. No pattern of ours can match across LF or CR, so what matches within each line is exactly
// what matches in the whole text.
Line lineAround(Bytes text, std::size_t place) {
    const auto endsLine = [](char byte) { return byte == '\n' || byte == '\r'; };
    const Bytes before = text.substr(0, place);
    const auto begin = std::find_if(before.rbegin(), before.rend(), endsLine);
    const Bytes after = text.substr(place);
    const auto end = std::find_if(after.begin(), after.end(), endsLine);
    return {static_cast<std::size_t>(before.rend() - begin), place + static_cast<std::size_t>(end - after.begin())};
}

QString decoded(Bytes text, Line line) {
    return QString::fromUtf8(text.data() + line.begin, static_cast<qsizetype>(line.end - line.begin));
}

// A pattern with a text that every match of it holds: only lines with that landmark are decoded and matched. Matches
// without group 1 do not count.
class LinePattern {
public:
    LinePattern(QStringView pattern, Bytes landmarkText)
        : LinePattern(pattern.toString(), landmarkText) {}

    LinePattern(const QString& pattern, Bytes landmarkText)
        : expression(textPattern(pattern))
        , landmark(landmarkText) {}

    std::optional<QRegularExpressionMatch> first(Bytes text) const {
        std::optional<QRegularExpressionMatch> found;
        visit(text, [&](const QRegularExpressionMatch& match) {
            found = match;
            return false;
        });
        return found;
    }

    QStringList all(Bytes text) const {
        QStringList found;
        visit(text, [&](const QRegularExpressionMatch& match) {
            found.append(match.captured(1));
            return true;
        });
        return found;
    }

    std::optional<QRegularExpressionMatch> last(Bytes text) const {
        std::optional<QRegularExpressionMatch> found;
        Line line{text.size(), text.size()};
        while (!found) {
            const std::size_t place = findLast(text.substr(0, line.begin), landmark);
            if (place == Bytes::npos) {
                break;
            }
            line = lineAround(text, place);
            visitLine(decoded(text, line), [&](const QRegularExpressionMatch& match) {
                found = match;
                return true;
            });
        }
        return found;
    }

private:
    // From the first match on, until `take` returns false.
    template <typename Take>
    void visit(Bytes text, const Take& take) const {
        Line line{0, 0};
        while (true) {
            const std::size_t place = find(text, landmark, line.end);
            if (place == Bytes::npos) {
                return;
            }
            line = lineAround(text, place);
            if (!visitLine(decoded(text, line), take)) {
                return;
            }
        }
    }

    template <typename Take>
    bool visitLine(const QString& line, const Take& take) const {
        for (auto next = expression.globalMatch(line); next.hasNext();) {
            const QRegularExpressionMatch match = next.next();
            if (match.hasCaptured(1) && !take(match)) {
                return false;
            }
        }
        return true;
    }

    QRegularExpression expression;
    Bytes landmark;
};

// Where a choice does not match, no later one before the same line end can: what the first one lacks, they lack too.
// The second branch therefore skips the rest of the line. Without it, a line that repeats the opening words a
// hundred thousand times would take minutes.
QString choiceOnce(const QString& pattern) {
    return pattern + QStringLiteral("|Client chooses: .+");
}

// Made once for each thread that asks: making them takes longer than looking for them in a short log.
struct Patterns {
    LinePattern currentMode{LogPatterns::currentMode, "currMode="};
    LinePattern draftMode{LogPatterns::draftMode, "SetDraftMode - "};
    LinePattern newDeck{LogPatterns::newDeck, "Got new draft deck with ID: "};
    LinePattern chosenHero{LogPatterns::chosenHero, "OnChosen(): hero="};
    LinePattern heroCard{LogPatterns::heroCard, "Hero Card = "};
    LinePattern heroClicked{choiceOnce(u'(' + LogPatterns::heroClicked.toString() + u')'), " (HERO_"};
    LinePattern deckAndHero{LogPatterns::deckAndHero, "Draft Deck ID: "};
    LinePattern deckCard{LogPatterns::deckCard, "Draft deck contains card "};
    LinePattern choice{choiceOnce(LogPatterns::choice.toString()), "Client chooses: "};
};

const Patterns& patterns() {
    static thread_local const Patterns made;
    return made;
}

} // namespace

std::optional<QString> lastScene(QByteArrayView loadingScreenLog) {
    const auto match =
        patterns().currentMode.last({loadingScreenLog.data(), static_cast<std::size_t>(loadingScreenLog.size())});
    return match ? std::optional(match->captured(1)) : std::nullopt;
}

void readArenaLog(QByteArrayView arenaLog, DraftState& state) {
    const Bytes log(arenaLog.data(), static_cast<std::size_t>(arenaLog.size()));
    if (const auto mode = patterns().draftMode.last(log)) {
        state.draftMode = mode->captured(1);
    }

    // Earlier drafts of the same session are none of our business.
    const std::size_t begins = findLast(log, LogPatterns::draftBegins);
    const Bytes draft = begins == Bytes::npos ? log : log.substr(begins);

    if (const auto deck = patterns().newDeck.first(draft)) {
        state.deckId = deck->captured(1);
    }
    auto hero = patterns().chosenHero.first(draft);
    if (!hero) {
        hero = patterns().heroCard.first(draft);
    }
    if (hero) {
        state.hero = hero->captured(1);
        state.hasHero = true;
    } else if (patterns().heroClicked.first(draft)) {
        state.hasHero = true;
    }

    if (const std::size_t listing = findLast(draft, LogPatterns::deckListing); listing != Bytes::npos) {
        const Bytes deck = draft.substr(listing);
        if (const auto head = patterns().deckAndHero.first(deck)) {
            state.deckId = head->captured(1);
            state.hero = head->captured(2);
            state.hasHero = true;
        }
        state.deckCardIds = patterns().deckCard.all(deck);
    }

    if (const auto pick = patterns().choice.last(draft)) {
        state.lastChoiceName = pick->captured(1);
        state.lastChoiceId = pick->captured(2);
    }
}

void decidePhase(DraftState& state) {
    const bool drafting = state.draftMode == u"DRAFTING" || state.draftMode == u"REDRAFTING";
    // A loading-screen log that says nothing does not hide a running draft.
    const bool onScreen = state.scene == u"DRAFT" || state.scene == u"UNKNOWN";
    state.inDraft = drafting && onScreen;
    state.phase = !state.inDraft ? DraftPhase::idle : state.hasHero ? DraftPhase::cardPick : DraftPhase::heroPick;
}

} // namespace pelloran
