#include "data/WinrateData.h"

#include "data/CardFile.h"
#include "data/DataFiles.h"
#include "names/NameMatching.h"
#include "platform/ApplicationFiles.h"

#include <QFileInfo>
#include <QLatin1StringView>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace pelloran {

namespace {

// One of the two data files and where it may lie.
struct Search {
    QStringList relativePaths; // below a folder of data
    QString baseName;          // among the resources
    QString alternative;       // among the resources, for older layouts; "" for none
};

Search cardFileSearch() {
    return {
        cardFilePaths(),
        u"all_classes_LAST_7_DAYS"_s,
        u"mage_arena_LAST_7_DAYS"_s,
    };
}

Search classFileSearch() {
    return {
        classFilePaths(),
        u"class_winrates"_s,
        {},
    };
}

std::optional<QString> firstIn(const QString& folder, const QStringList& relativePaths) {
    for (const QString& relative : relativePaths) {
        QString path = folder + u'/' + relative;
        if (QFileInfo(path).isFile()) {
            return path;
        }
    }
    return std::nullopt;
}

std::optional<QString> resolveFirstExisting(const Search& search, const ApplicationFiles& files) {
    if (auto found = firstIn(files.configurationFolder(), search.relativePaths)) {
        return found;
    }

    const QString json = u"json"_s;
    const QString winrates = u"winrates"_s;
    QList<std::pair<QString, QString>> resources{{search.baseName, winrates}, {search.baseName, {}}};
    if (!search.alternative.isEmpty()) {
        resources += {{search.alternative, {}}, {u"mage_arena_LAST_7_DAYS"_s, {}}, {u"MAGE_LAST_7_DAYS"_s, winrates}};
    }
    for (const auto& [name, subfolder] : std::as_const(resources)) {
        if (auto found = files.resource(name, json, subfolder)) {
            return found;
        }
    }

    const QString program = files.executableFolder();
    const QString home = files.homeFolder();
    for (const QString& folder :
         {program, QFileInfo(program).path(), home + u"/workbench/pelloran_macos"_s,
          home + u"/workbench/pelloran_macos/Resources"_s, home + u"/workbench/hsreplay_dump/arena_LAST_7_DAYS"_s}) {
        if (auto found = firstIn(folder, search.relativePaths)) {
            return found;
        }
    }
    return std::nullopt;
}

// None where the file does not tell, or tells of something new.
NameKinds kindsOf(const std::optional<QString>& type) {
    struct Kind {
        QLatin1StringView type;
        NameKind kind;
    };

    static constexpr std::array kinds{
        Kind{"MINION"_L1, NameKind::minion},     Kind{"SPELL"_L1, NameKind::spell},
        Kind{"WEAPON"_L1, NameKind::weapon},     Kind{"HERO"_L1, NameKind::hero},
        Kind{"LOCATION"_L1, NameKind::location},
    };
    const auto found = std::ranges::find_if(
        kinds, [&](const Kind& each) { return type && type->compare(each.type, Qt::CaseInsensitive) == 0; });
    return found == kinds.end() ? NameKinds{} : NameKinds(found->kind);
}

CardData indexed(const CardFile& file) {
    const std::size_t mostNames = 2 * file.rows.size();
    CardData data;
    data.byId.reserve(file.rows.size());
    data.names.reserve(mostNames);
    std::vector<QString> norms;
    norms.reserve(mostNames);
    std::vector<KnownName> texts;
    texts.reserve(mostNames);
    for (const CardStats& row : file.rows) {
        data.byId.try_emplace(row.cardId, row);
        for (const auto& name : {row.nameZh, row.nameEn}) {
            if (name && !name->isEmpty()) {
                const QString norm = NameMatching::normalize(*name);
                data.names.push_back({norm, row.cardId, *name});
                norms.push_back(norm);
                texts.push_back({*name, kindsOf(row.type)});
            }
        }
    }
    data.index = CardNameIndex(norms);
    data.lexicon = std::make_shared<const Lexicon>(std::move(texts), Lexicon::forCards);
    data.description = file.description + u" / "_s + QString::number(data.byId.size()) + u" cards"_s;
    data.isSample = file.isSample;
    data.fetchedAt = file.fetchedAt;
    return data;
}

ClassData indexed(const ClassWinrateFile& file) {
    ClassData data;
    for (const ClassWinrateRow& row : file.classes) {
        const QString key = row.playerClass.toUpper();
        data.byKey.insert_or_assign(key, row);
        const bool named = row.nameEn && !row.nameEn->isEmpty();
        for (const QString& name :
             {row.nameZh, row.playerClass, named ? *row.nameEn : row.displayName(AppLanguage::en)}) {
            data.names.push_back({NameMatching::normalize(name), key, row.displayName()});
        }
    }
    for (const auto& [alias, key] : {
             std::pair(u"萨满"_s, u"SHAMAN"_s),
             std::pair(u"萨满祭司"_s, u"SHAMAN"_s),
             std::pair(u"瞎"_s, u"DEMONHUNTER"_s),
             std::pair(u"DH"_s, u"DEMONHUNTER"_s),
             std::pair(u"DK"_s, u"DEATHKNIGHT"_s),
             std::pair(u"死骑"_s, u"DEATHKNIGHT"_s),
             std::pair(u"德"_s, u"DRUID"_s),
             std::pair(u"猎"_s, u"HUNTER"_s),
             std::pair(u"法"_s, u"MAGE"_s),
             std::pair(u"骑"_s, u"PALADIN"_s),
             std::pair(u"牧"_s, u"PRIEST"_s),
             std::pair(u"贼"_s, u"ROGUE"_s),
             std::pair(u"术"_s, u"WARLOCK"_s),
             std::pair(u"战"_s, u"WARRIOR"_s),
         }) {
        if (const auto found = data.byKey.find(key); found != data.byKey.end()) {
            data.names.push_back({NameMatching::normalize(alias), key, found->second.displayName()});
        }
    }
    data.index = ClassNameIndex(namedClasses(data.byKey));
    std::vector<KnownName> texts;
    for (const QString& text : data.index.texts()) {
        texts.push_back({text, {}});
    }
    for (const QString& hero : data.index.heroTexts()) {
        texts.push_back({hero, {}, true});
    }
    data.lexicon = std::make_shared<const Lexicon>(std::move(texts), Lexicon::forClasses);
    const std::vector<QString> params = file.selectedParams.value_or(std::vector<QString>());
    data.isSample = std::ranges::find(params, u"SAMPLE"_s) != params.end();
    data.description = u"classes "_s + QString::number(data.byKey.size()) + u" / "_s + file.fetchedAt.value_or(u"?"_s);
    return data;
}

} // namespace

