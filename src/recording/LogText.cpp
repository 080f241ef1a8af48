#include "recording/LogText.h"

#include <utility>

namespace pelloran::recording {

LogText::LogText(Owner whose)
    : owner(std::move(whose)) {}

QString LogText::kept(QByteArrayView line) const {
    if (line.endsWith('\r')) {
        line.chop(1);
    }
    return concernsDraft(line) ? redacted(QString::fromUtf8(line), owner) : QString();
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
    unfinished = kept(QByteArrayView(seen).sliced(complete));
}

std::optional<LogChange> LogText::takeChange() {
    const bool same = told.any && told.there == there && told.lines == lines.size() && told.unfinished == unfinished;
    if (same) {
        return std::nullopt;
    }
    LogChange change;
    if (!told.any) {
        change.anew = true;
    }
    if (!there) {
        change.missing = true;
    }
    if (told.lines < lines.size()) {
        change.lines = lines.sliced(told.lines);
    }
    if (!unfinished.isEmpty()) {
        change.unfinished = unfinished;
    }
    told = {true, there, lines.size(), unfinished};
    return change;
}

} // namespace pelloran::recording
