#include "app/MessageBoxAlerts.h"

#include "platform/PanelWindow.h"
#include "support/Printing.h"

#include <QApplication>
#include <QIcon>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
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
    .informativeText = QStringLiteral("You have 1 & latest is 2."),
    .buttons = {QStringLiteral("Update Now"), QStringLiteral("Skip & Forget"), QStringLiteral("Ignore")},
};

// Shows the alert and lets the user do something with it.
int answer(const Alerts::Alert& alert, const std::function<void(QMessageBox&)>& user) {
    bool seen = false;
    QTimer::singleShot(0, [&] {
        // After the alert's own first turn.
        QTimer::singleShot(0, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
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

QList<QPushButton*> buttonsLeftToRight(const QMessageBox& box) {
    QList<QPushButton*> buttons = box.findChildren<QPushButton*>();
    std::ranges::sort(buttons, {}, [](const QPushButton* button) { return button->x(); });
    return buttons;
}

QLabel* labelOf(const QMessageBox& box, const char* name) {
    return box.findChild<QLabel*>(QString::fromLatin1(name));
}

TEST(MessageBoxAlerts, ShowWhatTheyAreGiven) {
    answer(threeChoices, [](QMessageBox& box) {
        EXPECT_EQ(box.icon(), QMessageBox::Warning);
        EXPECT_EQ(box.text(), threeChoices.messageText);
        EXPECT_EQ(box.informativeText(), threeChoices.informativeText);
        EXPECT_EQ(box.textFormat(), Qt::PlainText) << "what a server sends is no markup";
        EXPECT_TRUE(labelOf(box, "qt_msgbox_label")->font().bold()) << "it is a heading";
        EXPECT_FALSE(labelOf(box, "qt_msgbox_informativelabel")->font().bold());
        EXPECT_TRUE(box.windowFlags().testFlag(Qt::WindowStaysOnTopHint)) << "the panel must not hide it";
        EXPECT_EQ(HighWindow::kept, box.windowHandle()) << "nor a game that comes up later";
        EXPECT_FALSE(box.windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus)) << "it takes the keyboard";
        const auto buttons = buttonsLeftToRight(box);
        ASSERT_EQ(buttons.size(), 3);
        EXPECT_EQ(buttons[0]->text(), QStringLiteral("Update Now"));
        EXPECT_EQ(buttons[1]->text(), QStringLiteral("Skip && Forget")) << "no letter is underlined";
        EXPECT_EQ(buttons[2]->text(), QStringLiteral("Ignore"));
        EXPECT_EQ(box.defaultButton(), buttons[0]);
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
    QPixmap symbol(48, 48);
    symbol.fill(Qt::magenta);
    QGuiApplication::setWindowIcon(QIcon(symbol));
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        answer({.style = c.style, .messageText = QStringLiteral("News"), .informativeText = {}, .buttons = {}},
               [&c](QMessageBox& box) {
                   EXPECT_EQ(box.iconPixmap().toImage().pixelColor(24, 24) == QColor(Qt::magenta), c.own);
                   box.close();
               });
    }
    QGuiApplication::setWindowIcon({});
}

TEST(MessageBoxAlerts, BreakLongLinesOnly) {
    struct Case {
        const char* why;
        QString text;
        int breaks;
    };

    const Case cases[] = {
        {"one short line", QStringLiteral("You have 1.2.3; the latest is 1.3.0."), 0},
        {"its own line breaks stay", QStringLiteral("You have 1.2.3.\nDownload 1.3.0 now?"), 0},
        {"a long line", QStringLiteral("far too long ").repeated(10).trimmed(), 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        answer({.style = Alerts::Style::informational, .messageText = {}, .informativeText = c.text, .buttons = {}},
               [&c](QMessageBox& box) {
                   const QLabel* label = labelOf(box, "qt_msgbox_informativelabel");
                   constexpr int anyWidth = 10'000;
                   const int added = label->heightForWidth(label->width()) - label->heightForWidth(anyWidth);
                   EXPECT_EQ(added / label->fontMetrics().lineSpacing(), c.breaks);
                   EXPECT_LT(box.width(), 520);
                   box.close();
               });
    }
}

TEST(MessageBoxAlerts, TellTheButtonPressed) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(answer(threeChoices, [i](QMessageBox& box) { buttonsLeftToRight(box)[i]->click(); }), i);
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
        EXPECT_EQ(answer(threeChoices, [&c](QMessageBox& box) { QTest::keyClick(&box, c.key); }), c.pressed);
    }
}

TEST(MessageBoxAlerts, CountClosingAsTheLastButton) {
    EXPECT_EQ(answer(threeChoices, [](QMessageBox& box) { box.close(); }), 2);
}

TEST(MessageBoxAlerts, EndWithTheProgramThatTheyInterrupt) {
    int pressed = -1;
    QTimer::singleShot(0, [&pressed] {
        pressed = answer(threeChoices, [](QMessageBox&) { QCoreApplication::exit(0); });
        QCoreApplication::exit(1);
    });
    EXPECT_EQ(QCoreApplication::exec(), 1) << "whoever asked may still say how it ends";
    EXPECT_EQ(pressed, 2) << "as if closed";
}

TEST(MessageBoxAlerts, HaveAStyleEachAndOneButtonOfTheirOwn) {
    struct Case {
        Alerts::Style style;
        QMessageBox::Icon icon;
    };

    for (const Case& c :
         {Case{Alerts::Style::informational, QMessageBox::Information},
          Case{Alerts::Style::warning, QMessageBox::Warning}, Case{Alerts::Style::critical, QMessageBox::Critical}}) {
        const Alerts::Alert news{c.style, QStringLiteral("News"), QStringLiteral("Nothing to choose."), {}};
        const int pressed = answer(news, [&c](QMessageBox& box) {
            EXPECT_EQ(box.icon(), c.icon);
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
