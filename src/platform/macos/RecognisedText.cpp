#include "platform/macos/RecognisedText.h"

#include <utility>

namespace pelloran::macos {

namespace {

constexpr int readingsOfALook = 2;

} // namespace

std::vector<OCRToken> tokensOf(std::span<const RecognisedLine> lines) {
    std::vector<OCRToken> tokens;
    for (const RecognisedLine& line : lines) {
        QString text = line.text.trimmed();
        if (text.isEmpty()) {
            continue;
        }
        tokens.push_back({
            .text = std::move(text),
            .confidence = line.confidence,
            .midX = line.x + line.width / 2,
            .midY = 1.0 - (line.y + line.height / 2),
            .width = line.width,
            .height = line.height,
        });
    }
    return tokens;
}

bool RepeatedTrouble::isNews(const QString& trouble) {
    if (trouble.isEmpty()) {
        if (++goodReadings > readingsOfALook) {
            told.clear();
        }
        return false;
    }
    goodReadings = 0;
    if (trouble == told) {
        return false;
    }
    told = trouble;
    return true;
}

} // namespace pelloran::macos
