#include "app/evaluation/Report.h"

#include "app/Json.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace pelloran::evaluation {

namespace {

QString boxText(const QRect& box) {
    return u"%1,%2,%3,%4"_s.arg(box.left()).arg(box.top()).arg(box.left() + box.width()).arg(box.top() + box.height());
}

QString verdictName(Verdict verdict) {
    switch (verdict) {
    case Verdict::right:
        return u"right"_s;
    case Verdict::wrong:
        return u"wrong"_s;
    case Verdict::unread:
        return u"unread"_s;
    case Verdict::missing:
        return u"missing"_s;
    case Verdict::wrongMissing:
        return u"wrongMissing"_s;
    case Verdict::falseOffer:
        return u"falseOffer"_s;
    }
    Q_UNREACHABLE();
}

QString nameOf(const Offer& offer) {
    return offer.name.isEmpty() ? offer.id : offer.name;
}

QJsonObject toJson(const Answer& answer) {
    return {
        {u"slot"_s, answer.match.slot.rawValue()},
        {u"rules"_s, phaseName(answer.rules)},
        {u"offered"_s, answer.offered ? QJsonValue(nameOf(*answer.offered)) : QJsonValue(QJsonValue::Null)},
        {u"cardId"_s, json::optional(answer.match.cardId)},
        {u"name"_s, json::optional(answer.shown)},
        {u"ocrText"_s, answer.match.ocrText},
        {u"method"_s, answer.match.method},
        {u"verdict"_s, answer.verdict ? QJsonValue(verdictName(*answer.verdict)) : QJsonValue(QJsonValue::Null)},
    };
}

QJsonObject toJson(const TextAnswer& answer) {
    const QRect& box = answer.offered.box;
    return {
        {u"box"_s, QJsonArray{box.left(), box.top(), box.left() + box.width(), box.top() + box.height()}},
        {u"ink"_s, answer.offered.ink},
        {u"text"_s, answer.offered.text},
        {u"read"_s, json::optional(answer.read)},
        {u"verdict"_s, verdictName(answer.verdict)},
    };
}

QJsonArray eachOf(const std::vector<Look>& looks, double Look::* figure) {
    QJsonArray values;
    for (const Look& look : looks) {
        values.append(look.*figure);
    }
    return values;
}

} // namespace

QStringList remarks(const Picture& picture) {
    QStringList lines;
    for (const Answer& answer : picture.answers) {
        const QString offered = answer.offered ? nameOf(*answer.offered) : QString();
        const QString read =
            u"%1, read \"%2\""_s.arg(answer.shown.value_or(QString()), answer.match.ocrText); // of what is shown
        const QString place = u"%1 %2: "_s.arg(picture.path, answer.match.slot.rawValue());
        if (answer.verdict == Verdict::wrong) {
            lines.append(u"wrong: "_s + place + offered + u", shown as "_s + read);
        } else if (answer.verdict == Verdict::wrongMissing) {
            lines.append(u"wrong: "_s + place + offered + u" (not in the data), shown as "_s + read);
        } else if (answer.verdict == Verdict::unread) {
            lines.append(u"unread: "_s + place + offered);
        } else if (answer.verdict == Verdict::falseOffer) {
            lines.append(u"false offer: "_s + place + u"no pick, by the rules of "_s + phaseName(answer.rules) +
                         u" shown as "_s + read);
        }
    }
    for (const TextAnswer& answer : picture.texts) {
        const QString line = u"text %1: %2 %3: %4"_s.arg(verdictName(answer.verdict), picture.path,
                                                         boxText(answer.offered.box), answer.offered.text);
        lines.append(answer.read ? line + u", read as "_s + *answer.read : line);
    }
    return lines;
}

QJsonObject toJson(const Picture& picture) {
    QJsonArray offered;
    for (const auto& each : picture.truth.offers) {
        offered.append(each ? QJsonValue(nameOf(*each)) : QJsonValue(QJsonValue::Null));
    }
    QJsonArray answers;
    for (const Answer& answer : picture.answers) {
        answers.append(toJson(answer));
    }
    QJsonArray texts;
    for (const TextAnswer& answer : picture.texts) {
        texts.append(toJson(answer));
    }
    return {
        {u"picture"_s, picture.path},
        {u"phase"_s, phaseName(picture.truth.phase)},
        {u"language"_s, picture.truth.language.rawValue()},
        {u"lettering"_s, picture.truth.lettering},
        {u"texts"_s, texts},
        {u"names"_s, offered},
        {u"slots"_s, answers},
        {u"milliseconds"_s, eachOf(picture.looks, &Look::milliseconds)},
        {u"cpuMilliseconds"_s, eachOf(picture.looks, &Look::cpuMilliseconds)},
        {u"repeatedCpuMilliseconds"_s, eachOf(picture.repeated, &Look::cpuMilliseconds)},
    };
}

} // namespace pelloran::evaluation
