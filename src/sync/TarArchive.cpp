#include "sync/TarArchive.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QList>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringDecoder>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <filesystem>

using namespace Qt::StringLiterals;

namespace pelloran::TarArchive {

namespace {

namespace fs = std::filesystem;

constexpr int pollMilliseconds = 50;

// Of a listing: long names for every entry allowed. Of tar's complaints: nobody reads more.
constexpr qsizetype maximumOutput = 16 * 1024 * 1024;
constexpr qsizetype maximumComplaint = 64 * 1024;

std::unexpected<ConfigSyncError> failed(const QString& message) {
    return std::unexpected(ConfigSyncError{ConfigSyncError::ExtractFailed{message}});
}

std::unexpected<ConfigSyncError> tooManyEntries() {
    return failed(u"the archive holds more than %1 entries"_s.arg(maximumEntries));
}

std::unexpected<ConfigSyncError> tooManyBytes() {
    return failed(u"the archive unpacks to more than %1 MiB"_s.arg(maximumUnpackedBytes / (1024 * 1024)));
}

// Runs tar to its end and gives what it printed.
std::expected<QByteArray, ConfigSyncError> run(const QStringList& arguments, bool inPlainEnglish,
                                               std::chrono::milliseconds patience) {
    QProcess tar;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"TAR_OPTIONS"_s); // would change what the arguments mean
    if (inPlainEnglish) {
        environment.insert(u"LC_ALL"_s, u"C"_s);
    }
    tar.setProcessEnvironment(environment);
    tar.setStandardInputFile(QProcess::nullDevice());
    tar.start(u"/usr/bin/tar"_s, arguments);
    if (!tar.waitForStarted()) {
        return std::unexpected(ConfigSyncError{ConfigSyncError::Platform{tar.errorString()}});
    }

    QByteArray output;
    QByteArray complaint;
    const auto collect = [&] {
        output += tar.readAllStandardOutput();
        complaint += tar.readAllStandardError();
        complaint.truncate(maximumComplaint);
    };
    const auto end = [&](const QString& why) {
        tar.kill();
        tar.waitForFinished();
        return failed(why);
    };
    const QDeadlineTimer deadline(patience);
    while (!tar.waitForFinished(pollMilliseconds) && tar.state() != QProcess::NotRunning) {
        collect();
        if (output.size() > maximumOutput) {
            return end(u"the archive's list of contents is too long"_s);
        }
        if (deadline.hasExpired()) {
            return end(u"tar did not end within %1 ms"_s.arg(patience.count()));
        }
        if (QThread::currentThread()->isInterruptionRequested()) {
            return end(u"interrupted"_s);
        }
    }
    collect();
    // The exit code of a tar that was killed is the signal's number.
    if (tar.exitStatus() == QProcess::NormalExit && tar.exitCode() == 0) {
        return output;
    }
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString message = decoder(complaint);
    return failed(decoder.hasError() ? u"exit %1"_s.arg(tar.exitCode()) : message);
}

// Lines, each ended by a line break: tar writes those of names as "\n".
QList<QByteArray> linesOf(const QByteArray& output) {
    QList<QByteArray> lines = output.split('\n');
    lines.removeLast();
    return lines;
}

// The number before the date, such as the 12 in "-rw-r--r-- me/us 12 2026-01-31 10:00 " as GNU's tar writes it and in
// "-rw-r--r--  0 me us 12 Jan 31 10:00 " as BSD's does. Read from its end: the owner's name is the archive's to choose.
std::expected<qint64, ConfigSyncError> sizeIn(const QByteArray& details) {
    const QList<QByteArray> words = details.simplified().split(' ');
    const bool isGnu = words.size() >= 2 && words.at(words.size() - 2).contains('-');
    const qsizetype fromEnd = isGnu ? 3 : 4;
    bool isNumber = false;
    const qint64 size = words.size() > fromEnd ? words.at(words.size() - fromEnd).toLongLong(&isNumber) : 0;
    if (!isNumber || size < 0) {
        return failed(u"the archive's list of contents cannot be read"_s);
    }
    return size;
}

} // namespace

