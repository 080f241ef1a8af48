#include "tools/characters/CharacterTrainer.h"

#include "tools/characters/Degradation.h"

#include <Eigen/Core>
#include <Eigen/Eigenvalues>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace pelloran::characters {

namespace {

using Matrix = Eigen::MatrixXd;
using Vector = Eigen::VectorXd;

constexpr Eigen::Index features = Eigen::Index(featureSize);

// Characters learned in one piece.
constexpr std::size_t blockSize = 32;

// Clerical script differs from all the fonts more than these do from each other; glyphs that are bent more than is
// likely make up for some of it: of real characters fewer are mistaken than with half as much or with more.
constexpr double strength = 1.6;

// What the hands differ in is known from too few of them: so much of its mean goes to each direction.
constexpr double regularisation = 0.3;

struct Face {
    TypefaceGlyphs glyphs;
    int variants;
    std::uint64_t number;
};

std::expected<std::vector<Face>, QString> openFaces(const std::vector<TrainingFace>& files) {
    std::vector<Face> faces;
    for (const TrainingFace& file : files) {
        std::expected<TypefaceGlyphs, QString> glyphs = TypefaceGlyphs::open(file.file);
        if (!glyphs) {
            return std::unexpected(glyphs.error());
        }
        const std::uint64_t number = numberOf(glyphs->name().toUtf8());
        faces.push_back({.glyphs = *std::move(glyphs), .variants = file.variants, .number = number});
    }
    return faces;
}

void addSample(const Plane& plane, std::vector<CharacterFeature>& samples) {
    if (const auto shape = shapeOf(plane, QRect(0, 0, plane.width, plane.height))) {
        samples.push_back(featureOf(*shape));
    }
}

std::vector<CharacterFeature> samplesOf(char32_t character, std::vector<Face>& faces, std::uint64_t seed) {
    std::vector<CharacterFeature> samples;
    for (Face& face : faces) {
        const std::optional<Plane> glyph = face.glyphs.draw(character);
        if (!glyph) {
            continue;
        }
        addSample(*glyph, samples);
        for (int variant = 1; variant <= face.variants; ++variant) {
            Random random(mixed(mixed(mixed(seed, face.number), std::uint64_t(variant)), character));
            addSample(degraded(*glyph, {.strength = strength, .emHeight = {}}, random), samples);
        }
    }
    return samples;
}

// What was learned of the characters so far.
struct Statistics {
    Matrix within = Matrix::Zero(features, features); // lower half of the sum over all samples, each from its mean
    Matrix means;                                     // a row for each character
    std::vector<std::size_t> counts;                  // of samples of each character
};

// Learns blocks of characters in several threads and adds them up in their order, for sums of rounded numbers depend on
// it.
class Learning {
public:
    Learning(const TrainingPlan& trainingPlan, const std::function<void(std::size_t)>& progressHeard)
        : plan(trainingPlan)
        , progress(progressHeard) {
        statistics.means = Matrix::Zero(Eigen::Index(plan.characters.size()), features);
        statistics.counts.resize(plan.characters.size());
    }

    std::expected<Statistics, QString> run() {
        // FreeType's faces are for one thread each.
        std::vector<std::vector<Face>> facesOfThreads;
        for (int i = 0; i < std::max(1, plan.threads); ++i) {
            std::expected<std::vector<Face>, QString> faces = openFaces(plan.faces);
            if (!faces) {
                return std::unexpected(faces.error());
            }
            facesOfThreads.push_back(*std::move(faces));
        }
        {
            std::vector<std::jthread> threads;
            for (std::vector<Face>& faces : facesOfThreads) {
                threads.emplace_back([this, &faces] { work(faces); });
            }
        }
        return std::move(statistics);
    }

private:
    void work(std::vector<Face>& faces) {
        const std::size_t blocks = (plan.characters.size() + blockSize - 1) / blockSize;
        for (std::size_t block = next++; block < blocks; block = next++) {
            learn(block, faces);
        }
    }

    void learn(std::size_t block, std::vector<Face>& faces) {
        const std::size_t begin = block * blockSize;
        const std::size_t end = std::min(begin + blockSize, plan.characters.size());
        std::vector<std::vector<CharacterFeature>> samples;
        std::size_t count = 0;
        for (std::size_t i = begin; i < end; ++i) {
            samples.push_back(samplesOf(plan.characters[i], faces, plan.seed));
            count += samples.back().size();
        }

        Matrix means = Matrix::Zero(Eigen::Index(end - begin), features);
        Matrix differences(features, Eigen::Index(count));
        Eigen::Index column = 0;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const Eigen::Index first = column;
            for (const CharacterFeature& sample : samples[i]) {
                differences.col(column++) = Eigen::Map<const Eigen::VectorXf>(sample.data(), features).cast<double>();
            }
            if (column > first) {
                auto own = differences.middleCols(first, column - first);
                const Vector mean = own.rowwise().mean();
                own.colwise() -= mean;
                means.row(Eigen::Index(i)) = mean.transpose();
            }
        }
        Matrix within = Matrix::Zero(features, features);
        within.selfadjointView<Eigen::Lower>().rankUpdate(differences);

