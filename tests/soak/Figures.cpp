#include "tests/soak/Figures.h"

#include <QDir>
#include <QFile>

#include <malloc.h>
#include <unistd.h>

#include <ctime>

namespace pelloran::soak {

namespace {

constexpr const char* head =
    "tick,seconds,resident_kb,anonymous_kb,in_use_kb,descriptors,threads,tick_microseconds,yardstick_microseconds\n";

std::optional<QByteArray> contentOf(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    return file.readAll();
}

qint64 number(const QByteArray& status, const QByteArray& field) {
    const qsizetype at = status.indexOf('\n' + field + ':');
    return at < 0 ? 0 : status.mid(at + field.size() + 2, 32).simplified().split(' ').value(0).toLongLong();
}

} // namespace

std::optional<Sample> sampleOf(qint64 process) {
    const QString folder = QStringLiteral("/proc/%1").arg(process);
    const auto status = contentOf(folder + QStringLiteral("/status"));
    if (!status) {
        return std::nullopt;
    }
    Sample sample;
    sample.resident = number(*status, "VmRSS");
    sample.anonymous = number(*status, "RssAnon");
    sample.threads = static_cast<int>(number(*status, "Threads"));
    const QDir::Filters all = QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System | QDir::Hidden;
    sample.descriptors = static_cast<int>(QDir(folder + QStringLiteral("/fd")).entryList(all).size());
    return sample;
}

Sample sampleOfThis() {
    Sample sample = sampleOf(getpid()).value_or(Sample());
    const struct mallinfo2 heap = mallinfo2();
    sample.inUse = static_cast<qint64>((heap.uordblks + heap.hblkhd) / 1024);
    return sample;
}

std::chrono::nanoseconds workOfThis() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

QByteArray toCsv(const std::vector<Sample>& samples) {
    QByteArray text = head;
    for (const Sample& sample : samples) {
        const QByteArrayList fields{QByteArray::number(sample.tick),
                                    QByteArray::number(sample.seconds, 'f', 1),
                                    QByteArray::number(sample.resident),
                                    QByteArray::number(sample.anonymous),
                                    sample.inUse ? QByteArray::number(*sample.inUse) : QByteArray(),
                                    QByteArray::number(sample.descriptors),
                                    QByteArray::number(sample.threads),
                                    QByteArray::number(sample.tickCost, 'f', 1),
                                    QByteArray::number(sample.yardstick, 'f', 1)};
        text += fields.join(',') + '\n';
    }
    return text;
}

std::expected<std::vector<Sample>, QString> fromCsv(const QByteArray& text) {
    if (!text.startsWith(head)) {
        return std::unexpected(QStringLiteral("does not begin with %1").arg(QLatin1StringView(head).trimmed()));
    }
    std::vector<Sample> samples;
    const QByteArrayList lines = text.trimmed().split('\n');
    for (const QByteArray& line : lines.mid(1)) {
        const QByteArrayList fields = line.split(',');
        bool complete = fields.size() == 9;
        const auto whole = [&](int column) {
            bool isNumber = false;
            const qint64 value = fields.value(column).toLongLong(&isNumber);
            complete = complete && isNumber;
            return value;
        };
        const auto real = [&](int column) {
            bool isNumber = false;
            const double value = fields.value(column).toDouble(&isNumber);
            complete = complete && isNumber;
            return value;
        };
        const Sample sample{.tick = whole(0),
                            .seconds = real(1),
                            .resident = whole(2),
                            .anonymous = whole(3),
                            .inUse = fields.value(4).isEmpty() ? std::nullopt : std::optional(whole(4)),
                            .descriptors = static_cast<int>(whole(5)),
                            .threads = static_cast<int>(whole(6)),
                            .tickCost = real(7),
                            .yardstick = real(8)};
        if (!complete) {
            return std::unexpected(QStringLiteral("line %1 is no sample").arg(samples.size() + 2));
        }
        samples.push_back(sample);
    }
    return samples;
}

} // namespace pelloran::soak
