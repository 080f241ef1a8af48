#pragma once

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace pelloran::testing {

inline const QString cardFile = QStringLiteral("winrates/all_classes_LAST_7_DAYS.json");
inline const QString classFile = QStringLiteral("winrates/class_winrates.json");
inline const QByteArray cards = R"({"cards": [{"card_id": "A", "name_en": "Fireball", "deck_win_rate": 56.1}]})";
inline const QByteArray classes = R"({"classes": [{"player_class": "MAGE", "name_zh": "法师", "win_rate": 51.2}]})";

// A folder that tests fill.
class DataFolder {
public:
    QString path(const QString& below = {}) const { return folder.filePath(below); }

    // As of `modified`, in seconds since 1970.
    void write(const QString& below, const QByteArray& bytes, qint64 modified = 1'700'000'000) const {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path(below)).path()));
        QFile file(path(below));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
        ASSERT_TRUE(file.flush());
        ASSERT_TRUE(file.setFileTime(QDateTime::fromSecsSinceEpoch(modified), QFile::FileModificationTime));
    }

    QByteArray read(const QString& below) const {
        QFile file(path(below));
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    QTemporaryDir folder;
};

} // namespace pelloran::testing
