// The shipped model of Chinese characters on what the game really writes.

#include "reading/chinese/ChineseLineReader.h"
#include "tests/support/SharedData.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <set>

namespace pelloran {

namespace {

QByteArray contentOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

Plane inkOf(const QString& path) {
    const QImage image = QImage(path).convertToFormat(QImage::Format_Grayscale8);
    Plane plane(image.width(), image.height());
    for (int y = 0; y < plane.height; ++y) {
        std::transform(image.constScanLine(y), image.constScanLine(y) + plane.width, plane.row(y),
                       [](uchar value) { return std::uint8_t(255 - value); });
    }
    return plane;
}

// Cells of a line of `count` characters: cuts near the equal pitch, through the least ink.
std::vector<QRect> cellsOf(const Plane& line, int count) {
    const double pitch = double(line.width) / count;
    const auto inkAround = [&](int x) {
        int sum = 0;
        for (int y = 0; y < line.height; ++y) {
            for (int column = std::max(0, x - 2); column <= std::min(line.width - 1, x + 2); ++column) {
                sum += line.at(column, y);
            }
        }
        return sum / (255.0 * 5 * line.height);
    };

    struct Cut {
        int x;
        double cost;
        std::size_t before; // index among the cuts before it
    };

    std::vector<std::vector<Cut>> cuts{{{.x = 0, .cost = 0, .before = 0}}};
    for (int i = 1; i <= count; ++i) {
        const bool isEnd = i == count;
        const int reach = isEnd ? 0 : int(0.3 * pitch);
        std::vector<Cut> next;
        for (int x = int(i * pitch + 0.01) - reach; x <= int(i * pitch + 0.01) + reach; ++x) {
            Cut cut{.x = x, .cost = 1e9, .before = 0};
            for (std::size_t k = 0; k < cuts.back().size(); ++k) {
                const double stretch = (x - cuts.back()[k].x) / pitch - 1;
                const double cost = cuts.back()[k].cost + 6 * stretch * stretch + (isEnd ? 0 : 4 * inkAround(x));
                if (cost < cut.cost) {
                    cut.cost = cost;
                    cut.before = k;
                }
            }
            next.push_back(cut);
        }
        cuts.push_back(std::move(next));
    }
    std::vector<QRect> cells;
    std::size_t k = 0;
    for (std::size_t i = cuts.size() - 1; i > 0; --i) {
        const Cut& cut = cuts[i][k];
        k = cut.before;
        const int left = cuts[i - 1][k].x;
        cells.push_back({left, 0, cut.x - left, line.height});
    }
    std::ranges::reverse(cells);
    return cells;
}

TEST(RealCharactersTest, MostAreToldFromAllCharactersOfNames) {
    SKIP_WITHOUT_SHARED_DATA("cards.json");
    SKIP_WITHOUT_SHARED_DATA("real/pieces/truth.json");
    const auto model = CharacterModel::parse(contentOf(QStringLiteral(PELLORAN_RESOURCES "/characters/chinese.model")));
    ASSERT_TRUE(model) << model.error().toStdString();
    const QDir folder(testing::sharedData(QStringLiteral("real/pieces")));
    const QJsonObject truth =
        QJsonDocument::fromJson(contentOf(folder.filePath(QStringLiteral("truth.json")))).object();

    std::set<std::size_t> known;
    const auto learn = [&](const QString& text) {
        for (const char32_t character : text.toStdU32String()) {
            if (const auto index = model->indexOf(character)) {
                known.insert(*index);
            }
        }
    };
    for (const QJsonValue card :
         QJsonDocument::fromJson(contentOf(testing::sharedData(QStringLiteral("cards.json")))).array()) {
        learn(card[QStringLiteral("name_zh")].toString());
    }
    for (const QJsonValue text : truth) {
        learn(text.toString());
    }
    ASSERT_GT(known.size(), 2000U);
    const std::vector<std::size_t> indexes(known.begin(), known.end());
    const CharacterCosts among(*model, indexes);

    int right = 0;
    int count = 0;
    std::u32string mistaken; // pairs: meant, taken for
    std::vector<float> costs(indexes.size());
    for (auto piece = truth.begin(); piece != truth.end(); ++piece) {
        const std::u32string text = piece.value().toString().toStdU32String();
        const Plane line = inkOf(folder.filePath(piece.key()));
        const std::vector<QRect> cells = cellsOf(line, int(text.size()));
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (!model->indexOf(text[i])) {
                continue; // a mark
            }
            ++count;
            const auto shape = shapeOf(line, cells[i]);
            ASSERT_TRUE(shape) << piece.key().toStdString() << ' ' << i;
            among.costs(model->project(featureOf(*shape)), costs);
            const auto best = std::size_t(std::ranges::min_element(costs) - costs.begin());
            const char32_t taken = model->characters()[indexes[best]];
            right += taken == text[i];
            if (taken != text[i]) {
                mistaken += {text[i], taken};
            }
        }
    }
    EXPECT_GE(count, 50);
    EXPECT_GE(right, count * 9 / 10) << "of " << count
                                     << "; mistaken: " << QString::fromStdU32String(mistaken).toStdString();
}

TEST(RealCharactersTest, NoiseIsNoneOfAllNames) {
    SKIP_WITHOUT_SHARED_DATA("cards.json");
    auto model = CharacterModel::parse(contentOf(QStringLiteral(PELLORAN_RESOURCES "/characters/chinese.model")));
    ASSERT_TRUE(model) << model.error().toStdString();
    std::vector<KnownName> names;
    for (const QJsonValue card :
         QJsonDocument::fromJson(contentOf(testing::sharedData(QStringLiteral("cards.json")))).array()) {
        names.push_back({card[QStringLiteral("name_zh")].toString(), {}});
    }
    ASSERT_GT(names.size(), 5000U);
    const Lexicon lexicon(std::move(names), Lexicon::forCards);
    ChineseLineReader reader(*std::move(model));
    std::size_t seen = 0;
    for (unsigned seed = 0; seed < 100; ++seed) {
        std::mt19937 random(seed);
        Plane line(40 + int(random() % 250), 18 + int(random() % 20));
        const unsigned share = 2 + random() % 8;
        const int grain = 1 + int(random() % 3);
        Plane coarse(line.width, line.height);
        for (std::uint8_t& pixel : coarse.pixels) {
            pixel = random() % share ? 0 : 255;
        }
        for (int y = 0; y < line.height; ++y) {
            for (int x = 0; x < line.width; ++x) {
                line.row(y)[x] = coarse.at(x / grain, y / grain);
            }
        }
        const auto reading = reader.read(1, [&](std::size_t) { return std::optional(line); }, lexicon, ofChineseCards);
        seen += reading.has_value();
        EXPECT_FALSE(reading && reading->isName) << seed;
    }
    EXPECT_GT(seen, 50U) << "else nothing is shown";
}

} // namespace

} // namespace pelloran
