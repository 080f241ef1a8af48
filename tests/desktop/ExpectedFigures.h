#pragma once

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

#include <gtest/gtest.h>

#include <map>

namespace pelloran::testing {

// The figures that tiles must show, read without any of the program's own code.
class ExpectedFigures {
public:
    // The folder has the data files in "winrates".
    explicit ExpectedFigures(const QString& folder) {
        for (const auto& card :
             file(folder, QStringLiteral("all_classes_LAST_7_DAYS.json"))[QStringLiteral("cards")].toArray()) {
            rows[card[QStringLiteral("card_id")].toString()] = card.toObject();
        }
        for (const auto& row :
             file(folder, QStringLiteral("class_winrates.json"))[QStringLiteral("classes")].toArray()) {
            rows[row[QStringLiteral("player_class")].toString()] = row.toObject();
        }
    }

    QJsonValue figure(const QString& id, const QString& kind) const {
        static const std::map<QString, QString> columns{
            {QStringLiteral("deckWinRate"), QStringLiteral("deck_win_rate")},
            {QStringLiteral("drawnWinRate"), QStringLiteral("drawn_win_rate")},
            {QStringLiteral("playedWinRate"), QStringLiteral("played_win_rate")},
            {QStringLiteral("popularity"), QStringLiteral("popularity")},
            {QStringLiteral("avgCopies"), QStringLiteral("avg_copies_in_deck")},
            {QStringLiteral("classWinRate"), QStringLiteral("win_rate")},
            {QStringLiteral("pickRate"), QStringLiteral("pick_rate")},
            {QStringLiteral("pct7Plus"), QStringLiteral("pct_7_plus")},
            {QStringLiteral("classRank"), QStringLiteral("rank")},
        };
        const auto row = rows.find(id);
        return row == rows.end() ? QJsonValue() : row->second[columns.at(kind)];
    }

private:
    static QJsonObject file(const QString& folder, const QString& name) {
        QFile file(folder + QStringLiteral("/winrates/") + name);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        return QJsonDocument::fromJson(file.readAll()).object();
    }

    std::map<QString, QJsonObject> rows;
};

} // namespace pelloran::testing
