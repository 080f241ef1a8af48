#pragma once

#include <QString>

#include <expected>

// What has to be settled before a QApplication exists.
namespace pelloran::GuiSession {

// Chooses how Qt talks to the desktop, and finds out whether it can: Qt itself would end the program, or wait. Fails
// with a sentence for the user. Once, on the main thread, before any other starts.
std::expected<void, QString> prepare();

// What tells this display from others of the same user; empty where a user has only one.
QString display();

} // namespace pelloran::GuiSession
