#pragma once

#include "platform/TextReader.h"
#include "reading/chinese/ChineseLineReader.h"
#include "reading/PlacedSlots.h"
#include "reading/Plane.h"

#include <array>
#include <memory>
#include <optional>

namespace pelloran {

// Finds the names in a picture of the game's window, brings each into the form in which it is read best, and takes it
// for the name that it can be. Tries where names usually stand first, and then everywhere. While these places look as
// they did, only that is seen to.
class LineByLineReader final : public TextReader {
public:
    // Without `chineseLines` only Latin letters are read.
    LineByLineReader(std::unique_ptr<LineReader> lines, std::unique_ptr<ChineseLineReader> chineseLines);

    ReadText read(const QImage& image, const ReadingHints& hints) override;

    // Every line is brought to the height in which it is read best, whatever the size of the window.
    bool scalesLinesItself() const override { return true; }

    void forget() override;

private:
    // What the places of names were read as.
    struct Look {
        QSize window;
        ReadingHints hints;
        Script script; // of the names
        PlacedRow row;
        bool inPlaceOnly = true; // nothing was looked for elsewhere
        ReadText text{};
        std::array<Plane, 3> samples{}; // of the lines
        // What was not read exactly, or not at all, stands when a second look at the same lines says the same.
        std::array<bool, 3> isSure{};
        int repeated = 0; // looks for which this one has stood

        // The same was asked of a picture of this size.
        bool suits(const QSize& size, const ReadingHints& asked) const;

        bool isSteady(std::size_t slot, const QImage& image) const;

        // How the line of `row` looks; `again` if it was read as this before.
        void keep(std::size_t slot, const QImage& image, bool again);
    };

    std::optional<ReadText> readWhatChanged(const QImage& image, const ReadingHints& hints);
    Look readAtPlaces(const QImage& image, const ReadingHints& hints);
    void remember(Look look, const QImage& image);
    void tellOfSmallWindow(const QSize& window);

    std::unique_ptr<LineReader> lineReader;
    std::unique_ptr<ChineseLineReader> chineseReader;
    std::optional<Script> remembered; // which the client uses
    bool toldOfSmallWindow = false;
    std::optional<Look> last; // stays while less is seen: a cursor goes, and the names are the same
};

} // namespace pelloran
