#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringList>

// What of a text may be kept of somebody else's machine.
namespace pelloran::recording {

// The names that are to be taken out wherever they stand.
struct Owner {
    QStringList homes;    // paths of the home folder
    QStringList accounts; // in any case of letters; those of less than three letters are parts of words everywhere

    // Of who runs the program.
    static Owner current();
};

// The text without battle tags, home folders (also of the other systems, as they stand in a Wine prefix) and the
// account's names.
QString redacted(QString text, const Owner& owner);

// Whether a line of the game's logs speaks of the draft or of the screen that is shown. Others are not kept. True for
// every line that LogWatcher can make anything of.
bool concernsDraft(QByteArrayView line);

} // namespace pelloran::recording
