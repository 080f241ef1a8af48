// Any bytes as a card file, in each of its shapes, and as a class file. What decodes, and nothing else, is what a plain
// look at the parsed file says. It has to survive encoding, and its names have to be found by the search that they were
// given to.

#include "data/CardFile.h"
#include "data/WinrateFields.h"
#include "fuzz/PlainJson.h"
#include "fuzz/Require.h"
#include "names/CardNameIndex.h"
#include "names/ClassNameIndex.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace {

using namespace pelloran;
using fuzzing::require;

template <typename File>
std::optional<File> look(const QByteArray& bytes) {
    auto decoded = File::decode(bytes);
    const std::optional<File> file = decoded ? std::optional(*std::move(decoded)) : std::nullopt;
    if (file) {
        const auto again = File::decode(file->encode());
        const bool isSame = again && *again == *file;
        require(isSame || !fuzzing::survives(bytes));
        require(!isSame || qHash(*again) == qHash(*file));
    }
    require(fuzzing::isRight(file, bytes, longestDataText));
    return file;
}

void search(const std::vector<CardStats>& cards) {
    std::vector<QString> norms;
    QStringList lines;
    for (const CardStats& card : cards) {
        lines += card.displayName(AppLanguage::en);
        norms.push_back(NameMatching::normalize(lines.last()));
    }
    const CardNameIndex index(norms);
    for (const QString& line : lines) {
        const auto hit = index.bestMatch({line});
        require(!hit || hit->score == NameMatching::scoreName(line, norms[hit->entry]));
    }
    index.bestMatch(lines);
}

void search(const ClassWinrateFile& file) {
    std::vector<NamedClass> classes;
    classes.reserve(file.classes.size());
    for (const ClassWinrateRow& row : file.classes) {
        classes.push_back({row.playerClass.toUpper(), {row.nameZh, row.displayName(AppLanguage::en)}});
    }
    const ClassNameIndex index(classes);
    for (const QString& line : index.texts()) {
        require(index.bestMatch({line}, NameLengths::limitedUnlessExact).has_value());
    }
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    (void)look<WinrateFile>(bytes);
    if (const auto file = CardFile::decode(bytes, QStringLiteral("fuzz.json"))) {
        require(!file->rows.empty());
        search(file->rows);
    }
    if (const auto file = look<ClassWinrateFile>(bytes)) {
        search(*file);
    }
    return 0;
}
