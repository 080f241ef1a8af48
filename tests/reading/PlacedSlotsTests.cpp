#include "reading/PlacedSlots.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

namespace pelloran {

namespace {

const QString kettle = QStringLiteral("Copper Kettle");
const QString moth = QStringLiteral("Lantern Moth");

struct Sight {
    QString text;
    NameKind curve = NameKind::minion;
    float confidence = 0.9F;
};

TEST(PlacedSlotTest, WhatIsOfferedAfterSeveralSightsOfALine) {
    struct Row {
        std::vector<Sight> sights;
        QString offer; // "": none
        const char* why;
    };

    const auto text = [](const char* each) { return QString::fromUtf8(each); };
    const QString nettle = text("Copper Nettle"); // an n for a k is no usual mistake
    const Row table[] = {
        {{}, {}, "nothing was read"},
        {{{kettle}}, kettle, "read exactly"},
        {{{kettle}, {moth}}, kettle, "what follows counts no more"},
        {{{nettle}}, kettle, "a letter off"},
        {{{nettle}, {nettle}}, {}, "the same letter off along the same curve: this is printed, and no known name"},
        {{{text("Copper Nettel")}, {nettle}}, kettle, "other letters off: nothing is said twice"},
        {{{nettle}, {nettle, NameKind::spell}},
         kettle,
         "along another curve the letters lean alike, and are misread alike"},
        {{{nettle}, {nettle, NameKind::spell}, {nettle, NameKind::spell}}, {}, "twice along that one"},
        {{{text("Brazen Teapot")}, {text("Brazen Teapot"), NameKind::spell}, {kettle}},
         {},
         "what never was near a name is said twice along any curve"},
        {{{nettle, NameKind::minion, 0.4F}, {nettle, NameKind::minion, 0.4F}},
         kettle,
         "what is hardly read says little"},
        {{{text("Copper Kettie")}, {text("Copper Kettie")}}, kettle, "an i for an l is a usual mistake, twice too"},
        {{{text("Ox")}, {text("Ox")}, {kettle}}, kettle, "two letters are soon read alike"},
        {{{nettle}, {nettle}, {kettle}}, {}, "once it is known what is printed, that stands"},
        {{{text("Lantern Moths")}, {moth}}, moth, "nearer at a second sight"},
        {{{text("babble")}, {moth}}, moth, "rubbish at first"},
    };
    const Lexicon names({{kettle, {}}, {moth, {}}}, Lexicon::forCards);
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        PlacedSlot slot;
        for (const Sight& sight : row.sights) {
            PlacedLine line;
            line.kinds = sight.curve;
            slot.take({sight.text, sight.confidence}, line, names);
        }
        EXPECT_EQ(slot.offer().value_or(QString()), row.offer);
    }
}

} // namespace

} // namespace pelloran
