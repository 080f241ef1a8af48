#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <expected>

// What the game's log.config has to say so that the game writes the logs that are read here. Nothing here touches
// files.
namespace pelloran {

// In 16-bit characters, or no text at all: nothing can be added to it byte by byte.
struct NotPlainText {};

struct MergedLogConfig {
    QByteArray text;
    // In a line each, such as "[Arena] FilePrinting=true (was false)"; empty: `text` is what was given.
    QStringList changes;
};

// `text` with the sections [Arena] and [LoadingScreen] complete. Every byte outside of these stays, and so do comments
// and line ends; an encoding that has ASCII in single bytes is none of our business. Of a section that is there twice
// both are completed: nobody tells which one the game takes. White space around names and values, and "True" for
// "true", are fine; other spellings of names, and comments behind a value, are put right, since the game need not
// forgive them. What was merged once does not change again.
std::expected<MergedLogConfig, NotPlainText> mergeLogConfig(const QByteArray& text);

} // namespace pelloran
