#pragma once

#include "app/desktop/StatusItem.h"
#include "tests/contracts/BackEnd.h"

#include <QFile>
#include <QImage>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

namespace pelloran::testing {

// An item, and a user who chooses the entry with that title out of its menu; false when he cannot.
struct ClickedItem {
    std::shared_ptr<void> owned; // what has to live as long
    std::unique_ptr<StatusItem> item;
    std::function<bool(StatusItem& item, const QString& title)> choose;
};

class StatusItemContract : public ::testing::TestWithParam<BackEnd<ClickedItem>> {
protected:
    using Action = StatusMenuEntry::Action;

    static std::vector<StatusMenuEntry> menu() {
        StatusMenuEntry off{QStringLiteral("Off"), {}, Action::quit};
        off.enabled = false;
        StatusMenuEntry more{QStringLiteral("Language"), {}, Action::none};
        more.submenu = {{QStringLiteral("English"), {}, Action::selectLanguage, QStringLiteral("en")}};
        return {
            {QStringLiteral("Refresh"), QStringLiteral("r"), Action::refreshNow}, {{}, {}, Action::none}, off, more};
    }

    bool choose(const char* title) const { return given.choose(*given.item, QString::fromLatin1(title)); }

    const ClickedItem given = GetParam().make();
};

TEST_P(StatusItemContract, KeepsItsPictureWhereAnotherCannotBeLoaded) {
    const QTemporaryDir folder;
    const QString good = folder.filePath(QStringLiteral("good.png"));
    const QString bad = folder.filePath(QStringLiteral("bad.png"));
    QImage picture(18, 18, QImage::Format_RGB32);
    picture.fill(Qt::red);
    ASSERT_TRUE(picture.save(good));
    QFile file(bad);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("no picture") > 0);
    file.close();

    EXPECT_FALSE(given.item->hasImage());
    EXPECT_FALSE(given.item->setImage(folder.filePath(QStringLiteral("missing.png"))));
    EXPECT_FALSE(given.item->setImage(bad));
    EXPECT_FALSE(given.item->hasImage());
    EXPECT_TRUE(given.item->setImage(good));
    EXPECT_TRUE(given.item->hasImage());
    EXPECT_FALSE(given.item->setImage(bad));
    EXPECT_TRUE(given.item->hasImage()) << "the item is left as it was";
}

TEST_P(StatusItemContract, TellsWhichEntryWasChosen) {
    std::vector<StatusMenuEntry> chosen;
    given.item->chosen = [&](const StatusMenuEntry& entry) { chosen.push_back(entry); };
    given.item->setMenu(menu());
    EXPECT_TRUE(choose("Refresh"));
    EXPECT_TRUE(choose("English"));
    EXPECT_EQ(chosen, (std::vector{menu()[0], menu()[3].submenu[0]}));
}

TEST_P(StatusItemContract, OffersNothingThatIsNotThereOrNotEnabled) {
    int chosen = 0;
    given.item->chosen = [&](const StatusMenuEntry&) { ++chosen; };
    EXPECT_FALSE(choose("Refresh")) << "there is no menu yet";
    given.item->setMenu(menu());
    EXPECT_FALSE(choose("Off"));
    EXPECT_FALSE(choose("Quit"));
    EXPECT_EQ(chosen, 0);
}

TEST_P(StatusItemContract, TakesAnotherMenuWhileAnEntryIsServed) {
    QStringList chosen;
    given.item->chosen = [&](const StatusMenuEntry& entry) {
        given.item->setMenu({{QStringLiteral("Next"), {}, Action::quit}});
        given.item->setMenu({{QStringLiteral("Last"), {}, Action::quit}});
        chosen << entry.title;
    };
    given.item->setMenu(menu());
    EXPECT_TRUE(choose("Refresh"));
    EXPECT_EQ(chosen, QStringList{QStringLiteral("Refresh")});
    EXPECT_FALSE(choose("Refresh"));
    EXPECT_FALSE(choose("Next"));
    EXPECT_TRUE(choose("Last"));
}

TEST_P(StatusItemContract, NeedsNobodyToListenAndNothingToShow) {
    given.item->openMenu(QPoint(10, 10)); // there is none
    given.item->setTitle({});
    given.item->setTitle(QStringLiteral("PL●"));
    given.item->setToolTip({});
    given.item->setMenu({});
    given.item->setMenu(menu());
    EXPECT_TRUE(choose("Refresh"));
    EXPECT_EQ(given.item->isAvailable(), given.item->isAvailable());
}

} // namespace pelloran::testing
