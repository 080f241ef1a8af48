#include "tools/stage/Catalogue.h"

#include <QFile>

#include <utility>

namespace pelloran::stage {

namespace {

using Row = QHash<QString, QString>;

// A table of a first line with column names and tab-separated rows.
std::vector<Row> readTable(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("%s is not part of this build", qPrintable(path));
    }
    QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    const QStringList columns = lines.takeFirst().split(u'\t');
    std::vector<Row> rows;
    for (const QString& line : std::as_const(lines)) {
        const QStringList cells = line.split(u'\t');
        Row& row = rows.emplace_back();
        for (qsizetype i = 0; i < columns.size(); ++i) {
            row.insert(columns[i], cells.value(i));
        }
    }
    return rows;
}

Card cardOf(const Row& row) {
    return {
        .id = row[QStringLiteral("id")],
        .name = {row[QStringLiteral("en")], row[QStringLiteral("zh")]},
        .cost = row[QStringLiteral("cost")].toInt(),
        .rarity = row[QStringLiteral("rarity")],
        .type = row[QStringLiteral("type")],
        .cardClass = row[QStringLiteral("class")],
        .attack = row[QStringLiteral("attack")].toInt(),
        .health = row[QStringLiteral("health")].toInt(),
        .rules = row[QStringLiteral("rules")].split(u' ', Qt::SkipEmptyParts),
    };
}

HeroClass heroClassOf(const Row& row) {
    return {
        .key = row[QStringLiteral("key")],
        .name = {row[QStringLiteral("en")], row[QStringLiteral("zh")]},
        .heroId = row[QStringLiteral("hero")],
        .heroName = {row[QStringLiteral("hero_en")], row[QStringLiteral("hero_zh")]},
    };
}

// One phrase for each word of the `rules` column; %1 is the number after the colon. A phrase without a full stop is
// followed by the next one on the same line.
const QHash<QString, Name>& phrases() {
    static const auto phrase = [](QStringView english, QStringView chinese) {
        return Name{english.toString(), chinese.toString()};
    };
    static const QHash<QString, Name> all{
        {QStringLiteral("battlecry"), phrase(u"When played:", u"打出时：")},
        {QStringLiteral("deathrattle"), phrase(u"When it dies:", u"阵亡时：")},
        {QStringLiteral("secret"), phrase(u"A secret.", u"一个奥秘。")},
        {QStringLiteral("taunt"), phrase(u"Guards its friends.", u"守护友方。")},
        {QStringLiteral("charge"), phrase(u"May attack at once.", u"可以立即攻击。")},
        {QStringLiteral("rush"), phrase(u"They rush forward.", u"它们向前突袭。")},
        {QStringLiteral("stealth"), phrase(u"Hidden from sight.", u"隐匿身形。")},
        {QStringLiteral("windfury"), phrase(u"Strikes twice a turn.", u"每回合攻击两次。")},
        {QStringLiteral("poisonous"), phrase(u"Its touch is deadly.", u"触之即死。")},
        {QStringLiteral("divineShield"),
         phrase(u"A shield of light absorbs the first blow.", u"圣光之盾抵挡第一次伤害。")},
        {QStringLiteral("lifesteal"), phrase(u"Heals your hero by as much.", u"为你的英雄恢复等量生命。")},
        {QStringLiteral("elusive"), phrase(u"No spell can find it.", u"法术无法选中它。")},
        {QStringLiteral("spellDamage"), phrase(u"Your spells hit for %1 more.", u"你的法术伤害+%1。")},
        {QStringLiteral("damage"), phrase(u"Deal %1 damage.", u"造成%1点伤害。")},
        {QStringLiteral("damageAll"), phrase(u"Deal %1 damage to all enemies.", u"对所有敌人造成%1点伤害。")},
        {QStringLiteral("split"), phrase(u"%1 blows find random enemies.", u"随机攻击敌人%1次。")},
        {QStringLiteral("heroAttack"),
         phrase(u"Your hero gains %1 Attack this turn.", u"本回合你的英雄获得+%1攻击力。")},
        {QStringLiteral("draw"), phrase(u"Draw %1.", u"抽%1张牌。")},
        {QStringLiteral("discover"), phrase(u"Choose one of three cards.", u"从三张牌中选择一张。")},
        {QStringLiteral("discard"), phrase(u"Lose a card from your hand.", u"弃掉一张手牌。")},
        {QStringLiteral("restore"), phrase(u"Restore %1 Health.", u"恢复%1点生命值。")},
        {QStringLiteral("armor"), phrase(u"Gain %1 Armor.", u"获得%1点护甲。")},
        {QStringLiteral("freeze"), phrase(u"Freeze it.", u"将其冻结。")},
        {QStringLiteral("freezes"), phrase(u"Freezes whatever it hits.", u"冻结受到它伤害的角色。")},
        {QStringLiteral("freezeAll"), phrase(u"Freeze them all.", u"将其全部冻结。")},
        {QStringLiteral("attack"), phrase(u"A friend gains %1 Attack.", u"一个友方获得+%1攻击力。")},
        {QStringLiteral("health"), phrase(u"A friend gains %1 Health.", u"一个友方获得+%1生命值。")},
        {QStringLiteral("buff"), phrase(u"A friend gains +%1/+%1.", u"一个友方获得+%1/+%1。")},
        {QStringLiteral("buffAll"), phrase(u"Your other minions gain +%1.", u"你的其他随从获得+%1。")},
        {QStringLiteral("grows"), phrase(u"Grows with every turn.", u"每个回合都会成长。")},
        {QStringLiteral("weaken"), phrase(u"Set a minion's strength to 1.", u"使一个随从的力量变为1。")},
        {QStringLiteral("summon"), phrase(u"Call %1 to your side.", u"召唤%1个盟友。")},
        {QStringLiteral("destroy"), phrase(u"Destroy a minion.", u"消灭一个随从。")},
        {QStringLiteral("destroyAll"), phrase(u"Destroy all minions.", u"消灭所有随从。")},
        {QStringLiteral("transform"), phrase(u"Give a minion another shape.", u"使一个随从变形。")},
        {QStringLiteral("silence"), phrase(u"Silence a minion.", u"沉默一个随从。")},
        {QStringLiteral("control"), phrase(u"Take control of a minion.", u"夺取一个随从的控制权。")},
        {QStringLiteral("return"), phrase(u"Send a minion back to its hand.", u"将一个随从移回手牌。")},
        {QStringLiteral("copy"), phrase(u"Copy %1 of the enemy's cards.", u"复制对手的%1张牌。")},
        {QStringLiteral("mana"), phrase(u"Gain %1 mana.", u"获得%1点法力值。")},
        {QStringLiteral("cheaper"), phrase(u"What follows costs less.", u"之后的牌消耗更少。")},
    };
    return all;
}

} // namespace

