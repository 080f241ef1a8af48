#include "app/desktop/MessageBoxAlerts.h"

#include "platform/PanelWindow.h"
#include "tests/support/Printing.h"

#include <QApplication>
#include <QDialog>
#include <QIcon>
#include <QLabel>
#include <QPixmap>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QStyle>
#include <QTest>
#include <QTextBlock>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>

namespace pelloran {
namespace {

// As high as the panel, and told when it is to be kept there.
class HighWindow final : public PanelWindow {
public:
    Qt::WindowFlags windowFlags() const override {
        return Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus;
    }

    void attach(QWindow& attached) override { kept = &attached; }

    void raise() override {}

    bool isComposited() const override { return true; }

    void blurBehind(double) override {}

    static inline QWindow* kept = nullptr;
};

const Alerts::Alert threeChoices{
    .style = Alerts::Style::warning,
    .messageText = QStringLiteral("Update <b>Available</b>"),
    .informativeText = QStringLiteral("You have 1 &amp; latest is <b>2</b>.\n\n<img src=\"file:///a.png\"> &lt;"),
    .buttons = {QStringLiteral("Update Now"), QStringLiteral("Skip & Forget"), QStringLiteral("Ignore")},
};

// Shows the alert and lets the user do something with it.
int answer(const Alerts::Alert& alert, const std::function<void(QDialog&)>& user) {
    bool seen = false;
    QTimer::singleShot(0, [&] {
        // After the alert's own first turn.
        QTimer::singleShot(0, [&] {
            auto* box = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(box, nullptr);
            seen = true;
            user(*box);
        });
    });
    MessageBoxAlerts alerts([] { return std::make_unique<HighWindow>(); });
    const int pressed = alerts.runModal(alert);
    EXPECT_TRUE(seen);
    return pressed;
}

QList<QPushButton*> buttonsLeftToRight(const QDialog& box) {
    QList<QPushButton*> buttons = box.findChildren<QPushButton*>();
    std::ranges::sort(buttons, {}, [](const QPushButton* button) { return button->x(); });
    return buttons;
}

QLabel& label(const QDialog& box, const char* name) {
    return *box.findChild<QLabel*>(QString::fromLatin1(name));
}

QPlainTextEdit& informativeText(const QDialog& box) {
    return *box.findChild<QPlainTextEdit*>();
}

TEST(MessageBoxAlerts, ShowWhatTheyAreGiven) {
    answer(threeChoices, [](QDialog& box) {
        EXPECT_EQ(label(box, "messageText").text(), threeChoices.messageText);
        EXPECT_EQ(label(box, "messageText").textFormat(), Qt::PlainText);
        EXPECT_EQ(informativeText(box).toPlainText(), threeChoices.informativeText)
            << "what a server sends is no markup";
        EXPECT_TRUE(informativeText(box).isReadOnly());
        EXPECT_TRUE(box.windowFlags().testFlag(Qt::WindowStaysOnTopHint)) << "the panel must not hide it";
        EXPECT_EQ(HighWindow::kept, box.windowHandle()) << "nor a game that comes up later";
        EXPECT_FALSE(box.windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus)) << "it takes the keyboard";
        const auto buttons = buttonsLeftToRight(box);
        ASSERT_EQ(buttons.size(), 3);
        EXPECT_EQ(buttons[0]->text(), QStringLiteral("Update Now"));
        EXPECT_EQ(buttons[1]->text(), QStringLiteral("Skip && Forget")) << "no letter is underlined";
        EXPECT_EQ(buttons[2]->text(), QStringLiteral("Ignore"));
        EXPECT_GE(buttons[1]->x() - buttons[0]->geometry().right(), 4) << "they stand apart";
        EXPECT_GE(label(box, "messageText").x() - label(box, "icon").geometry().right(), 9);
        EXPECT_TRUE(buttons[0]->isDefault());
        EXPECT_TRUE(buttons[0]->hasFocus());
        box.close();
    });
}

TEST(MessageBoxAlerts, CarryTheProgramsSymbolWhereNothingIsWrong) {
    struct Case {
        const char* why;
        Alerts::Style style;
        bool own;
    };

    const Case cases[] = {
        {"news", Alerts::Style::informational, true},
        {"a warning looks like one", Alerts::Style::warning, false},
        {"so does what is worse", Alerts::Style::critical, false},
    };
    QPixmap symbol(64, 64);
    symbol.fill(Qt::magenta);
    QGuiApplication::setWindowIcon(QIcon(symbol));
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        answer({.style = c.style, .messageText = QStringLiteral("News"), .informativeText = {}, .buttons = {}},
               [&c](QDialog& box) {
                   const QImage shown = label(box, "icon").pixmap().toImage();
                   EXPECT_EQ(shown.pixelColor(shown.rect().center()) == QColor(Qt::magenta), c.own);
                   box.close();
               });
    }
    QGuiApplication::setWindowIcon({});
}

