#include "reading/chinese/ChineseLineReader.h"

#include "reading/chinese/ChineseInk.h"
#include "tests/reading/PaintedCharacters.h"
#include "tests/support/CollectedLog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace pelloran {

namespace {

QString text(const char* each) {
    return QString::fromUtf8(each);
}

const QStringList known{
    text("石田"),
    text("木火山"),
    text("王日山人"),
    text("大天中"),
    text("火山口"),
    text("目下十人"),
    text("石·木"),
    text("上山，下川"),
    text("天王山！"),
    text("H4木火"),
    text("工人7"),
    text("月下石人中"),
    text("十二月大火山"),
    text("石田木火山川人大天中口月"),
    text("口中石"),
    text("三山二川"),
    text("石田木火山川人大天中口王"),
    text("入土士本日"),
};

Lexicon lexiconOf(const QStringList& names) {
    std::vector<KnownName> list;
    for (const QString& name : names) {
        list.push_back({name, {}});
    }
    return {std::move(list), Lexicon::forCards};
}

class ChineseLineReaderTest : public ::testing::Test {
protected:
    std::optional<ChineseReading> read(const std::optional<Plane>& line, const Lexicon& among,
                                       const ChineseAcceptance& acceptance = ofChineseCards) {
        return reader.read(1, [&](std::size_t) { return line; }, among, acceptance);
    }

    // The name, or nothing.
    QString nameRead(const Plane& line, const Lexicon& among, const ChineseAcceptance& acceptance = ofChineseCards) {
        const auto reading = read(line, among, acceptance);
        return reading && reading->isName ? reading->text : QString();
    }

