#include "data/WinrateStore.h"

#include "base/Log.h"

#include <utility>

namespace pelloran {

WinrateStore::WinrateStore(const ApplicationFiles& applicationFiles)
    : files(applicationFiles) {}

WinrateStore::~WinrateStore() = default;

WinrateStore::Loaded WinrateStore::loadFromBundle() {
    WinrateData data = WinrateData::read(files);
    return adopt(data);
}

WinrateStore::Loaded WinrateStore::adopt(WinrateData& data) {
    if (!data.cards) {
        return std::unexpected(data.cards.error());
    }
    std::swap(cards, *data.cards);
    cardsSource = data.cardsSource;
    if (!data.remark.isEmpty()) {
        log(data.remark);
    }
    if (data.classes) {
        std::swap(classes, *data.classes);
    }
    return {};
}

WinrateStore::Loaded WinrateStore::loadCards(const QString& path) {
    auto read = CardData::read(path);
    if (!read) {
        return std::unexpected(std::move(read).error());
    }
    cards = *std::move(read);
    return {};
}

WinrateStore::Loaded WinrateStore::loadClasses(const QString& path) {
    auto read = ClassData::read(path);
    if (!read) {
        return std::unexpected(std::move(read).error());
    }
    classes = *std::move(read);
    return {};
}

std::optional<CardStats> WinrateStore::stats(const QString& cardId) const {
    const auto found = cards.byId.find(cardId);
    return found == cards.byId.end() ? std::nullopt : std::optional(found->second);
}

std::optional<ClassWinrateRow> WinrateStore::classStats(const QString& key) const {
    const auto found = classes.byKey.find(key.toUpper());
    return found == classes.byKey.end() ? std::nullopt : std::optional(found->second);
}

std::optional<CardMatch> WinrateStore::matchName(const QStringList& lines, NameLengths lengths) const {
    const auto hit = cards.index.bestMatch(lines, lengths);
    if (!hit) {
        return std::nullopt;
    }
    return CardMatch{cards.names[hit->entry].cardId, hit->score, lines[hit->line]};
}

std::optional<ClassMatch> WinrateStore::matchClass(const QStringList& lines, NameLengths lengths) const {
    return classes.index.bestMatch(lines, lengths);
}

std::optional<ClassMatch> WinrateStore::matchHero(const QString& line, NameLengths lengths) const {
    return classes.index.heroNamed(line, lengths);
}

} // namespace pelloran
