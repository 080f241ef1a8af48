#pragma once

#include "platform/LineReader.h"

namespace pelloran {

// Reads lines with Tesseract, two at a time. Owns two worker threads, each with a network of its own.
class TesseractLineReader final : public LineReader {
public:
    // `dataFolder` holds its data; empty: where the system keeps them. The error names what to install.
    static std::expected<std::unique_ptr<LineReader>, QString> createFrom(const QString& dataFolder);

    ~TesseractLineReader() override;

    std::vector<LineReading> read(const std::vector<QImage>& pictures) override;

private:
    class Pool;

    explicit TesseractLineReader(std::unique_ptr<Pool> workers);

    std::unique_ptr<Pool> pool;
};

} // namespace pelloran
