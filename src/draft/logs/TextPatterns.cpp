#include "draft/logs/TextPatterns.h"

namespace pelloran {

namespace {

// Every group, also a last one that took no part, which capturedTexts() leaves out.
QStringList groups(const QRegularExpressionMatch& match) {
    QStringList texts;
    for (int group = 1; group <= match.regularExpression().captureCount(); ++group) {
        texts.append(match.captured(group));
    }
    return texts;
}

QRegularExpressionMatchIterator everyMatch(const QString& text, const QString& pattern) {
    const QRegularExpression expression = textPattern(pattern);
    // Matching with an invalid expression would warn.
    return expression.isValid() ? expression.globalMatch(text) : QRegularExpressionMatchIterator();
}

} // namespace

QRegularExpression textPattern(const QString& pattern) {
    // (*ANY) makes every Unicode line end one that `.` does not cross; by default `.` stops at LF alone.
    return QRegularExpression(QStringLiteral("(*ANY)") + pattern, QRegularExpression::UseUnicodePropertiesOption);
}

QStringList matches(const QString& text, const QString& pattern) {
    QStringList found;
    for (auto next = everyMatch(text, pattern); next.hasNext();) {
        const QRegularExpressionMatch match = next.next();
        if (match.hasCaptured(1)) {
            found.append(match.captured(1));
        }
    }
    return found;
}

QList<QStringList> allGroups(const QString& text, const QString& pattern) {
    QList<QStringList> found;
    for (auto next = everyMatch(text, pattern); next.hasNext();) {
        found.append(groups(next.next()));
    }
    return found;
}

std::optional<QStringList> firstMatch(const QString& text, const QString& pattern) {
    if (auto next = everyMatch(text, pattern); next.hasNext()) {
        return groups(next.next());
    }
    return std::nullopt;
}

} // namespace pelloran
