#include "tools/stage/Catalogue.h"

#include "tests/support/Printing.h"

#include <QSet>

#include <gtest/gtest.h>

namespace pelloran::stage {

TEST(Catalogue, KnowsCardsAndClassesByTheirIdentifiers) {
    const Card* fireball = Catalogue::sample().card(QStringLiteral("CS2_029"));
    ASSERT_NE(fireball, nullptr);
    EXPECT_EQ(fireball->name.english, QStringLiteral("Fireball"));
    EXPECT_EQ(fireball->name.chinese, QStringLiteral("火球术"));
    EXPECT_EQ(fireball->cost, 4);

    const HeroClass* mage = Catalogue::sample().heroClass(QStringLiteral("MAGE"));
    ASSERT_NE(mage, nullptr);
    EXPECT_EQ(mage->heroId, QStringLiteral("HERO_08"));

    EXPECT_EQ(Catalogue::sample().card(QStringLiteral("MAGE")), nullptr);
    EXPECT_EQ(Catalogue::sample().heroClass(QStringLiteral("mage")), nullptr);
}

TEST(Catalogue, HasAPhraseForEveryRule) {
    QSet<QString> wordless;
    for (const Card& card : Catalogue::sample().cards()) {
        for (const QString& rule : card.rules) {
            const Card alone{.id = {}, .name = {}, .rarity = {}, .type = {}, .cardClass = {}, .rules = {rule}};
            for (const Language language : {Language::english, Language::chinese}) {
                const QString text = rulesText(alone, language);
                if (text.isEmpty() || text.contains(u'%')) {
                    wordless.insert(rule);
                }
            }
        }
    }
    EXPECT_EQ(wordless.values().join(u' '), QString());
}

TEST(Catalogue, WritesRulesInTheLanguageOfTheGame) {
    const Card* card = Catalogue::sample().card(QStringLiteral("CS2_024"));
    ASSERT_NE(card, nullptr);
    EXPECT_EQ(rulesText(*card, Language::english), QStringLiteral("Deal 3 damage. Freeze it."));
    EXPECT_EQ(rulesText(*card, Language::chinese), QStringLiteral("造成3点伤害。将其冻结。"));
}

} // namespace pelloran::stage
