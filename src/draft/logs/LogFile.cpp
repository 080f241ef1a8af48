#include "draft/logs/LogFile.h"

#include "base/FileTree.h"

#include <QByteArrayView>
#include <QFile>

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

namespace pelloran {

namespace {

// Where the last character begins; the size for an empty text.
qsizetype startOfLastCharacter(QByteArrayView text) {
    const auto continues = [](char byte) { return (byte & 0xC0) == 0x80; };
    qsizetype start = text.size() - 1;
    for (qsizetype back = 0; back < 3 && start > 0 && continues(text[start]); ++back) {
        --start;
    }
    return std::max<qsizetype>(start, 0);
}

// Whether `bytes` begin one character and more of them are to come. The smallest and largest continuations make every
// text that is cut, and no other, valid in one of the two ways.
bool isCutOff(QByteArrayView bytes) {
    const auto lead = static_cast<unsigned char>(bytes.isEmpty() ? 0 : bytes.front());
    const qsizetype length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    return bytes.size() < length && std::ranges::any_of(
                                        std::array{'\x80', '\xBF'},
                                        [&](char continuation) {
                                            const QByteArray rest(length - bytes.size(), continuation);
                                            return (bytes.toByteArray() + rest).isValidUtf8();
                                        });
}

} // namespace

std::expected<QByteArray, LogFileError> readLogFile(const QString& path, const std::function<void()>& pause) {
    QFile file(path);
    if (!FileTree::openToRead(file)) {
        return std::unexpected(LogFileError::unreadable);
    }
    if (file.size() > largestLogFile) {
        return std::unexpected(LogFileError::tooLarge);
    }
    // Read, never mapped: the game may truncate the file, and touching a page that is gone kills the program.
    QByteArray text = file.read(file.size());
    if (file.error() != QFileDevice::NoError) {
        return std::unexpected(LogFileError::unreadable);
    }
    if (text.isValidUtf8()) {
        return text;
    }
    qsizetype checked = startOfLastCharacter(text);
    if (!QByteArrayView(text).first(checked).isValidUtf8()) {
        return std::unexpected(LogFileError::notText);
    }
    for (int looks = 0; looks < 4 && isCutOff(QByteArrayView(text).sliced(checked)); ++looks) {
        pause();
        text += file.read(std::max<qint64>(file.size() - text.size(), 0));
        const QByteArrayView added = QByteArrayView(text).sliced(checked);
        if (added.isValidUtf8()) {
            return text;
        }
        const qsizetype valid = startOfLastCharacter(added);
        if (added.first(valid).isValidUtf8()) {
            checked += valid;
        }
    }
    return std::unexpected(LogFileError::notText);
}

QString whyUnreadable(const QString& path) {
    QFile file(path);
    const auto opened = FileTree::openToRead(file);
    return opened ? QString() : opened.error().description;
}

void pauseForWriter() {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

} // namespace pelloran
