#include "app/desktop/MessageBoxAlerts.h"

#include "localisation/L10n.h"
#include "platform/PanelWindow.h"

#include <QAccessible>
#include <QDialog>
#include <QGridLayout>
#include <QGuiApplication>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QTextDocument>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <optional>
#include <utility>

namespace pelloran {

namespace {

// Lines of about this many letters are read with ease.
constexpr int lettersOfALine = 70;

// A text of more letters fits on no screen, or is of a kind that nobody reads.
constexpr qsizetype mostLettersOnAScreen = 10'000;

// Nobody writes longer paragraphs, and the time to lay one out grows with the square of its longest word: one of a
// million letters would stop the program for a minute and a half.
constexpr int mostLettersOfAParagraph = 5'000;

constexpr double marginWithinAFrame = 4;

// Some desktops' styles leave the longest title hardly any room.
constexpr int roomInAButton = 16;

// How much of the screen an alert may take, so that it is seen to be one.
constexpr double shareOfTheScreen = 0.8;

QStyle::StandardPixmap iconFor(Alerts::Style style) {
    switch (style) {
    case Alerts::Style::informational:
        return QStyle::SP_MessageBoxInformation;
    case Alerts::Style::warning:
        return QStyle::SP_MessageBoxWarning;
    case Alerts::Style::critical:
        return QStyle::SP_MessageBoxCritical;
    }
    Q_UNREACHABLE();
}

QString withParagraphsThatCanBeLaidOut(const QString& text) {
    QString broken;
    broken.reserve(text.size());
    int letters = 0; // since the last line break
    for (const QChar letter : text) {
        if (letter == u'\n') {
            letters = 0;
        } else if (++letters > mostLettersOfAParagraph && !letter.isLowSurrogate()) {
            broken += u'\n';
            letters = 1;
        }
        broken += letter;
    }
    return broken;
}

// Text as it stands: what comes from servers and files must not be taken for markup, as Qt's labels and message boxes
// do with what looks like it. As high as its text, or lower with a scroll bar.
class PlainTextView final : public QPlainTextEdit {
public:
    PlainTextView(const QString& text, QWidget* parent)
        : QPlainTextEdit(withParagraphsThatCanBeLaidOut(text), parent) {
        setReadOnly(true);
        setUndoRedoEnabled(false);
        setTabChangesFocus(true);
        setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        document()->setDocumentMargin(0);
    }

    void fitInto(QSize most) {
        most.setWidth(std::min(most.width(), fontMetrics().averageCharWidth() * lettersOfALine));
        const auto needed = sizeOfText(most.width());
        if (needed && needed->height() <= most.height()) {
            setFixedSize(*needed);
            setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
            setFrameShape(NoFrame);
            viewport()->setAutoFillBackground(false); // like a label
            setFocusPolicy(Qt::ClickFocus);
        } else {
            setFixedSize(most);
            setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
            document()->setDocumentMargin(marginWithinAFrame);
        }
    }

private:
    // Absent for a text that is too long to ask. A view that has not been shown has not laid out its own document.
    std::optional<QSize> sizeOfText(int width) const {
        const QString text = toPlainText();
        if (text.size() > mostLettersOnAScreen) {
            return std::nullopt;
        }
        QTextDocument laidOut;
        laidOut.setDefaultFont(font());
        laidOut.setDocumentMargin(0);
        laidOut.setDefaultTextOption(document()->defaultTextOption());
        laidOut.setPlainText(text);
        laidOut.setTextWidth(width);
        return QSizeF(laidOut.idealWidth(), laidOut.size().height()).toSize() + QSize(1, 1);
    }
};

// Unlike Qt's message box it shows plain text only, and is never higher than the screen.
class AlertBox final : public QDialog {
public:
    AlertBox(const Alerts::Alert& alert, Qt::WindowFlags flags)
        : QDialog(nullptr,
                  Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint | flags)
        , informativeText(new PlainTextView(alert.informativeText, this)) {
        setWindowTitle(QGuiApplication::applicationDisplayName());
        setAccessibleName(alert.messageText);

        auto* const icon = new QLabel(this);
        const int side = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
        icon->setPixmap(symbolFor(alert.style).pixmap(QSize(side, side), devicePixelRatio()));
        icon->setObjectName(QStringLiteral("icon"));

        auto* const messageText = new QLabel(this);
        messageText->setObjectName(QStringLiteral("messageText"));
        messageText->setTextFormat(Qt::PlainText);
        messageText->setText(alert.messageText);
        QFont bold = messageText->font();
        bold.setBold(true);
        messageText->setFont(bold);

        // Not a box of buttons, which would have them in the desktop's own order.
        auto* const row = new QHBoxLayout;
        row->addStretch();
        const QStringList titles = alert.buttons.isEmpty() ? QStringList{L10n::tr(u"update.btn.ok")} : alert.buttons;
        for (int index = 0; index < titles.size(); ++index) {
            QString title = titles[index];
            auto* const button = new QPushButton(title.replace(u'&', QStringLiteral("&&")), this);
            connect(button, &QPushButton::clicked, this, [this, index] {
                pressed = index;
                accept();
            });
            button->setMinimumWidth(button->sizeHint().width() + roomInAButton);
            row->addWidget(button);
            if (index == 0) {
                button->setDefault(true);
                button->setFocus();
            }
        }
        pressed = static_cast<int>(titles.size()) - 1;

        auto* const layout = new QGridLayout(this);
        layout->addWidget(icon, 0, 0, 2, 1, Qt::AlignTop);
        layout->addWidget(messageText, 0, 1);
        layout->addWidget(informativeText, 1, 1, Qt::AlignLeft);
        layout->addLayout(row, 2, 0, 1, 2);
        layout->setSizeConstraint(QLayout::SetFixedSize);
        // The symbol stands apart, however wide the buttons are.
        const QMargins around = layout->contentsMargins();
        const int gap = layout->verticalSpacing();
        layout->setHorizontalSpacing(around.left());
        layout->setColumnStretch(1, 1);
        row->setSpacing(gap); // inherited only where both of the layout's own are the same
        row->setContentsMargins(0, around.left(), 0, 0);

        informativeText->setVisible(!alert.informativeText.isEmpty());
        informativeText->setFixedHeight(0);
        const QSize rest(around.left() + side + layout->horizontalSpacing() + around.right(),
                         layout->totalSizeHint().height());
        informativeText->fitInto(screen()->availableSize() * shareOfTheScreen - rest);
    }

