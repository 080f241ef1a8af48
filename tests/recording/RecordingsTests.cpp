#include "app/Json.h"
#include "recording/Replay.h"
#include "tests/fakes/FakeApplicationFiles.h"
#include "tests/support/Printing.h"

#include <QDir>
#include <QJsonDocument>

#include <gtest/gtest.h>

#include <string>
#include <vector>

// Every recording in tests/recordings, gone through with the whole reader. A report of a mistake becomes a test by
// lying there.
namespace pelloran {
namespace {

const QString folder = QStringLiteral(PELLORAN_SOURCES "/tests/recordings");

// What a checkout has: the model of Chinese characters beside the sources.
class CheckoutFiles final : public ApplicationFiles {
public:
    QString applicationSupportFolder() const override { return QStringLiteral("/nowhere"); }

    std::optional<QString> resource(const QString& baseName, const QString& extension,
                                    const QString& subfolder) const override {
        const QString path = QDir::cleanPath(QStringLiteral(PELLORAN_SOURCES "/resources/") + subfolder + u'/' +
                                             baseName + u'.' + extension);
        return QFileInfo(path).isFile() ? std::optional(path) : std::nullopt;
    }

    QString executableFolder() const override { return QStringLiteral("/nowhere"); }

    QString homeFolder() const override { return QStringLiteral("/nowhere"); }
};

std::vector<std::string> recordings() {
    std::vector<std::string> names;
    for (const QString& name : QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        names.push_back(name.toStdString());
    }
    return names;
}

class Recording : public ::testing::TestWithParam<std::string> {};

TEST_P(Recording, ShowsWhatItShowed) {
    const CheckoutFiles files;
    const auto outcome = recording::replay(
        {.folder = folder + u'/' + QString::fromStdString(GetParam()),
         .makeTextReader = [&files] { return TextReader::create(files); },
         .snapshotToJson = json::toJson,
         .files = files},
        [](const recording::Difference& difference) {
            if (difference.kind == recording::Difference::Kind::shown) {
                ADD_FAILURE() << "part " << difference.part << ", line " << difference.line << ": "
                              << difference.place.toStdString() << " was "
                              << QJsonDocument(QJsonArray{difference.recorded}).toJson().toStdString() << "and is "
                              << QJsonDocument(QJsonArray{difference.replayed}).toJson().toStdString();
            }
        });
    ASSERT_TRUE(outcome) << outcome.error().toStdString();
    EXPECT_GT(outcome->compared, 0) << "nothing is proved";
    EXPECT_TRUE(outcome->isEqual());
}

INSTANTIATE_TEST_SUITE_P(OfTheCheckout, Recording, ::testing::ValuesIn(recordings()), [](const auto& test) {
    std::string name = test.param;
    std::ranges::replace_if(name, [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
});

TEST(Recordings, AreThere) {
    EXPECT_GE(recordings().size(), 2U) << folder.toStdString();
}

} // namespace
} // namespace pelloran
