#pragma once

#include <QImage>
#include <QString>

#include <expected>
#include <memory>
#include <vector>

namespace pelloran {

// Kinds of letters, each with a network of its own: one that knows both reads either worse.
enum class Script { latin, chinese };

// What was made of the picture of a line.
struct LineReading {
    QString text;         // trimmed; may be empty
    float confidence = 0; // 0 to 1

    bool operator==(const LineReading&) const = default;
};

// Reads small clean pictures of single lines. Made and used on one thread; may use workers of its own.
class LineReader {
public:
    struct Work {
        QImage picture; // Format_Grayscale8, black on white
        Script script = Script::latin;
    };

    // The error is for the user: what is missing and what to install.
    static std::expected<std::unique_ptr<LineReader>, QString> create();

    virtual ~LineReader() = default;

    // One reading for each piece of work, in its order. Blocks until all are done.
    virtual std::vector<LineReading> read(const std::vector<Work>& work) = 0;
};

} // namespace pelloran