    // Of the button pressed; the last while none is.
    int index() const { return pressed; }

protected:
    // A window that no window manager knows has no frame, and may lie on one of the same colour.
    void paintEvent(QPaintEvent* event) override {
        QDialog::paintEvent(event);
        if (windowFlags().testFlag(Qt::X11BypassWindowManagerHint)) {
            QPainter painter(this);
            painter.setPen(palette().color(QPalette::Disabled, QPalette::WindowText));
            painter.drawRect(rect().adjusted(0, 0, -1, -1));
        }
    }

    // Of its window. Who clicks on it wants its keyboard back from whatever took it meanwhile, which a window that no
    // window manager knows is not given by one, nor by Qt.
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::MouseButtonPress && !isActiveWindow()) {
            activateWindow();
        }
        return QDialog::eventFilter(watched, event);
    }

    // The buttons have the keyboard, and no use for these.
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_PageUp || event->key() == Qt::Key_PageDown) {
            QCoreApplication::sendEvent(informativeText, event);
        } else {
            QDialog::keyPressEvent(event);
        }
    }

    void showEvent(QShowEvent* event) override {
        QDialog::showEvent(event);
        QAccessibleEvent alert(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&alert);
    }

private:
    // News carry the program's own symbol; what is wrong, the one that this desktop has for it.
    QIcon symbolFor(Alerts::Style kind) const {
        const QIcon own = QGuiApplication::windowIcon();
        const bool isNews = kind == Alerts::Style::informational;
        return isNews && !own.isNull() ? own : style()->standardIcon(iconFor(kind), nullptr, this);
    }

    PlainTextView* informativeText;
    int pressed = 0;
};

} // namespace

MessageBoxAlerts::MessageBoxAlerts(std::function<std::unique_ptr<PanelWindow>()> above,
                                   std::function<void()> activateProgram)
    : makeWindow(std::move(above))
    , activate(std::move(activateProgram)) {}

int MessageBoxAlerts::runModal(const Alert& alert) {
    auto above = makeWindow();
    // As high as the panel, but unlike it with the keyboard.
    AlertBox box(alert, above->windowFlags() & (Qt::WindowStaysOnTopHint | Qt::X11BypassWindowManagerHint));
    const auto window = std::move(above); // goes before the box
    box.winId();                          // makes it known to the window server
    box.windowHandle()->installEventFilter(&box);
    window->attach(*box.windowHandle());
    // A window that no window manager knows is neither placed nor given the keyboard by one.
    QTimer::singleShot(0, &box, [&box, &window] {
        box.move(box.screen()->availableGeometry().center() - box.rect().center());
        window->raise();
        box.activateWindow();
    });
    if (activate) {
        activate();
    }
    box.exec();
    return box.index();
}

} // namespace pelloran
