#include "base/Log.h"

#include "base/OneLine.h"

#include <cstdio>
#include <mutex>
#include <utility>

namespace pelloran {

namespace {

// Nobody reads more of a line; what a server says may have sixteen million.
constexpr qsizetype mostCharacters = 8'000;

std::mutex sinkMutex;

std::function<void(const QString&)>& sink() {
    static std::function<void(const QString&)> current;
    return current;
}

} // namespace

void log(const QString& message) {
    const std::scoped_lock lock(sinkMutex);
    if (sink()) {
        sink()(message);
        return;
    }
    const QByteArray line = logLine(message).toUtf8() + '\n';
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
    std::fflush(stderr);
}

QString logLine(const QString& message) {
    const QString prefix = QStringLiteral("[Pelloran] ");
    if (message.size() <= mostCharacters) {
        return prefix + inOneLine(message);
    }
    // Not through the middle of a character.
    const qsizetype kept = mostCharacters - (message.at(mostCharacters - 1).isHighSurrogate() ? 1 : 0);
    return prefix + inOneLine(message.first(kept)) +
           QStringLiteral("… (%1 characters more)").arg(message.size() - kept);
}

void setLogSink(std::function<void(const QString&)> newSink) {
    const std::scoped_lock lock(sinkMutex);
    sink() = std::move(newSink);
}

} // namespace pelloran
