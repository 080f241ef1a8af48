#pragma once

#include "platform/TextReader.h"

#include <QString>

#include <span>
#include <vector>

namespace pelloran::macos {

// A line as Vision tells it. The box is in fractions of the picture, from its bottom left corner.
struct RecognisedLine {
    QString text;
    float confidence = 0;
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
};

// The lines in the same order; those without text are none.
std::vector<OCRToken> tokensOf(std::span<const RecognisedLine> lines);

// What goes wrong again and again, told once: until it is something else, or has not been for some while. A look at the
// window reads it twice, so one reading that goes well does not tell that all is well again.
class RepeatedTrouble {
public:
    // Of one reading; "" when there was none. True: this is to be told.
    bool isNews(const QString& trouble);

private:
    QString told;
    int goodReadings = 0; // since then
};

} // namespace pelloran::macos
