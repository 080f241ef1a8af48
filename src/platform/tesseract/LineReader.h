#pragma once

#include "LineCropper.h"

#include <QString>

#include <expected>
#include <memory>
#include <vector>

namespace pelloran {

// Kinds of letters, each with a network of its own: one that knows both reads either worse.
enum class Script { latin, chinese };

// The form of a line in which the network of `script` reads it best.
PictureShape pictureShape(Script script);

// What a network made of a line.
struct LineReading {
    QString text;         // trimmed; may be empty
    float confidence = 0; // 0 to 1

    bool operator==(const LineReading&) const = default;
};

// Reads pictures of single lines with Tesseract, two at a time. Made and used on one thread; owns two worker threads,
// each with networks of its own.
class LineReader {
public:
    struct Work {
        Plane picture; // black on white, of the script's shape
        Script script;
    };

    // `dataFolder` holds the networks; empty: where the system keeps them. The error names what to install.
    static std::expected<std::unique_ptr<LineReader>, QString> create(const QString& dataFolder = {});

    ~LineReader();

    // One reading for each piece of work, in its order. Blocks until all are done.
    std::vector<LineReading> read(const std::vector<Work>& work);

private:
    class Pool;

    explicit LineReader(std::unique_ptr<Pool> workers);

    std::unique_ptr<Pool> pool;
};

} // namespace pelloran
