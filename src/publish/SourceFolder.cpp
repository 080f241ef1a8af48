#include "publish/SourceFolder.h"

#include "data/CardFile.h"
#include "data/DataErrorText.h"
#include "data/DataFiles.h"
#include "data/WinrateData.h"
#include "data/WinrateFields.h"
#include "publish/CardLists.h"
#include "publish/CardTable.h"
#include "publish/FilledFiles.h"
#include "sync/LocalConfig.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <tuple>
#include <utility>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

// The manifest that a client keeps with what it has installed.
constexpr QLatin1StringView clientsOwn = "manifest.json"_L1;

QString isoTime(const QDateTime& time) {
    return time.toString(Qt::ISODate);
}

QDateTime modifiedAt(const QFileInfo& file) {
    return file.lastModified().toUTC();
}

// Tools that print names, and file systems that know no case, make other names of these.
bool isPlainName(const QString& name) {
    return std::ranges::all_of(name,
                               [](QChar c) { return c.isPrint() && c != u'\\' && c != QChar::ReplacementCharacter; });
}

// Gathers what is to be published, and all that is wrong with it.
class Reader {
public:
    Reader(const QString& root, const CardLists& cardLists)
        : folder(root)
        , lists(cardLists) {}

    void readFolder(const QString& below) {
        const QDir directory(folder + u'/' + below);
        const QFileInfo self(directory.path());
        if (!self.isReadable() || !self.isExecutable()) {
            problem(below.isEmpty() ? folder : below.chopped(1), u"may not be listed and searched"_s);
            return;
        }
        const auto entries = directory.entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
        for (const QFileInfo& entry : entries) {
            const QString path = below + entry.fileName();
            if (path == clientsOwn) {
                continue;
            }
            if (!isPlainName(entry.fileName())) {
                problem(path, u"has a character in its name that is not portable"_s);
            } else if (entry.isSymLink()) {
                problem(path, u"is a link; put the file itself there"_s);
            } else if (entry.isDir()) {
                readFolder(path + u'/');
            } else if (!entry.isFile()) {
                problem(path, u"is neither a file nor a folder"_s);
            } else if (auto bytes = readDataFile(entry.filePath())) {
                add({path, *std::move(bytes), modifiedAt(entry)});
            } else {
                problems.append(bytes.error().localizedDescription);
            }
        }
    }

    // In place of the one that the folder has.
    void readCardTable(const QString& table) {
        const auto bytes = readDataFile(table);
        if (!bytes) {
            problems.append(bytes.error().localizedDescription);
            return;
        }
        const QDateTime modified = modifiedAt(QFileInfo(table));
        auto cards = cardsFromTable(*bytes, isoTime(modified), lists);
        if (!cards) {
            for (const QString& each : cards.error()) {
                problem(table, each);
            }
            return;
        }
        for (const QString& each : cards->remarks) {
            remark(table, each);
        }
        const QString path = cardFilePaths().first();
        std::erase_if(files, [&](const SourceFile& each) { return each.path == path; });
        files.push_back({path, std::move(cards->file), modified});
    }

    void fillClassFiles() {
        for (SourceFile& file : files) {
            if (!classFilePaths().contains(file.path)) {
                continue;
            }
            FilledFile filled = filledClassFile(file.bytes, lists);
            for (const QString& each : filled.remarks) {
                remark(file.path, each);
            }
            file.bytes = std::move(filled.bytes);
        }
    }

    void fillCardFiles() {
        for (SourceFile& file : files) {
            if (!cardFilePaths().contains(file.path)) {
                continue;
            }
            auto filled = filledCardFile(file.bytes, lists);
            if (!filled) {
                for (const QString& each : filled.error()) {
                    problem(file.path, each);
                }
                continue;
            }
            for (const QString& each : filled->remarks) {
                remark(file.path, each);
            }
            file.bytes = std::move(filled->bytes);
        }
    }

    void check() {
        QSet<QString> withoutCase;
        for (const SourceFile& file : files) {
            if (const QString name = file.path.toCaseFolded(); withoutCase.contains(name)) {
                problem(file.path, u"differs from another only in case"_s);
            } else {
                withoutCase.insert(name);
            }
            if (cardFilePaths().contains(file.path)) {
                checkCards(file);
            } else if (classFilePaths().contains(file.path)) {
                checkClasses(file);
            } else {
                remark(file.path, u"is published too, though no client reads it"_s);
            }
        }
        const auto isThere = [this](const QString& path) {
            return std::ranges::find(files, path, &SourceFile::path) != files.end();
        };
        if (std::ranges::none_of(LocalConfig::requiredFiles(), isThere)) {
            problems.append(u"%1: no client takes it for data, which has one of %2"_s.arg(
                folder, LocalConfig::requiredFiles().join(u", "_s)));
        } else if (std::ranges::none_of(cardFilePaths(), isThere)) {
            problems.append(u"%1: no card file, such as %2"_s.arg(folder, cardFilePaths().first()));
        } else if (std::ranges::none_of(classFilePaths(), isThere)) {
            remarks.append(u"there is no class file: clients go on with the figures that came with them"_s);
        }
    }