std::vector<NamedClass> namedClasses(const ClassesByKey& classes) {
    std::vector<NamedClass> named;
    named.reserve(classes.size());
    for (const auto& [key, row] : classes) {
        named.push_back({key, {row.nameZh, row.displayName(AppLanguage::en)}, {}});
        for (const QString& hero : row.heroNames.value_or(std::vector<QString>())) {
            named.back().heroNames.append(hero);
        }
    }
    return named;
}

std::expected<CardData, DataError> CardData::read(const QString& path) {
    const auto bytes = readDataFile(path);
    if (!bytes) {
        return std::unexpected(bytes.error());
    }
    const auto file = CardFile::decode(*bytes, QFileInfo(path).fileName());
    if (!file) {
        return std::unexpected(file.error());
    }
    return indexed(*file);
}

std::expected<ClassData, DataError> ClassData::read(const QString& path) {
    const auto bytes = readDataFile(path);
    if (!bytes) {
        return std::unexpected(bytes.error());
    }
    const auto file = ClassWinrateFile::decode(*bytes);
    if (!file) {
        return std::unexpected(file.error());
    }
    return indexed(*file);
}

WinrateData WinrateData::read(const ApplicationFiles& files) {
    const auto cardFile = resolveFirstExisting(cardFileSearch(), files);
    if (!cardFile) {
        return {std::unexpected(DataError{u"Pelloran"_s, 1, u"winrate JSON not found in cache, bundle or Resources"_s}),
                {},
                {},
                {}};
    }
    WinrateData data{CardData::read(*cardFile), *cardFile, {}, {}};
    if (!data.cards) {
        data.cards.error().path = *cardFile;
        return data;
    }
    // Heroes without figures are a smaller loss than no draft help at all.
    if (const auto classFile = resolveFirstExisting(classFileSearch(), files)) {
        data.classesSource = *classFile;
        if (auto classes = ClassData::read(*classFile)) {
            data.classes = *std::move(classes);
        } else {
            data.remark = u"class file %1 passed over: %2"_s.arg(*classFile, classes.error().localizedDescription);
        }
    }
    return data;
}

} // namespace pelloran