TEST(MessageBoxAlerts, StayOnTheScreenHoweverLongTheirText) {
    struct Case {
        const char* why;
        QString text;
        bool scrolls;
    };

    constexpr qsizetype mebibyte = 1'048'576; // as long as a release's description may be
    const QString offer = QStringLiteral("You have 1.0; latest is 1.1.\nDownload the update now?");
    const Case cases[] = {
        {"nothing", {}, false},
        {"a line", QStringLiteral("No download URL in latest.json"), false},
        {"the usual", offer + QStringLiteral("\n\n- A new card set\n- Fewer slips"), false},
        {"a sentence wider than a line", offer + u' ' + offer + u' ' + offer + u' ' + offer, false},
        {"a word wider than a line", QString(300, u'x'), false},
        {"wide letters", QString(300, u'说'), false},
        {"letters that take two places", QStringLiteral("🂡").repeated(6'001), true},
        {"a page", QStringLiteral("- another line\n").repeated(100), true},
        {"many pages", QStringLiteral("- another line\n").repeated(70'000), true},
        {"one long paragraph", QStringLiteral("another word ").repeated(80'000), true},
        {"one long word", QString(mebibyte, u'x'), true},
        {"a long paragraph of wide letters", QString(340'000, u'说'), true},
        {"nothing but line breaks", QString(100'000, u'\n'), true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const bool longParagraph = c.text.size() > 5'000 && !c.text.contains(u'\n');
        Alerts::Alert alert = threeChoices;
        alert.informativeText = c.text;
        const int pressed = answer(alert, [&](QDialog& box) {
            const QRect screen = box.screen()->availableGeometry();
            EXPECT_TRUE(screen.contains(box.frameGeometry()));
            const auto buttons = buttonsLeftToRight(box);
            for (const QPushButton* button : buttons) {
                EXPECT_TRUE(box.rect().contains(button->geometry()));
                EXPECT_GE(button->width(), button->sizeHint().width());
            }
            QPlainTextEdit& text = informativeText(box);
            EXPECT_TRUE(box.rect().contains(text.geometry()));
            EXPECT_EQ(text.toPlainText().remove(u'\n'), QString(c.text).remove(u'\n')) << "all of it is there";
            EXPECT_EQ(text.toPlainText() == c.text, !longParagraph) << "and as it stands where it can be laid out";
            for (QTextBlock block = text.document()->firstBlock(); block.isValid(); block = block.next()) {
                ASSERT_LE(block.length(), 5'001) << "the time to lay out a paragraph grows with its square";
            }
            EXPECT_EQ(text.isVisible(), !c.text.isEmpty());
            EXPECT_EQ(text.verticalScrollBar()->maximum() > 0, c.scrolls);
            text.moveCursor(QTextCursor::End);
            EXPECT_TRUE(text.viewport()->rect().contains(text.cursorRect().center())) << "its end can be reached";
            EXPECT_EQ(text.verticalScrollBar()->value() > 0, c.scrolls);
            buttons[1]->click();
        });
        EXPECT_EQ(pressed, 1);
    }
}

TEST(MessageBoxAlerts, ScrollByTheKeyboard) {
    Alerts::Alert alert = threeChoices;
    alert.informativeText = QStringLiteral("- another line\n").repeated(1000);
    const int pressed = answer(alert, [](QDialog& box) {
        const QScrollBar& bar = *informativeText(box).verticalScrollBar();
        ASSERT_TRUE(buttonsLeftToRight(box)[0]->hasFocus());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_PageDown);
        EXPECT_GT(bar.value(), 0);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_PageUp);
        EXPECT_EQ(bar.value(), 0);

        informativeText(box).setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
        EXPECT_EQ(bar.value(), 1);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        EXPECT_FALSE(informativeText(box).hasFocus()) << "the buttons can be reached again";
        informativeText(box).setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    });
    EXPECT_EQ(pressed, 0) << "the default is the default from everywhere";
}

TEST(MessageBoxAlerts, TakeTheKeyboardBackWhenClickedOn) {
    answer(threeChoices, [](QDialog& box) {
        EXPECT_TRUE(QTest::qWaitFor([&] { return box.isActiveWindow(); }));
        QWidget other;
        other.setGeometry(600, 600, 100, 100);
        other.show();
        other.activateWindow();
        EXPECT_TRUE(QTest::qWaitFor([&] { return !box.isActiveWindow(); })) << "nothing has taken it";
        const QPoint onTheText = label(box, "messageText").geometry().center();
        QTest::mouseClick(box.windowHandle(), Qt::LeftButton, {}, onTheText);
        EXPECT_TRUE(QTest::qWaitFor([&] { return box.isActiveWindow(); })) << "where nobody manages windows, too";
        box.close();
    });
}

TEST(MessageBoxAlerts, MayLieOnTopOfOneAnother) {
    const int lower = answer(threeChoices, [](QDialog& first) {
        const int upper = answer(threeChoices, [&first](QDialog& second) {
            EXPECT_NE(&second, &first);
            buttonsLeftToRight(second)[1]->click();
        });
        EXPECT_EQ(upper, 1);
        EXPECT_EQ(QApplication::activeModalWidget(), &first);
        EXPECT_TRUE(first.isVisible()) << "it still waits for its own answer";
        buttonsLeftToRight(first)[0]->click();
    });
    EXPECT_EQ(lower, 0);
}

TEST(MessageBoxAlerts, BringTheProgramForwardBeforeTheyWait) {
    QStringList steps;
    MessageBoxAlerts alerts([] { return std::make_unique<HighWindow>(); },
                            [&] { steps << QStringLiteral("activated"); });
    QTimer::singleShot(0, [&] {
        QTimer::singleShot(0, [&] {
            steps << QStringLiteral("waits");
            QApplication::activeModalWidget()->close();
        });
    });
    alerts.runModal(threeChoices);
    EXPECT_EQ(steps, (QStringList{QStringLiteral("activated"), QStringLiteral("waits")}));
}

TEST(MessageBoxAlerts, TellTheButtonPressed) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(answer(threeChoices, [i](QDialog& box) { buttonsLeftToRight(box)[i]->click(); }), i);
    }
}

TEST(MessageBoxAlerts, TakeTheKeyboardsAnswers) {
    struct Case {
        const char* why;
        Qt::Key key;
        int pressed;
    };

    const Case cases[] = {
        {"the first is the default", Qt::Key_Return, 0},
        {"turning it away is the last", Qt::Key_Escape, 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(answer(threeChoices, [&c](QDialog& box) { QTest::keyClick(&box, c.key); }), c.pressed);
    }
}

TEST(MessageBoxAlerts, CountClosingAsTheLastButton) {
    EXPECT_EQ(answer(threeChoices, [](QDialog& box) { box.close(); }), 2);
}

TEST(MessageBoxAlerts, EndWithTheProgramThatTheyInterrupt) {
    int pressed = -1;
    QTimer::singleShot(0, [&pressed] {
        pressed = answer(threeChoices, [](QDialog&) { QCoreApplication::exit(0); });
        QCoreApplication::exit(1);
    });
    EXPECT_EQ(QCoreApplication::exec(), 1) << "whoever asked may still say how it ends";
    EXPECT_EQ(pressed, 2) << "as if closed";
}

TEST(MessageBoxAlerts, EndTogetherWithTheProgram) {
    int lower = -1;
    int upper = -1;
    QTimer::singleShot(0, [&] {
        lower = answer(threeChoices, [&upper](QDialog&) {
            upper = answer(threeChoices, [](QDialog&) { QCoreApplication::exit(0); });
        });
    });
    EXPECT_EQ(QCoreApplication::exec(), 0);
    EXPECT_EQ(upper, 2);
    EXPECT_EQ(lower, 2);
}

TEST(MessageBoxAlerts, DoNotHoldUpAProgramThatIsEndingAlready) {
    int pressed = -1;
    QTimer::singleShot(0, [&pressed] {
        QCoreApplication::exit(0);
        MessageBoxAlerts alerts([] { return std::make_unique<HighWindow>(); });
        pressed = alerts.runModal(threeChoices);
    });
    EXPECT_EQ(QCoreApplication::exec(), 0);
    EXPECT_EQ(pressed, 2);
}

TEST(MessageBoxAlerts, HaveAStyleEachAndOneButtonOfTheirOwn) {
    struct Case {
        Alerts::Style style;
        QStyle::StandardPixmap icon;
    };

    for (const Case& c : {Case{Alerts::Style::informational, QStyle::SP_MessageBoxInformation},
                          Case{Alerts::Style::warning, QStyle::SP_MessageBoxWarning},
                          Case{Alerts::Style::critical, QStyle::SP_MessageBoxCritical}}) {
        const Alerts::Alert news{c.style, QStringLiteral("News"), QStringLiteral("Nothing to choose."), {}};
        const int pressed = answer(news, [&c](QDialog& box) {
            const QPixmap shown = label(box, "icon").pixmap();
            ASSERT_FALSE(shown.isNull());
            const QIcon expected = box.style()->standardIcon(c.icon, nullptr, &box);
            EXPECT_EQ(shown.toImage(), expected.pixmap(shown.deviceIndependentSize().toSize()).toImage());
            const auto buttons = buttonsLeftToRight(box);
            ASSERT_EQ(buttons.size(), 1);
            EXPECT_EQ(buttons[0]->text(), QStringLiteral("OK"));
            buttons[0]->click();
        });
        EXPECT_EQ(pressed, 0);
    }
}

} // namespace
} // namespace pelloran
