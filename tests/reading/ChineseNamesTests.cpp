#include "reading/chinese/ChineseNames.h"

#include "tests/reading/PaintedCharacters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

namespace pelloran {

namespace {

using Kind = ChineseNames::Kind;
using Layout = ChineseNames::Layout;

Lexicon lexiconOf(const QStringList& names) {
    std::vector<KnownName> list;
    for (const QString& name : names) {
        list.push_back({name, {}});
    }
    return {std::move(list), Lexicon::forCards};
}

QString text(const char* each) {
    return QString::fromUtf8(each);
}

// As "石.木", with "." for what is no character.
QString spelled(const ChineseNames& names, const Layout& layout, std::size_t index) {
    std::u32string result;
    const std::size_t count = layout.kinds.size();
    for (std::size_t i = 0; i < count; ++i) {
        result += layout.kinds[i] == Kind::character ? names.character(layout.characters[index * count + i]) : U'.';
    }
    return QString::fromStdU32String(result);
}

// What holds for all of them.
void expectWhole(const ChineseNames& names) {
    for (const Layout& layout : names.layouts()) {
        ASSERT_EQ(layout.widths.size(), layout.kinds.size());
        ASSERT_EQ(layout.characters.size(), layout.names.size() * layout.kinds.size());
        ASSERT_FALSE(layout.names.empty());
        float sum = 0;
        for (std::size_t i = 0; i < layout.widths.size(); ++i) {
            EXPECT_GT(layout.widths[i], 0);
            sum += layout.widths[i];
        }
        EXPECT_FLOAT_EQ(layout.width, sum);
        EXPECT_EQ(layout.plain, std::ranges::all_of(layout.kinds, [](Kind kind) { return kind == Kind::character; }));
        for (const std::uint32_t place : layout.characters) {
            EXPECT_LT(place, std::max<std::size_t>(1, names.costs().size()));
        }
        std::set<std::uint32_t> once(layout.names.begin(), layout.names.end());
        EXPECT_EQ(once.size(), layout.names.size());
        // Each name is in the layout as it is spelled.
        for (std::size_t i = 0; i < layout.names.size(); ++i) {
            const QString shown = spelled(names, layout, i);
            const std::u32string own =
                names.text(layout.names[i]).simplified().remove(QLatin1Char(' ')).toStdU32String();
            const std::u32string laid = shown.toStdU32String();
            ASSERT_EQ(laid.size(), own.size());
            for (std::size_t k = 0; k < own.size(); ++k) {
                EXPECT_TRUE(laid[k] == U'.' || laid[k] == own[k]) << shown.toStdString();
            }
        }
    }
}

TEST(ChineseNamesTest, CellsOfAName) {
    struct Row {
        QString name;
        std::vector<std::vector<float>> widths; // of its layouts, in any order
        QString kinds;                          // c character, m mark, l Latin
        const char* why;
    };

    const Row table[] = {
        {text("石田"), {{1, 1}}, text("cc"), "two characters"},
        {text("石田木火"), {{1, 1, 1, 1}}, text("cccc"), "four"},
        {text("石·木"), {{1, 1, 1}, {1, 0.5F, 1}}, text("cmc"), "a mark may be set narrow"},
        {text("石，木！"), {{1, 1, 1, 0.5F}, {1, 0.5F, 1, 0.5F}}, text("cmcm"), "but at the end only its ink counts"},
        {text("石木！"), {{1, 1, 0.5F}}, text("ccm"), "a mark at the end"},
        {text("“石木"), {{0.5F, 1, 1}}, text("mcc"), "a mark at the beginning"},
        {text("“石木”"), {{0.5F, 1, 1, 0.5F}}, text("mccm"), "at both ends"},
        {text("石-木"), {{1, 1, 1}, {1, 0.5F, 1}}, text("cmc"), "a mark that is no Chinese one"},
        {text("石木4"), {{1, 1, 0.6F}}, text("ccl"), "a digit"},
        {text("H石T木"), {{0.6F, 1, 0.6F, 1}}, text("lclc"), "letters"},
        {text("石木é"), {{1, 1, 0.6F}}, text("ccl"), "a letter with an accent"},
        {text(" 石 木 "), {{1, 1}}, text("cc"), "white space is not printed"},
        {text("石　木"), {{1, 1}}, text("cc"), "nor is that of a whole character"},
        {text("石木火山川人大天中口石木火山川人大天中口"), {std::vector<float>(20, 1)}, QString(20, u'c'), "twenty"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const ChineseNames names(*testing::paintedModel(), lexiconOf({row.name}));
        expectWhole(names);
        EXPECT_TRUE(names.missing().empty());
        std::vector<std::vector<float>> widths;
        for (const Layout& layout : names.layouts()) {
            widths.push_back(layout.widths);
            EXPECT_EQ(layout.names, std::vector<std::uint32_t>{0});
            QString kinds;
            for (const Kind kind : layout.kinds) {
                kinds += kind == Kind::character ? u'c' : kind == Kind::mark ? u'm' : u'l';
            }
            EXPECT_EQ(kinds, row.kinds);
        }
        std::vector<std::vector<float>> expected = row.widths;
        std::ranges::sort(expected);
        std::ranges::sort(widths);
        EXPECT_EQ(widths, expected);
    }
}

TEST(ChineseNamesTest, NamesThatAreNotReadHere) {
    struct Row {
        QString name;
        std::u32string missing;
        const char* why;
    };

    const Row table[] = {
        {text("Amber Wolf"), U"", "no character"},
        {text("石H"), U"", "a single character beside a letter is soon seen in anything"},
        {text("石！"), U"", "so is one beside a mark"},
        {text("石木Amber"), U"", "mostly letters"},
        {text("石木…………"), U"", "mostly marks"},
        {QString(), U"", "nothing"},
        {text("！！"), U"", "marks alone"},
        {text("石木火山川人大天中口石木火山川人大天中口石"), U"", "longer than any name"},
        {text("石龙"), U"龙", "a character that the model does not know"},
        {text("龘石木龙"), U"龘龙", "two of them"},
        {text("石木ひ"), U"", "letters of other scripts"},
        {text("石木한"), U"", "and of another"},
        {text("石𠀀"), U"\U00020000", "a character beyond sixteen bits"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.why);
        const ChineseNames alone(*testing::paintedModel(), lexiconOf({row.name}));
        EXPECT_TRUE(alone.layouts().empty());
        EXPECT_EQ(alone.missing(), [&] {
            std::u32string sorted = row.missing;
            std::ranges::sort(sorted);
            return sorted;
        }());
        EXPECT_EQ(alone.costs().size(), 0U);
        // They leave the others as they are.
        const ChineseNames beside(*testing::paintedModel(), lexiconOf({row.name, text("木火"), row.name}));
        expectWhole(beside);
        ASSERT_EQ(beside.layouts().size(), 1U);
        EXPECT_EQ(beside.layouts()[0].names, std::vector<std::uint32_t>{1});
    }
}

TEST(ChineseNamesTest, MissingCharactersAreListedOnceAndSorted) {
    const ChineseNames names(*testing::paintedModel(),
                             lexiconOf({text("石龙"), text("龙木"), text("丙石乙"), text("木火")}));
    EXPECT_EQ(names.missing(), U"丙乙龙"); // U+4E19, U+4E59, U+9F99
}

TEST(ChineseNamesTest, NamesOfOneLayoutStandTogether) {
    const ChineseNames names(*testing::paintedModel(),
                             lexiconOf({text("石田"), text("石·田"), text("木火"), text("石田"), text("Amber"),
                                        text("石田木"), text("山·川"), text("石4田"), text("人大天")}));
    expectWhole(names);
    std::map<QString, std::vector<std::uint32_t>> byKinds;
    for (const Layout& layout : names.layouts()) {
        QString key;
        for (std::size_t i = 0; i < layout.kinds.size(); ++i) {
            key += QString::number(int(layout.kinds[i])) + QString::number(double(layout.widths[i])) + u' ';
        }
        EXPECT_FALSE(byKinds.contains(key)) << "each layout once";
        byKinds[key] = layout.names;
    }
    // The same name twice is one: it is no rival of its own.
    EXPECT_EQ(byKinds, (std::map<QString, std::vector<std::uint32_t>>{{text("01 01 "), {0, 2}},
                                                                      {text("01 01 01 "), {5, 8}},
                                                                      {text("01 11 01 "), {1, 6}},
                                                                      {text("01 10.5 01 "), {1, 6}},
                                                                      {text("01 20.6 01 "), {7}}}));
    EXPECT_EQ(names.costs().size(), 9U) << "each character once";
}

TEST(ChineseNamesTest, KnowsItsLexicon) {
    const Lexicon one = lexiconOf({text("石田")});
    const Lexicon same = one;
    const Lexicon alike = lexiconOf({text("石田")});
    const ChineseNames names(*testing::paintedModel(), one);
    EXPECT_TRUE(names.isOf(one));
    EXPECT_TRUE(names.isOf(same)) << "a copy";
    EXPECT_FALSE(names.isOf(alike)) << "the names may be the same, that is not told";
    EXPECT_FALSE(names.isOf(Lexicon()));
}

TEST(ChineseNamesTest, NoNames) {
    for (const Lexicon& lexicon : {Lexicon(), lexiconOf({})}) {
        const ChineseNames names(*testing::paintedModel(), lexicon);
        EXPECT_TRUE(names.layouts().empty());
        EXPECT_TRUE(names.missing().empty());
        EXPECT_EQ(names.costs().size(), 0U);
        EXPECT_TRUE(names.isOf(lexicon));
    }
}

TEST(ChineseNamesTest, AHundredThousandNames) {
    std::mt19937 random(4);
    const std::u32string& characters = testing::paintedModel()->characters();
    QStringList list;
    std::set<std::u32string> plainTexts;
    std::set<std::u32string> mixedTexts;
    for (int i = 0; i < 100000; ++i) {
        std::u32string name;
        for (unsigned k = 2 + random() % 9; k > 0; --k) {
            name += characters[random() % characters.size()];
        }
        if (i % 10 == 0) {
            name.insert(1, 1, U'·');
        }
        (i % 10 == 0 ? mixedTexts : plainTexts).insert(name);
        list.append(QString::fromStdU32String(name));
    }
    const ChineseNames names(*testing::paintedModel(), lexiconOf(list));
    std::size_t plain = 0;
    std::size_t mixed = 0;
    for (const Layout& layout : names.layouts()) {
        (layout.plain ? plain : mixed) += layout.names.size();
    }
    EXPECT_EQ(plain, plainTexts.size());
    EXPECT_EQ(mixed, 2 * mixedTexts.size()) << "each in both widths of the mark";
    EXPECT_EQ(names.costs().size(), characters.size());
    for (const Layout& layout : names.layouts()) {
        for (std::size_t i = 0; i < layout.names.size(); i += 997) {
            QString name = list[qsizetype(layout.names[i])];
            EXPECT_EQ(spelled(names, layout, i), name.replace(QChar(u'·'), QChar(u'.')));
        }
    }
}

} // namespace

} // namespace pelloran
