#include "app/evaluation/Tally.h"

#include <algorithm>
#include <cmath>

namespace pelloran::evaluation {

std::optional<double> quantile(std::vector<double> values, double quantile) {
    if (values.empty()) {
        return std::nullopt;
    }
    std::ranges::sort(values);
    const double place = quantile * static_cast<double>(values.size() - 1);
    const auto below = static_cast<std::size_t>(place);
    const std::size_t above = std::min(below + 1, values.size() - 1);
    return std::lerp(values[below], values[above], place - static_cast<double>(below));
}

void TextTally::add(const TextAnswer& answer) {
    ++boxes;
    right += answer.verdict == Verdict::right;
    wrong += answer.verdict == Verdict::wrong;
    unread += answer.verdict == Verdict::unread;
    notInData += answer.verdict == Verdict::missing || answer.verdict == Verdict::wrongMissing;
    wrongMissing += answer.verdict == Verdict::wrongMissing;
}

void Tally::add(const Picture& picture) {
    ++pictures;
    for (const Answer& answer : picture.answers) {
        slots += answer.offered.has_value();
        right += answer.verdict == Verdict::right;
        wrong += answer.verdict == Verdict::wrong;
        unread += answer.verdict == Verdict::unread;
        notInData += answer.verdict == Verdict::missing || answer.verdict == Verdict::wrongMissing;
        wrongMissing += answer.verdict == Verdict::wrongMissing;
        falseOffers += answer.verdict == Verdict::falseOffer;
    }
    for (const Look& look : picture.looks) {
        milliseconds.push_back(look.milliseconds);
        cpuMilliseconds.push_back(look.cpuMilliseconds);
    }
    for (const Look& look : picture.repeated) {
        repeatedCpuMilliseconds.push_back(look.cpuMilliseconds);
        const auto first = std::ranges::find(picture.looks, look.rules, &Look::rules);
        changed += first != picture.looks.end() && !look.agreesWith(*first);
    }
}

} // namespace pelloran::evaluation
