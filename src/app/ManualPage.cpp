#include "app/ManualPage.h"

#include "app/CommandLine.h"

namespace pelloran {

namespace {

// A hyphen of roff's is typeset; one to be typed is written so.
QString escaped(QString text) {
    return text.replace(u'\\', QStringLiteral("\\e")).replace(u'-', QStringLiteral("\\-"));
}

// A line of text must not look like a request.
QString line(const QString& text) {
    const bool looksLikeRequest = text.startsWith(u'.') || text.startsWith(u'\'');
    return (looksLikeRequest ? QStringLiteral("\\&") : QString()) + escaped(text) + u'\n';
}

QString options(const CommandHelp& command) {
    QString page;
    for (const OptionHelp& option : command.options) {
        page += QStringLiteral(".TP\n.B ") + line(option.name) + line(option.description);
    }
    return page;
}

constexpr const char* description = R"(.SH DESCRIPTION
Pelloran follows an Arena draft of Hearthstone and tells, while you pick, how the three offers have done for others.
It reads the game's own logs to know when a pick is on screen, reads the three names off the game's window, looks them up
in a local file of win rates, and shows the figures in a panel that floats above the game.
It never touches the game: no memory is read, no network traffic, no input is sent.
.PP
Without a command it runs as a desktop program until it is quit from its menu, which is on its icon in the status area and on
a right click of the panel.
Started a second time, it shows the panel of the one that runs.
.PP
The figures that come with it are invented samples, for trying it out.
)";

constexpr const char* rest = R"(.SH EXIT STATUS
0: done. 1: failed. 2: wrong usage.
Commands answer with JSON lines on standard output (a plain path from
.BR logs\-dir ,
text from
.B evaluate
and
.B doctor
unless told otherwise, a whole file from
.BR release\-info );
diagnostics go to standard error.
.SH ENVIRONMENT
.TP
.B DISPLAY
The X server on which the game's window is and the panel is shown.
.TP
.B QT_QPA_PLATFORM
.B xcb
unless it is set: the panel can stay above the game on X11 and XWayland alone.
.TP
.B WINEPREFIX
A folder of Wine's in which the game is looked for, besides the usual ones.
.TP
.BR XDG_DATA_HOME ", " XDG_CONFIG_HOME ", " XDG_RUNTIME_DIR
In place of
.IR ~/.local/share ,
.I ~/.config
and a folder among the temporary files.
.SH FILES
.TP
.I ~/.local/share/Pelloran/config
The data files that a sync has brought, or your own, used in place of those that come with the program.
.TP
.I ~/.config/Pelloran/Pelloran.ini
Your choices.
.TP
.I /usr/share/pelloran
What comes with the program.
.SH EXAMPLES
Following a draft whose logs lie in another place than the usual ones, in Chinese:
.PP
.EX
    pelloran \-\-logs\-dir ~/Games/Hearthstone/Logs \-\-language zh
.EE
.PP
What is offered on a picture of the game's window:
.PP
.EX
    pelloran recognize \-\-phase cardPick picture.png
.EE
.SH SEE ALSO
.BR pelloran\-stage (1),
a simulated game to try it with.
)";

} // namespace

QString manualPage() {
    const std::vector<CommandHelp> all = commandHelp();
    const CommandHelp& program = all.front();
    QString page = QStringLiteral(".TH PELLORAN 1 \"\" \"Pelloran " PELLORAN_VERSION "\" \"User Commands\"\n"
                                  ".SH NAME\npelloran \\- figures of what an Arena draft of Hearthstone offers\n"
                                  ".SH SYNOPSIS\n.nf\n");
    for (const CommandHelp& command : all) {
        page += line(command.usage);
    }
    page += QStringLiteral(".fi\n") + QString::fromUtf8(description);
    page += QStringLiteral(".SH OPTIONS\n") + line(program.description) + options(program);
    page += QStringLiteral(".SH COMMANDS\nNone of them needs a display.\n");
    for (auto command = all.begin() + 1; command != all.end(); ++command) {
        page += QStringLiteral(".SS ") + line(command->usage) + line(command->description) + options(*command);
    }
    return page + QString::fromUtf8(rest);
}

} // namespace pelloran
