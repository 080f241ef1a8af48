#include "base/OneLine.h"

#include "tests/support/Printing.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

TEST(OneLine, HasNothingThatATerminalObeys) {
    struct Case {
        const char* why;
        QString text;
        QString expected;
    };

    const Case cases[] = {
        {"what is shown stays", u"炉石 100% é 😀"_s, u"炉石 100% é 😀"_s},
        {"line breaks", u"a\nb\r\nc"_s, u"a b  c"_s},
        {"those that only Unicode has", u"a\u2028b\u2029c\u0085d"_s, u"a b c d"_s},
        {"a tab, which would hide how long a text is", u"a\tb"_s, u"a b"_s},
        {"red letters", u"\x1b[31mred\x1b[0m"_s, u" [31mred [0m"_s},
        {"the terminal's title, and the bell behind it", u"\x1b]0;title\x07"_s, u" ]0;title "_s},
        {"an escape sequence without an escape", u"\u009b31mred"_s, u" 31mred"_s},
        {"what rubs out the character before", u"a\bb\x7f"_s, u"a b "_s},
        {"the end of a C string", u"a\0b"_s, u"a b"_s},
        {"a name that reads backwards", u"\u202Egpj.exe"_s, u" gpj.exe"_s},
        {"marks of every direction", u"\u202A\u202B\u202C\u202D\u2066\u2067\u2068\u2069"_s, u"        "_s},
        {"joiners hold an emoji together and move nothing", u"👩\u200D💻"_s, u"👩\u200D💻"_s},
        {"right to left without being told is a language", u"שלום"_s, u"שלום"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(inOneLine(c.text), c.expected);
    }
}

} // namespace

} // namespace pelloran
