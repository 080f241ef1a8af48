#include "app/commands/Output.h"

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

} // namespace pelloran
