#include "recording/LogText.h"

#include "draft/logs/ArenaLog.h"
#include "draft/logs/LogWatcher.h"

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace pelloran::recording {

namespace {

// Of what is told at once: several times what comes up in a draft, and within what is read again.
constexpr qsizetype mostCharacters = 300'000;

// A draft before the line, so that what the line ends or goes on with shows.
constexpr const char* earlier = "currMode=A\nSetDraftMode - A\nDraftManager.OnBegin\n"
                                "DraftManager.OnChoicesAndContents - Draft Deck ID: 1, Hero Card = A\n"
                                "OnChosen(): hero=A\nDraft deck contains card A\nClient chooses: A (A)\n";

// Whatever stood before, the draft's state follows from one as from the other, but for the name of the card taken.
bool tellTheSame(const QString& one, const QString& other) {
    const auto stateAfter = [](const char* before, const QString& line) {
        const QByteArray text = before + line.toUtf8();
        DraftState state = LogWatcher::stateOf({u"session"_s, text, text});
        state.lastChoiceName.reset();
        return state;
    };
    return std::ranges::all_of(std::array{"", earlier}, [&](const char* before) {
        return stateAfter(before, one) == stateAfter(before, other);
    });
}

QStringList latest(const QStringList& lines) {
    qsizetype characters = 0;
    qsizetype first = lines.size();
    while (first > 0 && characters + lines[first - 1].size() <= mostCharacters) {
        characters += lines[--first].size() + 1;
    }
    return lines.sliced(first);
}

} // namespace

LogText::LogText(Owner whose)
    : owner(std::move(whose)) {}

QString LogText::kept(QByteArrayView line) const {
    if (line.endsWith('\r')) {
        line.chop(1);
    }
    if (!concernsDraft(line)) {
        return {};
    }
    const QString text = QString::fromUtf8(line);
    const QString nameless = redacted(text, owner);
    const QString named = redacted(text, {owner.homes, {}});
    // Whose account is called as one of the game's words is not told from it, and what it says has to stand.
    return nameless == named || tellTheSame(nameless, text) ? nameless : named;
}

// It may end within a name, which nobody would know for one: what tells nothing yet is kept when it has its end, and of
// what does tell something, the last word is left out where it can be.
QString LogText::keptUnfinished(QByteArrayView line) const {
    QString whole = kept(line);
    const bool isTooLong = whole.size() > mostCharacters; // as such a whole line is not told
    if (whole.isEmpty() || isTooLong || tellTheSame({}, whole)) {
        return {};
    }
    qsizetype end = whole.size();
    while (end > 0 && !whole[end - 1].isSpace()) {
        --end;
    }
    const QString words = whole.first(end);
    return tellTheSame(words, whole) ? words : whole;
}

// Nothing follows from them any more but the modes that were announced.
void LogText::dropEarlierDrafts() {
    const QString begins =
        QString::fromLatin1(LogPatterns::draftBegins.data(), qsizetype(LogPatterns::draftBegins.size()));
    const auto behind =
        std::find_if(lines.rbegin(), lines.rend(), [&](const QString& line) { return line.contains(begins); }).base();
    if (behind == lines.begin()) {
        return;
    }
    const auto isOver = [](const QString& line) {
        return !line.contains(u"currMode="_s) && !line.contains(u"SetDraftMode - "_s);
    };
    lines.erase(std::remove_if(lines.begin(), behind - 1, isOver), behind - 1);
}

void LogText::update(const std::optional<QByteArray>& bytes) {
    const QByteArray now = bytes.value_or(QByteArray());
    there = bytes.has_value();
    if (QByteArrayView(now).first(std::min(complete, now.size())) != QByteArrayView(seen).first(complete)) {
        lines.clear();
        complete = 0;
        told = {};
    }
    seen = now;
    qsizetype end = seen.indexOf('\n', complete);
    for (; end >= 0; end = seen.indexOf('\n', complete)) {
        if (const QString line = kept(QByteArrayView(seen).sliced(complete, end - complete)); !line.isEmpty()) {
            lines.append(line);
        }
        complete = end + 1;
    }
    unfinished = keptUnfinished(QByteArrayView(seen).sliced(complete));
}

std::optional<LogChange> LogText::takeChange() {
    const bool same = told.any && told.there == there && told.lines == lines.size() && told.unfinished == unfinished;
    if (same) {
        return std::nullopt;
    }
    LogChange change;
    if (!told.any) {
        change.anew = true;
        dropEarlierDrafts();
    }
    if (!there) {
        change.missing = true;
    }
    if (told.lines < lines.size()) {
        change.lines = latest(lines.sliced(told.lines));
    }
    if (!unfinished.isEmpty()) {
        change.unfinished = unfinished;
    }
    told = {true, there, lines.size(), unfinished};
    return change;
}

} // namespace pelloran::recording
