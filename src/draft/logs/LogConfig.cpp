#include "draft/logs/LogConfig.h"

#include <QByteArrayView>

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace pelloran {

namespace {

struct Entry {
    QByteArrayView key;
    QByteArrayView value;
};

constexpr std::array<QByteArrayView, 2> sections{"Arena", "LoadingScreen"};

constexpr std::array entries{
    Entry{"LogLevel", "1"},           Entry{"FilePrinting", "true"}, Entry{"ConsolePrinting", "false"},
    Entry{"ScreenPrinting", "false"}, Entry{"Verbose", "true"},
};

constexpr QByteArrayView byteOrderMark = "\xEF\xBB\xBF";

struct Line {
    QByteArrayView content;
    QByteArrayView end; // "\n", "\r\n" or "\r"; "" of the last one
};

std::vector<Line> linesOf(QByteArrayView text) {
    std::vector<Line> lines;
    while (!text.isEmpty()) {
        const auto first = std::ranges::find_if(text, [](char byte) { return byte == '\n' || byte == '\r'; });
        const qsizetype length = first - text.begin();
        const QByteArrayView rest = text.sliced(length);
        const qsizetype endLength = rest.startsWith("\r\n") ? 2 : std::min<qsizetype>(rest.size(), 1);
        lines.push_back({text.first(length), rest.first(endLength)});
        text = rest.sliced(endLength);
    }
    return lines;
}

bool isSpelledAlike(QByteArrayView one, QByteArrayView other) {
    return one.compare(other, Qt::CaseInsensitive) == 0;
}

// Where a comment begins; the size where there is none.
qsizetype commentStart(QByteArrayView text) {
    qsizetype start = text.size();
    for (const QByteArrayView mark : {QByteArrayView(";"), QByteArrayView("#"), QByteArrayView("//")}) {
        if (const qsizetype found = text.indexOf(mark); found >= 0) {
            start = std::min(start, found);
        }
    }
    return start;
}

bool isHeader(const Line& line) {
    return line.content.trimmed().startsWith('[') && line.content.contains(']');
}

// A section's first line.
struct Header {
    QByteArrayView name;
    QByteArrayView comment; // behind it; mostly empty
};

// A line with anything else behind the bracket begins a section that is none of ours.
Header parseHeader(QByteArrayView content) {
    const QByteArrayView text = content.trimmed();
    const qsizetype close = text.indexOf(']');
    const QByteArrayView behind = text.sliced(close + 1).trimmed();
    if (commentStart(behind) != 0) {
        return {text, {}};
    }
    return {text.sliced(1, close - 1), behind};
}

struct Assignment {
    QByteArrayView key; // "" where the line is none
    QByteArrayView value;
    QByteArrayView comment;
};

Assignment parseAssignment(QByteArrayView content) {
    const qsizetype equals = content.indexOf('=');
    if (equals < 0 || commentStart(content) < equals) {
        return {};
    }
    const QByteArrayView behind = content.sliced(equals + 1);
    const qsizetype comment = commentStart(behind);
    return {content.first(equals).trimmed(), behind.first(comment).trimmed(), behind.sliced(comment).trimmed()};
}

class Merger {
public:
    explicit Merger(const std::vector<Line>& lines)
        : all(lines) {
        const auto ended = std::ranges::find_if(all, [](const Line& line) { return !line.end.isEmpty(); });
        lineEnd = ended == all.end() ? QByteArrayView("\n") : ended->end;
    }

    MergedLogConfig merge(QByteArrayView mark) {
        merged.text = mark.toByteArray();
        std::array<bool, sections.size()> found{};
        for (auto first = all.begin(); first != all.end();) {
            const auto next = std::find_if(first + 1, all.end(), isHeader);
            const std::span block(first, next);
            first = next;
            const QByteArrayView name = isHeader(block[0]) ? parseHeader(block[0].content).name.trimmed() : "";
            const auto section =
                std::ranges::find_if(sections, [&](QByteArrayView each) { return isSpelledAlike(each, name); });
            if (section == sections.end()) {
                for (const Line& line : block) {
                    put(line.content, line.end);
                }
                continue;
            }
            found[static_cast<std::size_t>(section - sections.begin())] = true;
            complete(*section, block);
        }
        for (std::size_t i = 0; i < sections.size(); ++i) {
            if (!found[i]) {
                append(sections[i], merged.text.size() > mark.size());
            }
        }
        return std::move(merged);
    }

private:
    void put(QByteArrayView content, QByteArrayView end) {
        merged.text += content;
        merged.text += end;
    }

    // What stood last in the file may lack a line end.
    void beginLine() {
        if (!merged.text.isEmpty() && !merged.text.endsWith('\n') && !merged.text.endsWith('\r')) {
            merged.text += lineEnd;
        }
    }

    void putEntry(const Entry& entry, QByteArrayView end) {
        merged.text += entry.key;
        merged.text += '=';
        put(entry.value, end);
    }

    void noteChange(QByteArrayView section, const QString& change) {
        merged.changes.append(QStringLiteral("[%1] %2").arg(QString::fromLatin1(section), change));
    }

    static QString text(const Entry& entry) {
        return QStringLiteral("%1=%2").arg(QString::fromLatin1(entry.key), QString::fromLatin1(entry.value));
    }

    void complete(QByteArrayView section, std::span<const Line> block) {
        putHeader(section, block[0]);
        // What is missing follows what the section says already, ahead of comments that belong to the next one.
        std::size_t lastSaid = 0;
        std::array<bool, entries.size()> said{};
        for (std::size_t i = 1; i < block.size(); ++i) {
            const QByteArrayView key = parseAssignment(block[i].content).key;
            if (!key.isEmpty()) {
                lastSaid = i;
            }
            for (std::size_t k = 0; k < entries.size(); ++k) {
                said[k] = said[k] || isSpelledAlike(key, entries[k].key);
            }
        }
        for (std::size_t i = 0; i < block.size(); ++i) {
            if (i > 0) {
                putAssignment(section, block[i]);
            }
            if (i == lastSaid) {
                putMissing(section, said, block[i].end);
            }
        }
    }

    void putHeader(QByteArrayView section, const Line& line) {
        const Header header = parseHeader(line.content);
        if (header.name == section && header.comment.isEmpty()) {
            put(line.content, line.end);
            return;
        }
        put("[" + section.toByteArray() + "]", line.end);
        if (!header.comment.isEmpty()) {
            beginLine();
            put(header.comment, line.end);
        }
        noteChange(section, QStringLiteral("(was %1)").arg(QString::fromUtf8(line.content.trimmed())));
    }

    void putAssignment(QByteArrayView section, const Line& line) {
        const Assignment found = parseAssignment(line.content);
        const auto entry =
            std::ranges::find_if(entries, [&](const Entry& each) { return isSpelledAlike(each.key, found.key); });
        if (entry == entries.end() ||
            (found.key == entry->key && isSpelledAlike(found.value, entry->value) && found.comment.isEmpty())) {
            put(line.content, line.end);
            return;
        }
        if (!found.comment.isEmpty()) {
            put(found.comment, lineEnd);
        }
        putEntry(*entry, line.end);
        noteChange(section, QStringLiteral("%1 (was %2)").arg(text(*entry), QString::fromUtf8(line.content.trimmed())));
    }

    void putMissing(QByteArrayView section, const std::array<bool, entries.size()>& said, QByteArrayView end) {
        for (std::size_t k = 0; k < entries.size(); ++k) {
            if (!said[k]) {
                beginLine();
                putEntry(entries[k], end.isEmpty() ? lineEnd : end);
                noteChange(section, QStringLiteral("%1 (was missing)").arg(text(entries[k])));
            }
        }
    }

    void append(QByteArrayView section, bool afterOthers) {
        if (afterOthers) {
            beginLine();
            merged.text += lineEnd;
        }
        put("[" + section.toByteArray() + "]", lineEnd);
        for (const Entry& entry : entries) {
            putEntry(entry, lineEnd);
        }
        noteChange(section, QStringLiteral("(was missing)"));
    }

    const std::vector<Line>& all;
    QByteArrayView lineEnd;
    MergedLogConfig merged;
};

} // namespace

std::expected<MergedLogConfig, NotPlainText> mergeLogConfig(const QByteArray& text) {
    if (text.contains('\0') || text.startsWith("\xFF\xFE") || text.startsWith("\xFE\xFF")) {
        return std::unexpected(NotPlainText());
    }
    const QByteArrayView mark = text.startsWith(byteOrderMark) ? byteOrderMark : QByteArrayView();
    const std::vector<Line> lines = linesOf(QByteArrayView(text).sliced(mark.size()));
    return Merger(lines).merge(mark);
}

} // namespace pelloran
