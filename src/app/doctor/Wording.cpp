#include "app/doctor/Wording.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pelloran::doctor {

QString durationText(std::chrono::seconds duration) {
    struct Unit {
        std::chrono::seconds length;
        QString name;
    };

    const Unit units[] = {
        {std::chrono::hours(24), u"day"_s},
        {std::chrono::hours(1), u"hour"_s},
        {std::chrono::minutes(1), u"minute"_s},
        {std::chrono::seconds(1), u"second"_s},
    };
    // From two on: "90 seconds" tells more than "1 minute".
    for (const Unit& unit : units) {
        if (duration >= 2 * unit.length) {
            return u"%1 %2s"_s.arg(duration / unit.length).arg(unit.name);
        }
    }
    return u"a second"_s;
}

QString sentence(QString text) {
    text = text.trimmed();
    if (!text.isEmpty()) {
        text[0] = text[0].toUpper();
        if (!text.endsWith(u'.') && !text.endsWith(u'!') && !text.endsWith(u'?')) {
            text += u'.';
        }
    }
    return text;
}

QString shortList(const QStringList& texts) {
    constexpr qsizetype mostShown = 5; // enough to see what is meant
    const qsizetype more = texts.size() - mostShown;
    return texts.first(std::min(texts.size(), mostShown)).join(u", "_s) +
           (more > 0 ? u" and %1 more"_s.arg(more) : QString());
}

} // namespace pelloran::doctor
