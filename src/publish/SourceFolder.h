#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <expected>
#include <optional>
#include <vector>

// What an operator wants players to have: a folder of files, checked before anything is made of it.
namespace pelloran {

struct SourceFile {
    QString path; // below the folder, with slashes
    QByteArray bytes;
    QDateTime modified; // UTC

    bool operator==(const SourceFile&) const = default;
};

struct SourceFolder {
    std::vector<SourceFile> files; // sorted by the bytes of their paths
    QStringList remarks;           // nothing wrong, but perhaps not meant; each in a sentence

    // Takes every file but hidden ones and what a client writes itself into a folder that it has installed. `cardTable`
    // is the path of a table of cards, whose card file takes the place of the folder's. `cardLists` are those from
    // which names are filled in, and what else they tell of cards; see CardLists. Errors, each with the file's name:
    // what cannot be read or is neither file nor folder, a data file that the program's own decoder refuses, and a
    // folder that no client would take for data.
    static std::expected<SourceFolder, QStringList> read(const QString& folder, const std::optional<QString>& cardTable,
                                                         const QStringList& cardLists = {});
};

} // namespace pelloran
