#include "tests/soak/DataServer.h"

#include "publish/Publisher.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>
#include <optional>

namespace pelloran::soak {

namespace {

const QString cardFile = QStringLiteral("/winrates/all_classes_LAST_7_DAYS.json");
const QString classFile = QStringLiteral("/winrates/class_winrates.json");

QJsonObject read(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

bool write(const QString& path, const QJsonObject& object) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(object).toJson()) > 0;
}

// The figures that ship, those of the cards raised by so much.
bool writeSource(const QString& folder, double by) {
    QJsonObject cards = read(QStringLiteral(PELLORAN_SOURCES "/resources") + cardFile);
    QJsonArray rows = cards[u"cards"].toArray();
    for (qsizetype i = 0; i < rows.size(); ++i) {
        QJsonObject row = rows[i].toObject();
        row[u"deck_win_rate"] = row[u"deck_win_rate"].toDouble() + by;
        rows[i] = row;
    }
    cards[u"cards"] = rows;
    return QDir().mkpath(folder + QStringLiteral("/winrates")) && write(folder + cardFile, cards) &&
           write(folder + classFile, read(QStringLiteral(PELLORAN_SOURCES "/resources") + classFile));
}

} // namespace

bool DataServer::start(const QString& folder) {
    if (!testing::StaticServer::isInstalled()) {
        std::fputs("needs nginx, which scripts/setup installs\n", stderr);
        return false;
    }
    for (std::size_t i = 0; i < manifests.size(); ++i) {
        const QString source = folder + QStringLiteral("/source-%1").arg(i);
        const auto published = writeSource(source, static_cast<double>(i))
                                   ? publish(source, server.root(), std::nullopt)
                                   : std::expected<Publication, QStringList>(std::unexpect);
        QFile manifest(manifestPath());
        if (!published || !manifest.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "cannot publish: %s\n",
                         published ? "no manifest" : qPrintable(published.error().join(u' ')));
            return false;
        }
        manifests[i] = manifest.readAll();
    }
    serve(0);
    return server.start();
}

void DataServer::serve(std::size_t publication) {
    server.write(QStringLiteral("pelloran/latest/manifest.json"), manifests[publication]);
}

void DataServer::serveNothing() {
    QFile::remove(manifestPath());
}

QString DataServer::manifestPath() const {
    return server.root() + QStringLiteral("/pelloran/latest/manifest.json");
}

} // namespace pelloran::soak
