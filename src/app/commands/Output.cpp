#include "app/commands/Output.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace pelloran {

void print(const QByteArray& text) {
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
    std::fflush(stdout);
}

void printLines(const QStringList& lines) {
    for (const QString& line : lines) {
        print(line.toUtf8() + '\n');
    }
}

std::optional<int> terminalColumns() {
    if (isatty(STDOUT_FILENO) == 0) {
        return std::nullopt;
    }
    constexpr int usual = 80;
    constexpr int least = 40;
    winsize size{};
    const bool isKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? std::max<int>(size.ws_col, least) : usual;
}

} // namespace pelloran
