#pragma once

#include "platform/TextReader.h"

namespace pelloran::testing {

// Reads the same lines from every picture that is one, and remembers what it was asked.
class FakeTextReader final : public TextReader {
public:
    ReadText read(const QImage& image, const ReadingHints& hints) override {
        sizes.push_back(image.size());
        lastHints = hints;
        if (image.isNull()) {
            return {};
        }
        return {tokens, {}, columns};
    }

    bool scalesLinesItself() const override { return scales; }

    void forget() override { ++forgotten; }

    std::vector<OCRToken> tokens;
    std::optional<std::array<double, 3>> columns;
    bool scales = false;
    std::vector<QSize> sizes;
    ReadingHints lastHints;
    int forgotten = 0;
};

} // namespace pelloran::testing
