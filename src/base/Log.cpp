#include "base/Log.h"

#include <cstdio>
#include <mutex>
#include <utility>

namespace pelloran {

namespace {

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
    QString line = QStringLiteral("[Pelloran] ") + message;
    return line.replace(u'\n', u' ').replace(u'\r', u' '); // paths and the like come from outside
}

void setLogSink(std::function<void(const QString&)> newSink) {
    const std::scoped_lock lock(sinkMutex);
    sink() = std::move(newSink);
}

} // namespace pelloran
