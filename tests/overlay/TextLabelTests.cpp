#include "overlay/OverlayPanel/views/TextLabel.h"

#include "overlay/OverlayPanel/views/FontCache.h"
#include "tests/support/EventCounter.h"
#include "tests/support/ManualAnimationTime.h"

#include <QImage>

#include <gtest/gtest.h>

namespace pelloran {

namespace {

using namespace Qt::StringLiterals;
using testing::EventCounter;
using testing::turnEventLoop;

const QString english = u"Fireball"_s;
const QString chinese = u"火球术"_s;
const QString hebrew = u"כדור אש גדול"_s;
const QString sixty = u"Ragnaros the Firelord of the Molten Core and its Ashen Lands"_s;

class TextLabelTest : public ::testing::Test {
protected:
    TextLabelTest() {
        parent.resize(400, 400);
        label->setTextFont(FontCache::shared().font(14, QFont::Normal));
        label->setColor(Qt::white);
        parent.show();
        turnEventLoop();
    }

    int lines(int width) const {
        EXPECT_EQ(label->heightForWidth(width) % label->lineHeight(), 0);
        return label->heightForWidth(width) / label->lineHeight();
    }

    QImage painted(QSize size) {
        label->resize(size);
        QImage image(size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        label->render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        return image;
    }

    QWidget parent;
    TextLabel* label = new TextLabel(&parent); // owned by parent
};

// Columns between the first and the last that hold ink; none: empty.
QRect inkOf(const QImage& image) {
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) > 60) {
                ink |= QRect(x, y, 1, 1);
            }
        }
    }
    return ink;
}

} // namespace

TEST_F(TextLabelTest, TakesTheLinesItNeeds) {
    label->setText(english);
    EXPECT_EQ(lines(300), 1);
    label->setText(sixty);
    EXPECT_EQ(lines(1000), 1);
    EXPECT_GE(lines(150), 3);
    EXPECT_EQ(lines(label->naturalWidth()), 1);
    EXPECT_EQ(lines(label->naturalWidth() - 1), 2) << "the natural width is no more than is needed";
}

TEST_F(TextLabelTest, StopsAtItsMaximumOfLines) {
    for (const QString& text : {sixty, QString(200, u'W'), QString(u"卡"_s.repeated(80)), hebrew.repeated(9),
                                u"a\nb\nc\nd\ne"_s, u"\n\n\n\n"_s, u"word "_s.repeated(50)}) {
        for (const int maximum : {1, 2, 3}) {
            label->setText(text);
            label->setMaximumLines(maximum);
            for (const int width : {1, 7, 20, 55, 120, 121, 200, 333}) {
                ASSERT_LE(lines(width), maximum) << text.left(12).toStdString() << " in " << width;
                ASSERT_LE(inkOf(painted({width, maximum * label->lineHeight() + 40})).bottom(),
                          maximum * label->lineHeight() + 2)
                    << text.left(12).toStdString() << " in " << width << ": no ink below the last line";
            }
            label->setText(QString());
        }
    }
}

TEST_F(TextLabelTest, SaysByAnEllipsisThatItStopped) {
    label->setMaximumLines(2);
    label->setText(sixty);
    const int width = label->naturalWidth() * 3 / 4;
    const QImage whole = painted({width, 2 * label->lineHeight()});
    const int narrow = label->naturalWidth() / 3;
    const QImage cut = painted({narrow, 2 * label->lineHeight()});
    const QRect ink = inkOf(cut);
    EXPECT_LE(ink.right(), narrow);
    EXPECT_GT(ink.bottom(), label->lineHeight()) << "both lines are used";

    // The last ink of the cut text is low, as dots are; that of a letter is not.
    QRect end;
    const QRect secondLine(0, label->lineHeight(), narrow, label->lineHeight());
    const QRect second = inkOf(cut.copy(secondLine));
    for (int x = second.right() - 3; x <= second.right(); ++x) {
        for (int y = 0; y < secondLine.height(); ++y) {
            if (qAlpha(cut.pixel(x, y + secondLine.y())) > 60) {
                end |= QRect(x, y, 1, 1);
            }
        }
    }
    EXPECT_LE(end.height(), 4);
    EXPECT_GT(end.top(), label->lineHeight() / 2);
    EXPECT_FALSE(inkOf(whole).isEmpty());
}

