#pragma once

#include "tests/fakes/FakeLineReader.h"

#include <QStringList>

#include <algorithm>
#include <array>

namespace pelloran::testing {

// Three painted words of so different widths that their pictures can be told apart whatever they were made with.
inline const std::array<QString, 3> wordsByWidth{QStringLiteral("Houne"), QStringLiteral("Houneuoceu"),
                                                 QStringLiteral("Houneuoceuonucoe")};

// What a reader is to make of each of them: the first text at the first reading, and so on, then the last one again and
// again, each time a little less sure. No texts: it reads nothing there.
class WordScript {
public:
    explicit WordScript(std::array<QStringList, 3> textsOfWords, float sure = 0.9F)
        : texts(std::move(textsOfWords))
        , confidence(sure) {}

    LineReading operator()(const QImage& picture) {
        const double shape = double(picture.width()) / picture.height();
        const std::size_t word = shape < 4.2 ? 0 : shape < 6.8 ? 1 : 2;
        const QStringList& list = texts[word];
        const auto turn = qsizetype(counts[word]++);
        return list.isEmpty() ? LineReading()
                              : LineReading{list[std::min(turn, list.size() - 1)], confidence - 0.01F * float(turn)};
    }

    std::array<std::size_t, 3> counts{}; // of the readings of each word

private:
    std::array<QStringList, 3> texts;
    float confidence;
};

} // namespace pelloran::testing
