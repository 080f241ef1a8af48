#include "tools/stage/CardFile.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace pelloran::stage {

std::expected<std::vector<Card>, QString> readCardFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::unexpected(QStringLiteral("%1: %2").arg(path, file.errorString()));
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (!document.isArray()) {
        return std::unexpected(QStringLiteral("%1: not a JSON array of cards: %2 at byte %3")
                                   .arg(path, error.errorString(), QString::number(error.offset)));
    }
    static const QStringList offered{QStringLiteral("MINION"), QStringLiteral("SPELL"), QStringLiteral("WEAPON"),
                                     QStringLiteral("HERO")};
    std::vector<Card> cards;
    const QJsonArray entries = document.array();
    for (const auto& entry : entries) {
        const QJsonObject object = entry.toObject();
        Card card;
        card.id = object[u"card_id"].toString();
        card.name = {object[u"name_en"].toString(), object[u"name_zh"].toString()};
        card.cost = object[u"cost"].toInt();
        card.rarity = object[u"rarity"].toString();
        card.type = object[u"type"].toString();
        card.cardClass = object[u"card_class"].toString(QStringLiteral("NEUTRAL"));
        if (offered.contains(card.type) && (!card.name.english.isEmpty() || !card.name.chinese.isEmpty())) {
            cards.push_back(std::move(card));
        }
    }
    if (cards.empty()) {
        return std::unexpected(QStringLiteral("%1: there is no card in it").arg(path));
    }
    return cards;
}

} // namespace pelloran::stage