    testing::CollectedLog logged;
    ChineseLineReader reader{*testing::paintedModel()};
    const Lexicon lexicon = lexiconOf(known);
};

TEST_F(ChineseLineReaderTest, ReadsKnownNamesInEverySizeAndSpacing) {
    for (const QString& name : known) {
        for (const double size : {14.0, 18.0, 25.0, 30.0, 40.0}) {
            for (const double pitch : {1.0, 1.1, 1.25, 1.6}) {
                if (pitch == 1 && size < 25) {
                    continue; // they run together
                }
                for (const double stroke : {0.065, 0.085, 0.11}) {
                    if (name.contains(QChar(u'！')) && (size < 25 || stroke > 0.1)) {
                        continue; // too much ink for a mark
                    }
                    SCOPED_TRACE(::testing::Message()
                                 << name.toStdString() << ", " << size << " px, " << pitch << ", " << stroke);
                    const auto reading =
                        read(testing::inkOfLine(name, size, {.stroke = stroke, .pitch = pitch}), lexicon);
                    ASSERT_TRUE(reading);
                    EXPECT_TRUE(reading->isName);
                    EXPECT_EQ(reading->text, name);
                    EXPECT_LT(reading->nameCost, 0.4F);
                }
            }
        }
    }
    EXPECT_TRUE(logged.lines().isEmpty());
}

TEST_F(ChineseLineReaderTest, NamesThatAreNotKnownAreNone) {
    struct Row {
        const char* why;
        QString line;
    };

    const Row table[] = {
        {"one character else, of four", text("王日山口")},
        {"one that looks much like it", text("王日山入")},
        {"another that does", text("王目山人")},
        {"and a third", text("目下士人")},
        {"one character more", text("王日山人口")},
        {"one less", text("王日山")},
        {"two characters, one of them else", text("石火")},
        {"two that look much alike", text("石日")},
        {"the characters of a name, in another order", text("人山日王")},
        {"nothing in common", text("川上川上川")},
        {"a letter in place of a character", text("王日山H")},
        {"twelve, one of them else", text("石田木火山川人大天中口日")},
    };
    for (const Row& row : table) {
        for (const double size : {16.0, 30.0}) {
            for (const double pitch : {1.05, 1.4}) {
                SCOPED_TRACE(row.why);
                SCOPED_TRACE(::testing::Message() << size << " px, " << pitch);
                const auto reading = read(testing::inkOfLine(row.line, size, {.pitch = pitch}), lexicon);
                EXPECT_FALSE(reading && reading->isName) << (reading ? reading->text.toStdString() : "");
            }
        }
    }
}

TEST_F(ChineseLineReaderTest, ATruncatedNameIsNone) {
    for (const QString& line : {text("十二月大…"), text("十二月大火…"), text("王日山…"), text("王日…")}) {
        for (const double size : {16.0, 30.0}) {
            SCOPED_TRACE(::testing::Message() << line.toStdString() << ' ' << size);
            EXPECT_EQ(nameRead(testing::inkOfLine(line, size), lexicon), QString());
        }
    }
}

TEST_F(ChineseLineReaderTest, LookAlikesAreToldApart) {
    const Lexicon alike =
        lexiconOf({text("王日山人"), text("王日山入"), text("王目山人"), text("士日山人"), text("土日山人")});
    for (const KnownName& name : alike.names()) {
        SCOPED_TRACE(name.text.toStdString());
        const QString read = nameRead(testing::inkOfLine(name.text, 30), alike);
        EXPECT_TRUE(read.isEmpty() || read == name.text) << read.toStdString();
    }
    EXPECT_EQ(nameRead(testing::inkOfLine(text("王目山人"), 30), alike), text("王目山人")) << "else nothing is shown";
}

TEST_F(ChineseLineReaderTest, OfTwoNamesThatFitNeitherIsTaken) {
    // The same strokes for two characters.
    const QString one = text("石日山人");
    const QString other = text("石曰山人");
    const Plane line = testing::inkOfLine(one, 30);
    EXPECT_EQ(nameRead(line, lexiconOf({one})), one);
    EXPECT_EQ(nameRead(line, lexiconOf({other})), other);
    const auto both = read(line, lexiconOf({one, other, text("木火")}));
    ASSERT_TRUE(both);
    EXPECT_FALSE(both->isName);
    EXPECT_LT(both->nameCost, 0.3F) << "it does look like both";
    EXPECT_EQ(both->text.size(), 4) << "what it looks like";
    EXPECT_EQ(nameRead(line, lexiconOf({one, one, text("木火")})), one) << "the same name twice is one";
}

TEST_F(ChineseLineReaderTest, MarksMayBeSetNarrow) {
    for (const char* name : {"石·木", "上山，下川", "天王山！"}) {
        for (const double mark : {0.5, 1.0}) {
            SCOPED_TRACE(::testing::Message() << name << ' ' << mark);
            EXPECT_EQ(nameRead(testing::inkOfLine(text(name), 30, {.mark = mark}), lexicon), text(name));
        }
    }
}

TEST_F(ChineseLineReaderTest, ATextSaysWhatTheLineLooksLike) {
    const auto reading = read(testing::inkOfLine(text("人山日王"), 30), lexicon);
    ASSERT_TRUE(reading);
    EXPECT_FALSE(reading->isName);
    EXPECT_EQ(reading->text, text("人山日王"));
    EXPECT_LT(reading->letterCost, 0.3F);
    EXPECT_GT(reading->nameCost, reading->letterCost);
}

TEST_F(ChineseLineReaderTest, FurtherSightsAreAskedForUntilItIsClear) {
    const QString name = text("王日山人");
    const Plane clear = testing::inkOfLine(name, 30);
    const Plane blank(120, 30);
    const Plane other = testing::inkOfLine(text("川口川口"), 30);

    struct Row {
        std::vector<std::optional<Plane>> sights;
        std::size_t asked;
        QString name;
        const char* why;
    };

    const Row table[] = {
        {{clear, clear, clear}, 1, name, "clear at once"},
        {{blank, clear, clear}, 2, name, "the first shows nothing"},
        {{std::nullopt, clear, clear}, 2, name, "there is no first"},
        {{other, clear, clear}, 2, name, "the first looks like no name"},
        {{other, std::nullopt, clear}, 3, name, "the third does"},
        {{other, other, other}, 3, QString(), "none does"},
        {{std::nullopt, std::nullopt}, 2, QString(), "there are none"},
        {{}, 0, QString(), "no sights"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        std::vector<std::size_t> asked;
        const auto reading = reader.read(
            row.sights.size(),
            [&](std::size_t index) {
                asked.push_back(index);
                return row.sights.at(index);
            },
            lexicon, ofChineseCards);
        ASSERT_EQ(asked.size(), row.asked);
        for (std::size_t i = 0; i < asked.size(); ++i) {
            EXPECT_EQ(asked[i], i);
        }
        EXPECT_EQ(reading && reading->isName ? reading->text : QString(), row.name);
        const bool isAnything =
            std::ranges::any_of(row.sights, [&](const auto& sight) { return sight && *sight != blank; });
        EXPECT_EQ(reading.has_value(), isAnything);
    }
}

TEST_F(ChineseLineReaderTest, OtherNamesAreOtherAnswers) {
    const Plane line = testing::inkOfLine(text("王日山人"), 30);
    const Lexicon with = lexiconOf({text("王日山人"), text("石田")});
    const Lexicon without = lexiconOf({text("石田"), text("木火山")});
    const Lexicon third = lexiconOf({text("王日山人")});
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(nameRead(line, with), text("王日山人"));
        EXPECT_EQ(nameRead(line, without), QString());
        EXPECT_EQ(nameRead(line, third), text("王日山人"));
        EXPECT_EQ(nameRead(line, Lexicon()), QString());
    }
    // Made where another one was.
    for (int i = 0; i < 50; ++i) {
        const bool has = i % 2 == 0;
        EXPECT_EQ(nameRead(line, lexiconOf({has ? text("王日山人") : text("木火山大")})),
                  has ? text("王日山人") : QString());
    }
}

TEST_F(ChineseLineReaderTest, FewNames) {
    const Plane line = testing::inkOfLine(text("王日山人"), 30);
    EXPECT_EQ(read(line, Lexicon()), std::nullopt);
    EXPECT_EQ(read(line, lexiconOf({text("Amber Wolf")})), std::nullopt);
    EXPECT_EQ(nameRead(line, lexiconOf({text("王日山人")})), text("王日山人")) << "the only one";
    EXPECT_EQ(nameRead(testing::inkOfLine(text("川目田口"), 30), lexiconOf({text("王日山人")})), QString())
        << "the only one, and another line";
}

TEST_F(ChineseLineReaderTest, ReadsAmongAHundredThousandNames) {
    std::mt19937 random(4);
    const std::u32string characters = U"一二三十土工王口日田中山川人大天木石上下月火";
    QStringList list = known;
    for (int i = 0; i < 100000; ++i) {
        std::u32string name;
        for (unsigned k = 5 + random() % 6; k > 0; --k) {
            name += characters[random() % characters.size()];
        }
        list.append(QString::fromStdU32String(name));
    }
    const Lexicon many = lexiconOf(list);
    for (const char* name : {"石田", "木火山", "王日山人", "上山，下川"}) {
        EXPECT_EQ(nameRead(testing::inkOfLine(text(name), 30), many), text(name));
    }
    for (qsizetype i = known.size(); i < list.size(); i += 12345) {
        const QString read = nameRead(testing::inkOfLine(list[i], 30), many);
        EXPECT_TRUE(read.isEmpty() || read == list[i]) << "another one a character away may be as near";
    }
}

TEST_F(ChineseLineReaderTest, MissingCharactersAreToldOnce) {
    const Plane line = testing::inkOfLine(text("王日山人"), 30);
    const Lexicon lacking = lexiconOf({text("石龙"), text("王日山人"), text("龙石丙")});
    EXPECT_EQ(nameRead(line, lacking), text("王日山人"));
    ASSERT_EQ(logged.lines().size(), 1);
    EXPECT_TRUE(logged.lines()[0].endsWith(text("丙龙"))) << logged.lines()[0].toStdString();
    read(line, lacking);
    read(line, lexiconOf({text("丙龙石"), text("王日山人")})); // the names anew, as after a sync
    EXPECT_EQ(logged.lines().size(), 1);
    read(line, lexiconOf({text("石龙石"), text("丁王")}));
    ASSERT_EQ(logged.lines().size(), 2) << "others are";
    EXPECT_TRUE(logged.lines()[1].endsWith(text("丁"))) << logged.lines()[1].toStdString();
}

TEST_F(ChineseLineReaderTest, WhatIsNoTextIsNoName) {
    QStringList readings;
    const auto tryOut = [&](const char* why, const Plane& line) {
        for (const auto& acceptance : {ofChineseCards, ofChineseClasses}) {
            if (const QString name = nameRead(line, lexicon, acceptance); !name.isEmpty()) {
                readings << QString::fromUtf8(why) + u' ' + name;
            }
        }
    };
    tryOut("nothing", Plane(100, 30));
    tryOut("all ink", Plane(100, 30, 255));
    tryOut("a pixel", Plane(1, 1, 255));
    tryOut("no pixel", Plane());
    tryOut("a column", Plane(1, 60, 255));
    tryOut("a row", Plane(400, 1, 255));
    tryOut("wide", Plane(3000, 20, 255));
    Plane stripes(120, 30);
    Plane bars(120, 30);
    for (int y = 0; y < 30; ++y) {
        for (int x = 0; x < 120; ++x) {
            stripes.row(y)[x] = y % 8 < 3 ? 255 : 0;
            bars.row(y)[x] = x % 8 < 3 ? 255 : 0;
        }
    }
    tryOut("stripes", stripes);
    tryOut("bars", bars);
    QImage hand(80, 40, QImage::Format_Grayscale8);
    hand.fill(0);
    QPainter painter(&hand);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::white);
    painter.setPen(Qt::NoPen);
    painter.drawPolygon(QPolygonF{{5, 20}, {45, 2}, {50, 8}, {30, 20}, {75, 18}, {75, 36}, {20, 38}});
    painter.end();
    tryOut("a hand", testing::grey(hand));
    for (unsigned seed = 0; seed < 100; ++seed) {
        std::mt19937 random(seed);
        Plane noise(40 + int(random() % 300), 12 + int(random() % 30));
        const unsigned share = 2 + random() % 8;
        for (std::uint8_t& pixel : noise.pixels) {
            pixel = random() % share ? 0 : 255;
        }
        tryOut("noise", noise);
        if (const auto trimmed = trimmedLine(noise, {0, noise.width})) {
            tryOut("trimmed noise", *trimmed);
        }
    }
    EXPECT_TRUE(readings.isEmpty()) << readings.join(u", ").toStdString();
}

} // namespace

} // namespace pelloran
