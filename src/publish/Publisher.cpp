#include "publish/Publisher.h"

#include "base/Digest.h"
#include "base/FileTree.h"
#include "publish/Bundle.h"
#include "publish/Problem.h"
#include "publish/SourceFolder.h"
#include "sync/ConfigSync.h"
#include "sync/TarArchive.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QSaveFile>
#include <QTemporaryDir>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

// Raised when a manifest of today could be misunderstood. Clients do not look at it.
constexpr int manifestVersion = 1;

// Of the digest: enough that two bundles never share a name.
constexpr qsizetype digestCharactersInName = 16;

using Done = std::expected<void, QStringList>;

RemoteManifest manifestOf(const std::vector<SourceFile>& files, const Publication& publication) {
    QMap<QString, QString> digests;
    for (const SourceFile& file : files) {
        digests.insert(file.path, sha256Hex(file.bytes));
    }
    return {
        .version = manifestVersion,
        .hash = publication.hash,
        .bundle = publication.bundle,
        .bundleSha256 = publication.bundleSha256,
        .updatedAt = publication.updatedAt,
        .fileCount = publication.fileCount,
        .files = digests,
    };
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

// In one step, and readable for a web server that is somebody else.
Done write(const QString& path, const QByteArray& bytes) {
    if (contentOf(path) == bytes) {
        return {};
    }
    QSaveFile file(path);
    // Of bytes in a buffer commit() tells nobody that the disk has no room for them.
    const bool written =
        file.open(QFile::WriteOnly | QFile::Unbuffered) && FileTree::write(file, bytes) &&
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther) &&
        file.commit();
    if (!written) {
        return problem(u"cannot write %1: %2"_s.arg(path, file.errorString()));
    }
    return {};
}

// As a client looks at it before it unpacks.
Done checkAsClient(const QByteArray& manifest, const QByteArray& bundle) {
    if (manifest.size() > maximumManifestBytes) {
        return problem(u"the manifest has more than %1 bytes, which clients refuse"_s.arg(maximumManifestBytes));
    }
    if (bundle.size() > ConfigSync::maximumBundleBytes) {
        return problem(
            u"the bundle has more than %1 bytes, which clients refuse"_s.arg(ConfigSync::maximumBundleBytes));
    }
    if (const auto decoded = RemoteManifest::fromJson(manifest); !decoded) {
        return problem(decoded.error().localizedDescription());
    }
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"config.tar.gz"_s);
    if (auto written = write(path, bundle); !written) {
        return written;
    }
    if (const auto harmless = TarArchive::check(path); !harmless) {
        return problem(harmless.error().localizedDescription());
    }
    return {};
}

void removeOldBundles(const QString& folder, const QStringList& kept) {
    QDir directory(folder);
    for (const QString& name : directory.entryList({u"config-*.tar.gz"_s}, QDir::Files)) {
        if (!kept.contains(name)) {
            directory.remove(name);
        }
    }
}

} // namespace

std::expected<Publication, QStringList> publish(const QString& source, const QString& target,
                                                const std::optional<QString>& cardTable, const QStringList& cardLists) {
    // What is published would be part of what is published next.
    if (QString(QDir(target).absolutePath() + u'/').startsWith(QDir(source).absolutePath() + u'/')) {
        return problem(target + u": lies within the folder of data files"_s);
    }
    const auto content = SourceFolder::read(source, cardTable, cardLists);
    if (!content) {
        return std::unexpected(content.error());
    }
    const auto bundle = gzippedTar(content->files);
    if (!bundle) {
        return problem(bundle.error());
    }
    Publication publication;
    publication.folder = target + u"/pelloran/latest"_s;
    publication.hash = contentHash(content->files);
    publication.bundleSha256 = sha256Hex(*bundle);
    publication.bundle = u"config-%1.tar.gz"_s.arg(publication.bundleSha256.first(digestCharactersInName));
    publication.bundleBytes = bundle->size();
    publication.fileCount = static_cast<int>(content->files.size());
    publication.updatedAt =
        std::ranges::max_element(content->files, {}, &SourceFile::modified)->modified.toString(Qt::ISODate);
    publication.remarks = content->remarks;
    const QByteArray manifest = manifestOf(content->files, publication).toJson();
    publication.manifestBytes = manifest.size();
    if (const auto accepted = checkAsClient(manifest, *bundle); !accepted) {
        return std::unexpected(accepted.error());
    }

    const QDir folder(publication.folder);
    if (!folder.mkpath(u"."_s)) {
        return problem(u"cannot make the folder "_s + publication.folder);
    }
    const QString manifestPath = folder.filePath(u"manifest.json"_s);
    const QByteArray previous = contentOf(manifestPath);
    publication.changed = previous != manifest;
    QStringList kept{publication.bundle};
    if (const auto before = RemoteManifest::fromJson(previous)) {
        kept.append(before->bundleName());
    }
    for (const auto& [path, bytes] :
         {std::pair(folder.filePath(publication.bundle), *bundle),
          std::pair(folder.filePath(u"config.tar.gz"_s), *bundle), std::pair(manifestPath, manifest)}) {
        if (const auto written = write(path, bytes); !written) {
            return std::unexpected(written.error());
        }
    }
    if (publication.changed) {
        removeOldBundles(publication.folder, kept);
    }
    return publication;
}

} // namespace pelloran
