#pragma once

#include "platform/SystemSettings.h"

#include <QPalette>
#include <QString>

#include <optional>

namespace pelloran {

// The colours of menus and alerts on a light or a dark desktop.
QPalette paletteFor(Appearance appearance);

// Whether this style of Qt's takes its looks from the system by itself, and goes on doing so while the program runs.
bool followsTheSystem(const QString& style);

// Brings menus and alerts into the look that the desktop asks for, where Qt has not done so by itself: not every
// desktop has a theme that Qt knows. Absent: Qt's own choice. Needs a QApplication.
void applyAppearance(std::optional<Appearance> asked);

// Has menus and alerts write Chinese as the panel does, in whatever font of the desktop's own they are. Where that has
// no Chinese and the desktop's language is another, Qt would take any font that has. Needs a QApplication.
void writeChineseAsThePanel();

// Whether any font on this machine covers Chinese. Needs a QGuiApplication.
bool hasChineseFont();

// Tells in the log what to install when no font on this machine covers Chinese. Needs a QGuiApplication.
void remarkOnMissingFonts();

} // namespace pelloran
