#pragma once

#include <QImage>
#include <QString>

#include <expected>
#include <memory>
#include <vector>

namespace pelloran {

// What was made of the picture of a line.
struct LineReading {
    QString text;         // trimmed; may be empty
    float confidence = 0; // 0 to 1

    bool operator==(const LineReading&) const = default;
};

// Reads small clean pictures of single lines of Latin letters. Made and used on one thread; may use workers of its own.
class LineReader {
public:
    // The error is for the user: what is missing and what to install.
    static std::expected<std::unique_ptr<LineReader>, QString> create();

    virtual ~LineReader() = default;

    // Of pictures in Format_Grayscale8, black on white: one reading for each, in their order. Blocks until all are
    // done.
    virtual std::vector<LineReading> read(const std::vector<QImage>& pictures) = 0;
};

} // namespace pelloran