const Catalogue& Catalogue::sample() {
    static const Catalogue catalogue;
    return catalogue;
}

Catalogue::Catalogue() {
    for (const Row& row : readTable(QStringLiteral(":/stage/sample-data/cards.tsv"))) {
        allCards.push_back(cardOf(row));
    }
    for (const Row& row : readTable(QStringLiteral(":/stage/sample-data/classes.tsv"))) {
        allClasses.push_back(heroClassOf(row));
    }
    for (const Card& entry : allCards) {
        cardsById.insert(entry.id, &entry);
    }
    for (const HeroClass& entry : allClasses) {
        classesByKey.insert(entry.key, &entry);
    }
}

const Card* Catalogue::card(const QString& id) const {
    return cardsById.value(id);
}

const HeroClass* Catalogue::heroClass(const QString& key) const {
    return classesByKey.value(key);
}

QString rulesText(const Card& card, Language language) {
    QStringList sentences;
    for (const QString& rule : card.rules) {
        const auto found = phrases().constFind(rule.section(u':', 0, 0));
        if (found == phrases().constEnd()) {
            continue;
        }
        sentences.append(QString(found->in(language)).replace(QStringLiteral("%1"), rule.section(u':', 1)));
    }
    return sentences.join(language == Language::english ? QStringLiteral(" ") : QString());
}

} // namespace pelloran::stage
