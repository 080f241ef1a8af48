#include "sync/TarArchive.h"

#include "sync/TarListing.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringDecoder>
#include <QThread>

#include <filesystem>

using namespace Qt::StringLiterals;

namespace pelloran::TarArchive {

namespace {

namespace fs = std::filesystem;

constexpr int pollMilliseconds = 50;

// Of a listing: long names for every entry allowed. Of tar's complaints: nobody reads more.
constexpr qsizetype maximumOutput = qsizetype{16} * 1024 * 1024;
constexpr qsizetype maximumComplaint = qsizetype{64} * 1024;

std::unexpected<ConfigSyncError> failed(const QString& message) {
    return std::unexpected(ConfigSyncError{ConfigSyncError::ExtractFailed{message}});
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

} // namespace

std::expected<void, ConfigSyncError> check(const QString& archive, std::chrono::milliseconds patience) {
    // Names alone, and then everything: where a line's name begins shows only when the name is known. The owners'
    // names are the archive's to choose, and could hold what looks like a size.
    const auto names = run({u"-tzf"_s, archive}, true, patience);
    if (!names) {
        return std::unexpected(names.error());
    }
    const auto details = run({u"--numeric-owner"_s, u"-tvzf"_s, archive}, true, patience);
    if (!details) {
        return std::unexpected(details.error());
    }
    return TarListing::check(*names, *details);
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
            return std::unexpected(TarListing::neitherFileNorFolder(name));
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
        if (++entries > TarListing::maximumEntries) {
            return std::unexpected(TarListing::tooManyEntries());
        }
        if (total > static_cast<std::uintmax_t>(TarListing::maximumUnpackedBytes)) {
            return std::unexpected(TarListing::tooManyBytes());
        }
    }
    if (error) {
        return fileSystem();
    }
    return {};
}

} // namespace pelloran::TarArchive
