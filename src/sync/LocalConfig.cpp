#include "sync/LocalConfig.h"

#include "base/FileTree.h"
#include "platform/ApplicationFiles.h"
#include "sync/RemoteManifest.h"

#include <QFileInfo>
#include <QStringDecoder>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace pelloran {

LocalConfig::LocalConfig(const ApplicationFiles& files)
    : directory(files.configurationFolder()) {}

QString LocalConfig::localHashURL() const {
    return directory + u"/.content_hash"_s;
}

std::optional<QString> LocalConfig::localHash() const {
    // It came in a manifest, and is no larger than that.
    const auto bytes = FileTree::read(localHashURL(), maximumManifestBytes);
    if (!bytes) {
        return std::nullopt;
    }
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString hash = decoder(*bytes);
    QString trimmed = hash.trimmed();
    return decoder.hasError() || trimmed.isEmpty() ? std::nullopt : std::optional(std::move(trimmed));
}

bool LocalConfig::hasUsableLocalConfig() const {
    const QStringList required = requiredFiles();
    return std::ranges::any_of(required,
                               [this](const QString& name) { return QFileInfo::exists(directory + u'/' + name); });
}

QStringList LocalConfig::requiredFiles() {
    return {
        u"winrates/class_winrates.json"_s,
        u"winrates/all_classes_LAST_7_DAYS.json"_s,
        u"winrates/MAGE_LAST_7_DAYS.json"_s,
        u"mage_arena_LAST_7_DAYS.json"_s,
    };
}

} // namespace pelloran
