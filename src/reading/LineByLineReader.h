#pragma once

#include "platform/TextReader.h"

#include <memory>
#include <optional>

namespace pelloran {

// Finds the names in a picture of the game's window, brings each into the form that a reader of lines reads best, and
// takes its text for the name that it can be. Tries where names usually stand first, and then
// everywhere.
class LineByLineReader final : public TextReader {
public:
    explicit LineByLineReader(std::unique_ptr<LineReader> lines);

    ReadText read(const QImage& image, const ReadingHints& hints) override;

    // Every line is brought to the height its network was made for, whatever the size of the window.
    bool scalesLinesItself() const override { return true; }

    void forget() override { remembered.reset(); }

private:
    ReadText readAtPlaces(const QImage& image, const ReadingHints& hints);

    std::unique_ptr<LineReader> lineReader;
    std::optional<Script> remembered; // which the client uses
};

} // namespace pelloran
