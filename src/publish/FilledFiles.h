#pragma once

#include <QByteArray>
#include <QStringList>

#include <expected>

// Data files as they are published: with what lists of cards know and the files leave open.
namespace pelloran {

class CardLists;

struct FilledFile {
    QByteArray bytes;    // as they were where nothing could be filled in; keys that no client knows stay
    QStringList remarks; // each in a sentence
};

// A card file of any shape. A row may have `dbf_id` in place of `card_id`; without either, or of another shape than the
// decoder takes, it stays as it is. Errors: no row is in any list. Without a list all stays as it is.
std::expected<FilledFile, QStringList> filledCardFile(const QByteArray& json, const CardLists& lists);

// A class file, whose rows without names of heroes get those of the heroes of their classes, but for names that another
// class has too, by the lists or by its row. The remarks have these, and the rows that are left without.
FilledFile filledClassFile(const QByteArray& json, const CardLists& lists);

} // namespace pelloran
