#include "app/desktop/Appearance.h"

#include "base/Log.h"
#include "overlay/OverlayPanel/views/FontCache.h"
#include "overlay/OverlayPanel/views/PanelColors.h"

#include <QApplication>
#include <QFont>
#include <QFontDatabase>
#include <QRawFont>
#include <QStyle>
#include <QStyleFactory>

#include <algorithm>

namespace pelloran {

namespace {

// The style and colours that Qt chose, for the way back.
struct OwnChoice {
    QString style;
    QPalette palette;
};

const OwnChoice& ownChoice() {
    static const OwnChoice choice{QApplication::style()->name(), QApplication::palette()};
    return choice;
}

bool coversChinese(const QString& family) {
    return QRawFont::fromFont(QFont(family)).supportsCharacter(u'中');
}

} // namespace

QPalette paletteFor(Appearance appearance) {
    const bool dark = appearance == Appearance::dark;
    // The constructor derives every shade that is not set below from these two.
    QPalette palette(dark ? QColor(49, 52, 58) : QColor(239, 240, 241),
                     dark ? QColor(42, 45, 50) : QColor(239, 240, 241));
    palette.setColor(QPalette::Base, dark ? QColor(30, 32, 36) : QColor(Qt::white));
    palette.setColor(QPalette::ToolTipBase, palette.color(QPalette::Window));
    palette.setColor(QPalette::Highlight, dark ? QColor(61, 112, 190) : QColor(48, 110, 205));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    const QColor text = dark ? QColor(236, 236, 236) : QColor(30, 32, 36);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, text);
        palette.setColor(QPalette::Disabled, role, QColor(128, 130, 134));
    }
    return palette;
}

bool followsTheSystem(const QString& style) {
    return style.compare(QStringLiteral("macos"), Qt::CaseInsensitive) == 0;
}

void applyAppearance(std::optional<Appearance> asked) {
    const OwnChoice& own = ownChoice();
    if (followsTheSystem(own.style)) {
        return;
    }
    if (!asked || *asked == appearanceOf(own.palette)) {
        if (QApplication::style()->name() != own.style) {
            QApplication::setStyle(own.style);
        }
        QApplication::setPalette(own.palette);
        return;
    }
    // Of the styles that come with Qt, only this one takes all its colours from the palette.
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(paletteFor(*asked));
}

void writeChineseAsThePanel() {
    if (followsTheSystem(ownChoice().style)) {
        return;
    }
    for (const char* widget : {"QWidget", "QMenu", "QLabel", "QPlainTextEdit", "QPushButton"}) {
        const QFont font = QApplication::font(widget);
        for (const QString& family : font.families()) {
            QFont::insertSubstitutions(family, FontCache::withChinese(font));
        }
    }
}

bool hasChineseFont() {
    const QStringList families = QFontDatabase::families(QFontDatabase::SimplifiedChinese);
    return std::ranges::any_of(families, coversChinese);
}

void remarkOnMissingFonts() {
    if (!hasChineseFont()) {
        log(QStringLiteral("no font on this machine covers Chinese, names will show as boxes; install the package "
                           "fonts-noto-cjk (Noto Sans CJK SC)"));
    }
}

} // namespace pelloran
