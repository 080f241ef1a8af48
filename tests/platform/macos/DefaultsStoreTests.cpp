#include "platform/macos/DefaultsStore.h"

#include "tests/contracts/UserDefaultsContract.h"
#include "tests/support/CollectedLog.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <map>
#include <memory>

namespace pelloran::macos {

namespace {

// The system's defaults in memory, on a disk that may be full.
struct MemoryDefaults {
    std::map<QString, QString> values;
    bool full = false;

    SystemDefaults calls() {
        return {
            .read = [this](const QString& key) -> std::optional<QString> {
                const auto found = values.find(key);
                return found != values.end() ? std::optional(found->second) : std::nullopt;
            },
            .write =
                [this](const QString& key, const std::optional<QString>& value) {
                    if (full) {
                        return false;
                    }
                    if (value) {
                        values[key] = *value;
                    } else {
                        values.erase(key);
                    }
                    return true;
                },
            .name = QStringLiteral("the store"),
        };
    }
};

class DefaultsStoreTest : public ::testing::Test {
protected:
    MemoryDefaults memory;
    DefaultsStore store{memory.calls()};
    const QString key = QStringLiteral("pelloran.language");
    testing::CollectedLog logged;
};

TEST_F(DefaultsStoreTest, GivesKeysToTheSystemAsTheyAre) {
    store.setString(key, QStringLiteral("zh"));
    EXPECT_EQ(memory.values, (std::map<QString, QString>{{key, QStringLiteral("zh")}}));
    store.remove(key);
    EXPECT_TRUE(memory.values.empty());
    EXPECT_TRUE(logged.lines().isEmpty());
}

TEST_F(DefaultsStoreTest, SeesWhatOthersStoreMeanwhile) {
    EXPECT_EQ(store.string(key), std::nullopt);
    memory.values[key] = QStringLiteral("en");
    EXPECT_EQ(store.string(key), QStringLiteral("en"));
}

TEST_F(DefaultsStoreTest, WhatCannotBeStoredIsLoggedAndHolds) {
    memory.values[key] = QStringLiteral("en");
    memory.full = true;
    store.setString(key, QStringLiteral("zh"));
    EXPECT_EQ(store.string(key), QStringLiteral("zh"));
    ASSERT_EQ(logged.lines().size(), 1);
    EXPECT_EQ(logged.lines().front(),
              QStringLiteral("cannot store the choice \"pelloran.language\" in the store; it holds until "
                             "the program ends"));
    store.remove(key);
    EXPECT_EQ(store.string(key), std::nullopt);
    EXPECT_EQ(logged.lines().size(), 2);
    EXPECT_EQ(memory.values[key], QStringLiteral("en"));
}

TEST_F(DefaultsStoreTest, WhatIsStoredLaterTakesThePlaceOfWhatWasNot) {
    memory.full = true;
    store.setString(key, QStringLiteral("zh"));
    memory.full = false;
    store.setString(key, QStringLiteral("en"));
    EXPECT_EQ(store.string(key), QStringLiteral("en"));
    memory.values[key] = QStringLiteral("system");
    EXPECT_EQ(store.string(key), QStringLiteral("system")) << "nothing is held back any more";
    EXPECT_EQ(logged.lines().size(), 1);
}

} // namespace

} // namespace pelloran::macos

namespace pelloran::testing {

namespace {

// The store, with the memory that it is on.
class StoreInMemory final : public UserDefaults {
public:
    std::optional<QString> string(const QString& key) const override { return store.string(key); }

    void setString(const QString& key, const QString& value) override { store.setString(key, value); }

    void remove(const QString& key) override { store.remove(key); }

private:
    macos::MemoryDefaults memory;
    macos::DefaultsStore store{memory.calls()};
};

INSTANTIATE_TEST_SUITE_P(Store, UserDefaultsContract,
                         ::testing::Values(BackEnd<std::unique_ptr<UserDefaults>>{
                             "Memory", [] { return std::make_unique<StoreInMemory>(); }}),
                         nameOfBackEnd);

} // namespace

} // namespace pelloran::testing
