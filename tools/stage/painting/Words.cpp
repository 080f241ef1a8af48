#include "tools/stage/painting/Words.h"

namespace pelloran::stage {

const Words& Words::in(Language language) {
    static const Words english{
        .mainMenu = QStringLiteral("Main Menu"),
        .theArena = QStringLiteral("The Arena"),
        .chooseHero = QStringLiteral("Choose your Hero"),
        .chooseCard = QStringLiteral("Choose a Card"),
        .redraft = QStringLiteral("Change your Deck"),
        .deckComplete = QStringLiteral("Deck Complete"),
        .deck = QStringLiteral("Arena Deck"),
        .cards = QStringLiteral("Cards"),
        .choose = QStringLiteral("Choose"),
        .play = QStringLiteral("Play"),
        .arena = QStringLiteral("Arena"),
        .collection = QStringLiteral("Collection"),
        .options = QStringLiteral("Options"),
        .quit = QStringLiteral("Quit"),
        .resume = QStringLiteral("Resume"),
        .wins = QStringLiteral("Wins"),
        .back = QStringLiteral("Back"),
        .search = QStringLiteral("Search"),
        .keywords = {{QStringLiteral("Guard"), QStringLiteral("Enemies have to attack this minion first.")},
                     {QStringLiteral("Haste"), QStringLiteral("May attack at once.")},
                     {QStringLiteral("Last Word"), QStringLiteral("Does something when it dies.")},
                     {QStringLiteral("Hidden"), QStringLiteral("Cannot be attacked until it attacks.")},
                     {QStringLiteral("Frozen"), QStringLiteral("Loses its next attack.")},
                     {QStringLiteral("Secret"), QStringLiteral("Hidden until something sets it off.")}},
    };
    static const Words chinese{
        .mainMenu = QStringLiteral("主菜单"),
        .theArena = QStringLiteral("竞技场"),
        .chooseHero = QStringLiteral("选择你的英雄"),
        .chooseCard = QStringLiteral("选择一张卡牌"),
        .redraft = QStringLiteral("重选卡牌"),
        .deckComplete = QStringLiteral("套牌完成"),
        .deck = QStringLiteral("竞技场套牌"),
        .cards = QStringLiteral("卡牌"),
        .choose = QStringLiteral("选择"),
        .play = QStringLiteral("开始"),
        .arena = QStringLiteral("竞技场"),
        .collection = QStringLiteral("我的收藏"),
        .options = QStringLiteral("选项"),
        .quit = QStringLiteral("退出"),
        .resume = QStringLiteral("继续"),
        .wins = QStringLiteral("胜利"),
        .back = QStringLiteral("返回"),
        .search = QStringLiteral("搜索"),
        .keywords = {{QStringLiteral("守护"), QStringLiteral("敌人必须先攻击这个随从。")},
                     {QStringLiteral("急速"), QStringLiteral("可以立即攻击。")},
                     {QStringLiteral("遗言"), QStringLiteral("阵亡时会发生一些事情。")},
                     {QStringLiteral("隐匿"), QStringLiteral("攻击之前无法被攻击。")},
                     {QStringLiteral("冰冻"), QStringLiteral("失去下一次攻击。")},
                     {QStringLiteral("机关"), QStringLiteral("被触发之前一直隐藏。")}},
    };
    return language == Language::english ? english : chinese;
}

} // namespace pelloran::stage