std::expected<void, ConfigSyncError> check(const QString& archive, std::chrono::milliseconds patience) {
    // Names alone, and then everything: where a line's name begins shows only when the name is known.
    const auto names = run({u"-tzf"_s, archive}, true, patience);
    if (!names) {
        return std::unexpected(names.error());
    }
    const auto details = run({u"-tvzf"_s, archive}, true, patience);
    if (!details) {
        return std::unexpected(details.error());
    }
    const QList<QByteArray> nameLines = linesOf(*names);
    const QList<QByteArray> detailLines = linesOf(*details);
    if (nameLines.size() > maximumEntries) {
        return tooManyEntries();
    }
    if (detailLines.size() != nameLines.size()) {
        return failed(u"the archive's list of contents cannot be read"_s);
    }
    qint64 total = 0;
    for (qsizetype i = 0; i < nameLines.size(); ++i) {
        const QByteArray& name = nameLines.at(i);
        const QByteArray& detail = detailLines.at(i);
        const QString shown = QString::fromUtf8(name);
        if (name.isEmpty() || name.startsWith('/') || name.split('/').contains("..")) {
            return failed(u"\"%1\" in the archive leads out of its folder"_s.arg(shown));
        }
        // Links have an arrow and their target behind the name.
        const bool isPlain = detail.startsWith('-') || detail.startsWith('d');
        if (!isPlain || !detail.endsWith(' ' + name)) {
            return failed(u"\"%1\" in the archive is neither a file nor a folder"_s.arg(shown));
        }
        const auto size = sizeIn(detail.chopped(name.size()));
        if (!size) {
            return std::unexpected(size.error());
        }
        if (*size > maximumUnpackedBytes - total) {
            return tooManyBytes();
        }
        total += *size;
    }
    return {};
}

std::expected<void, ConfigSyncError> extract(const QString& archive, const QString& folder,
                                             std::chrono::milliseconds patience) {
    if (const auto output = run({u"-xzf"_s, archive, u"-C"_s, folder}, false, patience); !output) {
        return std::unexpected(output.error());
    }
    return {};
}

std::expected<void, ConfigSyncError> checkUnpacked(const QString& folder) {
    const fs::path root(QFile::encodeName(folder).toStdString());
    std::error_code error;
    const auto fileSystem = [&error] {
        return std::unexpected(ConfigSyncError{ConfigSyncError::Platform{QString::fromStdString(error.message())}});
    };
    // The archive may say something about the very folder it is unpacked into.
    fs::permissions(root, fs::perms::owner_all, fs::perm_options::add, error);
    fs::recursive_directory_iterator entry(root, error);
    int entries = 0;
    std::uintmax_t total = 0;
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        const fs::file_type type = entry->symlink_status(error).type();
        if (error) {
            break;
        }
        if (type != fs::file_type::regular && type != fs::file_type::directory) {
            const QString name = QFile::decodeName(entry->path().lexically_relative(root).c_str());
            return failed(u"\"%1\" in the archive is neither a file nor a folder"_s.arg(name));
        }
        // Before the iterator enters it.
        fs::permissions(entry->path(), type == fs::file_type::directory ? fs::perms::owner_all : fs::perms::owner_read,
                        fs::perm_options::add, error);
        if (type == fs::file_type::regular && !error) {
            total += entry->file_size(error);
        }
        if (error) {
            break;
        }
        if (++entries > maximumEntries) {
            return tooManyEntries();
        }
        if (total > static_cast<std::uintmax_t>(maximumUnpackedBytes)) {
            return tooManyBytes();
        }
    }
    if (error) {
        return fileSystem();
    }
    return {};
}

} // namespace pelloran::TarArchive