    std::vector<SourceFile> files;
    QStringList remarks;
    QStringList problems;

private:
    void add(SourceFile file) { files.push_back(std::move(file)); }

    void problem(const QString& path, const QString& what) { problems.append(path + u": "_s + what); }

    void remark(const QString& path, const QString& what) { remarks.append(path + u": "_s + what); }

    // Percentages given as shares look like very bad cards, and nothing else would tell.
    template <typename Record>
    void checkPercentages(const QString& path, const QString& whose, const Record& record) {
        const auto checkField = [&]<typename Field>(const Field& field) {
            if constexpr (isPercentage<Field>) {
                const std::optional<double> percent = record.*field.member;
                if (percent && (*percent < 0 || *percent > 100)) {
                    remark(path,
                           u"%1 of %2 is %3, not from 0 to 100"_s.arg(field.key, whose, QString::number(*percent)));
                }
            }
        };
        std::apply([&](const auto&... field) { (checkField(field), ...); }, strict_json::fields<Record>);
    }

    void checkCards(const SourceFile& file) {
        const auto decoded = CardFile::decode(file.bytes, file.path);
        if (!decoded) {
            problem(file.path, explanation(decoded.error()));
            return;
        }
        if (decoded->isSample) {
            remark(file.path, u"says of itself that its figures are invented"_s);
        }
        QSet<QString> ids;
        double highest = 0;
        for (const CardStats& card : decoded->rows) {
            if (ids.contains(card.cardId)) {
                remark(file.path, u"%1 has more than one row; the first counts"_s.arg(card.cardId));
            }
            ids.insert(card.cardId);
            if (card.nameZh.value_or(QString()).isEmpty() && card.nameEn.value_or(QString()).isEmpty()) {
                remark(file.path, u"%1 has no name and will not be found"_s.arg(card.cardId));
            }
            checkPercentages(file.path, card.cardId, card);
            highest = std::max(highest, card.deckWinRate.value_or(0));
        }
        checkScale(file.path, highest);
    }

    void checkClasses(const SourceFile& file) {
        const auto decoded = ClassWinrateFile::decode(file.bytes);
        if (!decoded) {
            problem(file.path, explanation(decoded.error()));
            return;
        }
        double highest = 0;
        ClassesByKey byKey;
        for (const ClassWinrateRow& row : decoded->classes) {
            checkPercentages(file.path, row.playerClass, row);
            highest = std::max(highest, row.winRate.value_or(0));
            byKey.insert_or_assign(row.playerClass.toUpper(), row);
        }
        checkScale(file.path, highest);
        checkHeroNames(file.path, byKey);
    }

    // As a client understands them.
    void checkHeroNames(const QString& path, const ClassesByKey& classes) {
        const ClassNameIndex index(namedClasses(classes));
        for (const auto& [key, row] : classes) {
            for (const QString& name : row.heroNames.value_or(std::vector<QString>())) {
                const auto called = index.bestMatch({name}, NameLengths::limitedUnlessExact);
                if (called && called->key != key) {
                    remark(path, u"\"%1\" of %2's hero_names is a name of %3"_s.arg(name, key, called->key));
                } else if (!called && !index.heroNamed(name, NameLengths::limitedUnlessExact)) {
                    remark(path,
                           u"\"%1\" of %2's hero_names tells no class: it is blank, or another class has it too"_s.arg(
                               name, key));
                }
            }
        }
    }

    void checkScale(const QString& path, double highestWinRate) {
        if (highestWinRate > 0 && highestWinRate <= 1) {
            remark(path, u"no win rate is above 1: percentages run from 0 to 100"_s);
        }
    }

    QString folder;
    const CardLists& lists;
};

} // namespace

std::expected<SourceFolder, QStringList>
SourceFolder::read(const QString& folder, const std::optional<QString>& cardTable, const QStringList& cardLists) {
    if (!QFileInfo(folder).isDir()) {
        return std::unexpected(QStringList{folder + u": there is no such folder"_s});
    }
    const auto lists = CardLists::read(cardLists);
    if (!lists) {
        return std::unexpected(lists.error());
    }
    Reader reader(folder, *lists);
    reader.readFolder({});
    reader.fillClassFiles();
    if (cardTable) {
        reader.readCardTable(*cardTable);
    } else {
        reader.fillCardFiles();
    }
    if (reader.problems.isEmpty()) {
        reader.check();
    }
    if (!reader.problems.isEmpty()) {
        return std::unexpected(reader.problems);
    }
    std::ranges::sort(reader.files, {}, [](const SourceFile& file) { return file.path.toUtf8(); });
    return SourceFolder{std::move(reader.files), reader.remarks};
}

} // namespace pelloran
