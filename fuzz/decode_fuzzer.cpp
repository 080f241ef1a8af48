// Any bytes as a card file, in each of its shapes, and as a class file. What decodes has to survive encoding, and its
// names have to be found by the search that they were given to.

#include "data/CardFile.h"
#include "fuzz/Require.h"
#include "names/CardNameIndex.h"
#include "names/ClassNameIndex.h"

#include <cstdint>

namespace {

using namespace pelloran;
using fuzzing::require;

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
    // Qt drops a byte-order mark that begins a text, unless the text has escapes: such texts do not survive.
    const bool survives = bytes.indexOf("\xEF\xBB\xBF", 1) < 0 && !bytes.toLower().contains("\\ufeff");
    if (const auto standard = WinrateFile::decode(bytes)) {
        require(WinrateFile::decode(standard->encode()) == standard || !survives);
    }
    if (const auto file = CardFile::decode(bytes, QStringLiteral("fuzz.json"))) {
        require(!file->rows.empty());
        search(file->rows);
    }
    if (const auto file = ClassWinrateFile::decode(bytes)) {
        require(ClassWinrateFile::decode(file->encode()) == file || !survives);
        search(*file);
    }
    return 0;
}
