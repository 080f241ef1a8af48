#include "publish/Bundle.h"

#include "base/Digest.h"

#include <archive.h>
#include <archive_entry.h>

#include <memory>

namespace pelloran {

namespace {

// Not the beginning of the clock, of which tar warns when it unpacks.
constexpr time_t anyTime = 1'000'000'000;

struct CloseArchive {
    void operator()(archive* open) const { archive_write_free(open); }
};

struct FreeEntry {
    void operator()(archive_entry* entry) const { archive_entry_free(entry); }
};

la_ssize_t append(archive*, void* bytes, const void* part, size_t size) {
    static_cast<QByteArray*>(bytes)->append(static_cast<const char*>(part), static_cast<qsizetype>(size));
    return static_cast<la_ssize_t>(size);
}

} // namespace

QString contentHash(const std::vector<SourceFile>& files) {
    QByteArray lines;
    for (const SourceFile& file : files) {
        lines += sha256Hex(file.bytes).toLatin1() + "  " + file.path.toUtf8() + '\n';
    }
    return sha256Hex(lines);
}

std::expected<QByteArray, QString> gzippedTar(const std::vector<SourceFile>& files) {
    QByteArray bytes;
    const std::unique_ptr<archive, CloseArchive> tar(archive_write_new());
    bool fine = archive_write_set_format_gnutar(tar.get()) == ARCHIVE_OK && // takes names of any length as they are
                archive_write_add_filter_gzip(tar.get()) == ARCHIVE_OK &&
                archive_write_set_filter_option(tar.get(), "gzip", "timestamp", nullptr) == ARCHIVE_OK &&
                archive_write_set_filter_option(tar.get(), "gzip", "compression-level", "9") == ARCHIVE_OK &&
                archive_write_set_bytes_in_last_block(tar.get(), 1) == ARCHIVE_OK && // gzip calls padding garbage
                archive_write_open(tar.get(), &bytes, nullptr, append, nullptr) == ARCHIVE_OK;
    const std::unique_ptr<archive_entry, FreeEntry> entry(archive_entry_new());
    for (const SourceFile& file : files) {
        if (!fine) {
            break;
        }
        archive_entry_clear(entry.get());
        archive_entry_set_pathname(entry.get(), file.path.toUtf8().constData());
        archive_entry_set_filetype(entry.get(), AE_IFREG);
        archive_entry_set_perm(entry.get(), 0644);
        archive_entry_set_mtime(entry.get(), anyTime, 0);
        archive_entry_set_size(entry.get(), file.bytes.size());
        const auto size = static_cast<la_ssize_t>(file.bytes.size());
        fine = archive_write_header(tar.get(), entry.get()) == ARCHIVE_OK &&
               archive_write_data(tar.get(), file.bytes.constData(), static_cast<size_t>(size)) == size;
    }
    if (!fine || archive_write_close(tar.get()) != ARCHIVE_OK) {
        return std::unexpected(QString::fromUtf8(archive_error_string(tar.get())));
    }
    return bytes;
}

} // namespace pelloran