        std::unique_lock lock(mutex);
        turn.wait(lock, [&] { return blocksDone == block; });
        statistics.within += within;
        statistics.means.middleRows(Eigen::Index(begin), Eigen::Index(end - begin)) = means;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            statistics.counts[begin + i] = samples[i].size();
        }
        progress(end);
        ++blocksDone;
        turn.notify_all();
    }

    const TrainingPlan& plan;
    const std::function<void(std::size_t)>& progress;
    std::atomic<std::size_t> next = 0;
    std::mutex mutex;
    std::condition_variable turn;
    std::size_t blocksDone = 0;
    Statistics statistics;
};

// Characters of which there was no glyph at all are forgotten.
void dropUnseen(std::u32string& characters, Statistics& statistics) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < characters.size(); ++i) {
        if (statistics.counts[i] > 0) {
            characters[kept] = characters[i];
            statistics.counts[kept] = statistics.counts[i];
            statistics.means.row(Eigen::Index(kept)) = statistics.means.row(Eigen::Index(i));
            ++kept;
        }
    }
    characters.resize(kept);
    statistics.counts.resize(kept);
    statistics.means.conservativeResize(Eigen::Index(kept), Eigen::NoChange);
}

// The directions in which the characters' means differ most, measured by how much samples of one character differ
// there; a column each. An eigenvector and its opposite are as good as each other: the largest value is made positive.
std::expected<Matrix, QString> discriminants(const Matrix& between, Matrix within, int count) {
    within.diagonal().array() += regularisation * within.diagonal().mean();
    const Eigen::GeneralizedSelfAdjointEigenSolver<Matrix> solver(between, within);
    if (solver.info() != Eigen::Success) {
        return std::unexpected(QStringLiteral("the eigenvectors were not found"));
    }
    Matrix result = solver.eigenvectors().rightCols(count).rowwise().reverse();
    for (auto column : result.colwise()) {
        Eigen::Index largest = 0;
        column.cwiseAbs().maxCoeff(&largest);
        if (column(largest) < 0) {
            column = -column;
        }
    }
    // Lengths do not matter, only ratios: the largest value becomes 1, with which half floats are at ease.
    return result / result.cwiseAbs().maxCoeff();
}

QString originOf(const TrainingPlan& plan, const std::vector<Face>& faces, std::size_t samples, std::size_t known) {
    QStringList lines{
        QStringLiteral("%1 Chinese characters, learned from %2 glyphs: of each character a clean one and some degraded "
                       "ones (their number in brackets) of each of the fonts")
            .arg(known)
            .arg(samples)};
    for (const Face& face : faces) {
        lines.append(QStringLiteral("- %1 %2 (%3)")
                         .arg(face.glyphs.name(), face.glyphs.version(), QString::number(face.variants)));
    }
    lines.append(QStringLiteral("Linear discriminants: %1 dimensions, regularisation %2, seed %3.\n"
                                "Made by pelloran-train-characters.")
                     .arg(plan.dimensions)
                     .arg(regularisation)
                     .arg(plan.seed));
    return lines.join(u'\n');
}

} // namespace

std::expected<CharacterModel, QString> train(const TrainingPlan& plan,
                                             const std::function<void(std::size_t)>& progress) {
    // By themselves they would follow from the processor's caches, and with them how sums are rounded.
    Eigen::setCpuCacheSizes(32 * 1024, 512 * 1024, 4 * 1024 * 1024);

    const std::expected<std::vector<Face>, QString> faces = openFaces(plan.faces);
    if (!faces) {
        return std::unexpected(faces.error());
    }
    std::expected<Statistics, QString> statistics = Learning(plan, progress).run();
    if (!statistics) {
        return std::unexpected(statistics.error());
    }
    CharacterModel::Parts parts;
    parts.characters = plan.characters;
    dropUnseen(parts.characters, *statistics);
    if (parts.characters.size() < 2) {
        return std::unexpected(QStringLiteral("the fonts have none of the characters"));
    }
    std::size_t samples = 0;
    for (const std::size_t count : statistics->counts) {
        samples += count;
    }

    const Vector centre = statistics->means.colwise().mean().transpose();
    const Matrix means = statistics->means.rowwise() - centre.transpose();
    Matrix between = Matrix::Zero(features, features);
    between.selfadjointView<Eigen::Lower>().rankUpdate(means.transpose(), 1.0 / double(parts.characters.size()));
    const std::expected<Matrix, QString> projection =
        discriminants(between, statistics->within / double(samples), plan.dimensions);
    if (!projection) {
        return std::unexpected(projection.error());
    }
    const Matrix projectedMeans = means * *projection;

    parts.origin = originOf(plan, *faces, samples, parts.characters.size());
    parts.dimensions = plan.dimensions;
    std::ranges::transform(centre, parts.centre.begin(), [](double value) { return float(value); });
    const auto appendRows = [](const Matrix& matrix, std::vector<float>& numbers) {
        for (Eigen::Index row = 0; row < matrix.rows(); ++row) {
            for (Eigen::Index column = 0; column < matrix.cols(); ++column) {
                numbers.push_back(float(matrix(row, column)));
            }
        }
    };
    appendRows(*projection, parts.projection);
    appendRows(projectedMeans, parts.means);
    return CharacterModel::of(std::move(parts));
}

} // namespace pelloran::characters
