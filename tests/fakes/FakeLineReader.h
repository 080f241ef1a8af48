#pragma once

#include "platform/LineReader.h"

#include <deque>
#include <functional>

namespace pelloran::testing {

// Reads what it is told to from whatever picture, and remembers what it was asked. Told nothing, it reads nothing.
class FakeLineReader final : public LineReader {
public:
    // What a test sees of a reader that somebody else owns.
    struct Told {
        // The next readings, first to last. When they are used up, `answer` is asked.
        std::deque<LineReading> next;
        // The reading of one picture. May be empty.
        std::function<LineReading(const QImage&)> answer;

        std::size_t readings = 0; // of lines
        std::vector<QImage> seen;

        void say(const QStringList& texts, float confidence = 0.9F) {
            for (const QString& text : texts) {
                next.push_back({text, confidence});
            }
        }
    };

    explicit FakeLineReader(Told& toldBy)
        : told(toldBy) {}

    std::vector<LineReading> read(const std::vector<QImage>& pictures) override {
        std::vector<LineReading> readings;
        for (const QImage& picture : pictures) {
            ++told.readings;
            told.seen.push_back(picture);
            if (!told.next.empty()) {
                readings.push_back(told.next.front());
                told.next.pop_front();
            } else {
                readings.push_back(told.answer ? told.answer(picture) : LineReading());
            }
            readings.back().text = readings.back().text.trimmed();
        }
        return readings;
    }

private:
    Told& told; // outlives this
};

} // namespace pelloran::testing