TEST_F(TextLabelTest, BreaksWordsLongerThanALine) {
    label->setText(QString(40, u'W'));
    const int width = label->naturalWidth() / 4;
    EXPECT_GE(lines(width), 4);
    EXPECT_LE(inkOf(painted({width + 50, label->heightForWidth(width)})).right(), width + 50);
    label->resize(width, 200);
    QImage image(QSize(width + 50, 200), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    label->render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    EXPECT_LE(inkOf(image).right(), width);
}

TEST_F(TextLabelTest, BreaksWhereTheTextSaysSo) {
    const struct {
        const char* why;
        QString text;
        int expected;
    } rows[] = {
        {"a line feed", u"one\ntwo"_s, 2},
        {"as other systems write it", u"one\r\ntwo"_s, 2},
        {"as old systems wrote it", u"one\rtwo"_s, 2},
        {"its own character", u"one\u2028two"_s, 2},
        {"an empty line between", u"one\n\ntwo"_s, 3},
        {"none", u"one two"_s, 1},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        label->setText(row.text);
        EXPECT_EQ(lines(300), row.expected);
        EXPECT_EQ(label->text(), row.text) << "the text stays as given";
    }
    label->setText(u"one\ntwo and more"_s);
    const int both = label->naturalWidth();
    label->setText(u"two and more"_s);
    EXPECT_EQ(label->naturalWidth(), both) << "the widest line counts";
}

TEST_F(TextLabelTest, OfOneLineIsAsWideAsThatLine) {
    label->setMaximumLines(1);
    label->setText(u"one\ntwo\nthree"_s);
    EXPECT_EQ(lines(300), 1);
    EXPECT_EQ(label->sizeHint().height(), label->lineHeight());
}

TEST_F(TextLabelTest, KeepsTextFromRightToLeftInside) {
    label->setText(hebrew);
    EXPECT_EQ(lines(300), 1);
    const QRect line = inkOf(painted({300, label->lineHeight()}));
    EXPECT_NEAR(line.width(), label->naturalWidth(), 4);
    EXPECT_LT(line.left(), 4) << "it begins where its neighbours do";
    EXPECT_GE(lines(label->naturalWidth() / 2), 2);

    label->setMaximumLines(1);
    const int width = label->naturalWidth() / 2;
    QImage cut(QSize(300, label->lineHeight()), QImage::Format_ARGB32_Premultiplied);
    cut.fill(Qt::transparent);
    label->resize(width, label->lineHeight());
    label->render(&cut, QPoint(), QRegion(), QWidget::DrawChildren);
    EXPECT_LE(inkOf(cut).right(), width);
    EXPECT_FALSE(inkOf(cut).isEmpty());
}

TEST_F(TextLabelTest, WithoutTextKeepsALine) {
    label->setText(QString());
    EXPECT_EQ(label->naturalWidth(), 0);
    EXPECT_EQ(label->heightForWidth(300), label->lineHeight());
    EXPECT_EQ(label->heightForWidth(0), label->lineHeight());
    EXPECT_TRUE(inkOf(painted({300, 40})).isEmpty());
}

TEST_F(TextLabelTest, GivesEveryScriptTheSameLineHeight) {
    int height = 0;
    for (const QString& text : {english, chinese, hebrew, u"火球 Fireball"_s, u"1.5%—"_s, u"ÅÇ"_s, u"🔥"_s}) {
        label->setText(text);
        height = height == 0 ? label->heightForWidth(300) : height;
        EXPECT_EQ(label->heightForWidth(300), height) << text.toStdString();
    }
    label->setText(chinese.repeated(10));
    const int chineseLines = lines(100);
    EXPECT_EQ(label->heightForWidth(100), chineseLines * height);
}

TEST_F(TextLabelTest, PaintsEveryScriptInsideItsLine) {
    for (const QString& text : {u"Fireball Qjgy"_s, chinese, hebrew}) {
        SCOPED_TRACE(text.toStdString());
        label->setText(text);
        const QRect ink = inkOf(painted({300, label->lineHeight()}).copy());
        EXPECT_FALSE(ink.isEmpty());
        const QImage taller = painted({300, label->lineHeight() + 20});
        EXPECT_EQ(inkOf(taller), ink) << "nothing was cut off below";
        EXPECT_GT(ink.top(), 0) << "nor above";
    }
}

TEST_F(TextLabelTest, HangsABracketAtTheEdge) {
    label->setTextFont(FontCache::shared().font(24, QFont::Normal));
    label->setText(u"【左】"_s);
    const QRect straight = inkOf(painted({200, label->lineHeight()}));
    label->setHangsPunctuation(true);
    const QRect hung = inkOf(painted({200, label->lineHeight()}));
    EXPECT_GT(straight.left(), 6) << "the bracket's ink is in the right half of its square";
    EXPECT_LT(hung.left(), 3);
}

TEST_F(TextLabelTest, AsksForALayoutOnlyWhenOneIsNeeded) {
    label->setText(english);
    turnEventLoop();
    EventCounter requests(parent, QEvent::LayoutRequest);
    const auto asked = [&] {
        turnEventLoop();
        return requests.take() > 0;
    };

    label->setText(english);
    EXPECT_FALSE(asked()) << "the same text";
    label->setText(QString(english.constData(), english.size()));
    EXPECT_FALSE(asked()) << "an equal text";
    label->setText(chinese);
    EXPECT_TRUE(asked()) << "another text";
    label->setTextFont(FontCache::shared().font(14, QFont::Normal));
    EXPECT_FALSE(asked()) << "the same font";
    label->setTextFont(FontCache::shared().font(15, QFont::Normal));
    EXPECT_TRUE(asked()) << "another font";
    label->setTextFont(FontCache::shared().font(15, QFont::Bold));
    EXPECT_TRUE(asked()) << "another weight";
    label->setColor(Qt::red);
    EXPECT_FALSE(asked()) << "a colour needs no room";
    label->setMaximumLines(0);
    EXPECT_FALSE(asked()) << "the same maximum";
    label->setMaximumLines(2);
    EXPECT_FALSE(asked()) << "who sets a maximum is laying it out";
    label->hide();
    turnEventLoop();
    requests.take();
    label->setText(english);
    EXPECT_FALSE(asked()) << "a hidden label has no place";
    label->show();
    EXPECT_TRUE(asked()) << "until it is shown";
}

TEST_F(TextLabelTest, NamesItselfForThoseWhoListen) {
    label->setText(english);
    EXPECT_EQ(label->accessibleName(), english);
}

} // namespace pelloran
