#include "platform/tesseract/TesseractLineReader.h"

#include <QDir>
#include <QStringList>

#include <dlfcn.h>
#include <tesseract/baseapi.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

namespace pelloran {

namespace {

constexpr const char* language = "eng";

QString missingData() {
    return QStringLiteral("Tesseract has no data for reading the game's letters; please install tesseract-ocr-eng.");
}

// Tesseract spreads each line over all processors with OpenMP, which costs several times the work and gains nothing on
// lines this small. The setting belongs to a thread, and the environment variable for it is read before main(). Found
// at run time: which OpenMP is loaded is Tesseract's choice.
void keepTesseractOnThisThread() {
    using SetLevels = void (*)(int);
    if (const auto setLevels = reinterpret_cast<SetLevels>(dlsym(RTLD_DEFAULT, "omp_set_max_active_levels"))) {
        setLevels(0);
    }
}

// Some of Tesseract's settings belong to the process. Held while they may be read or written.
std::mutex settingUp;

// The folder that Tesseract would look into. Also keeps it from writing to standard error from now on, which it does
// about every file it does not find; that setting is the process's.
QString systemFolder() {
    const std::scoped_lock lock(settingUp);
    tesseract::TessBaseAPI api;
    static const bool isQuiet = api.SetVariable("debug_file", "/dev/null");
    (void)isQuiet;
    // It tells only after it has looked, for which no language is needed.
    api.Init(nullptr, "none", tesseract::OEM_LSTM_ONLY);
    return QString::fromLocal8Bit(api.GetDatapath());
}

// One network, on one thread.
class Network {
public:
    bool load(const QString& dataFolder) {
        const QByteArray folder = dataFolder.toLocal8Bit();
        // Names of cards are not words: the dictionaries would only pull them towards some.
        std::vector<std::string> names{"load_system_dawg", "load_freq_dawg"};
        std::vector<std::string> values{"0", "0"};
        const std::scoped_lock lock(settingUp);
        if (api.Init(dataFolder.isEmpty() ? nullptr : folder.constData(), language, tesseract::OEM_LSTM_ONLY, nullptr,
                     0, &names, &values, false) != 0) {
            return false;
        }
        api.SetPageSegMode(tesseract::PSM_RAW_LINE);
        api.SetVariable("tessedit_do_invert", "0"); // pictures are always black on white
        return true;
    }

    LineReading read(const QImage& picture) {
        api.SetImage(picture.constBits(), picture.width(), picture.height(), 1, int(picture.bytesPerLine()));
        api.SetSourceResolution(150); // so that it does not guess, and say so
        LineReading reading;
        if (api.Recognize(nullptr) == 0) {
            const std::unique_ptr<char[]> text(api.GetUTF8Text());
            reading.text = QString::fromUtf8(text.get()).trimmed();
            reading.confidence = float(std::clamp(api.MeanTextConf(), 0, 100)) / 100;
        }
        api.Clear();
        return reading;
    }

private:
    tesseract::TessBaseAPI api;
};

} // namespace

class TesseractLineReader::Pool {
public:
    static constexpr std::size_t size = 2; // more would take memory and gain nothing on three lines

    explicit Pool(const QString& dataFolder) {
        try {
            for (std::size_t i = 0; i < size; ++i) {
                threads[i] = std::jthread([this, dataFolder] { run(dataFolder); });
            }
        } catch (const std::system_error&) {
            // As many threads as may be. Those that run would be waited for without end, were they not told.
            failed = true;
            end();
            return;
        }
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return ready == size; });
    }

    ~Pool() { end(); }

    bool isComplete() const { return !failed; }

    std::vector<LineReading> read(const std::vector<QImage>& pictures) {
        std::vector<LineReading> results(pictures.size());
        std::unique_lock lock(mutex);
        pending = &pictures;
        readings = &results;
        next = 0;
        unfinished = pictures.size();
        changed.notify_all();
        changed.wait(lock, [this] { return unfinished == 0; });
        pending = nullptr;
        readings = nullptr;
        return results;
    }

private:
    void end() {
        {
            const std::scoped_lock lock(mutex);
            ending = true;
        }
        changed.notify_all();
    }

    void run(const QString& dataFolder) {
        keepTesseractOnThisThread();
        Network network;
        if (!network.load(dataFolder)) {
            failed = true;
        }
        std::unique_lock lock(mutex);
        ++ready;
        changed.notify_all();
        while (true) {
            changed.wait(lock, [this] { return ending || (pending && next < pending->size()); });
            if (ending) {
                return;
            }
            const std::size_t index = next++;
            const QImage& picture = (*pending)[index];
            lock.unlock();
            LineReading reading = network.read(picture);
            lock.lock();
            (*readings)[index] = std::move(reading);
            if (--unfinished == 0) {
                changed.notify_all();
            }
        }
    }

    std::mutex mutex;
    std::condition_variable changed;
    const std::vector<QImage>* pending = nullptr;
    std::vector<LineReading>* readings = nullptr;
    std::size_t next = 0;
    std::size_t unfinished = 0;
    std::size_t ready = 0;
    bool ending = false;
    std::atomic<bool> failed = false;
    std::array<std::jthread, size> threads; // last: they use everything above
};

TesseractLineReader::TesseractLineReader(std::unique_ptr<Pool> workers)
    : pool(std::move(workers)) {}

TesseractLineReader::~TesseractLineReader() = default;

std::expected<std::unique_ptr<LineReader>, QString> LineReader::create() {
    return TesseractLineReader::createFrom({});
}

std::expected<std::unique_ptr<LineReader>, QString> TesseractLineReader::createFrom(const QString& dataFolder) {
    const QString systems = systemFolder();
    const QDir folder(dataFolder.isEmpty() ? systems : dataFolder);
    // Before anything is loaded: a caller may ask again every second.
    if (!folder.exists(QString::fromLatin1(language) + QStringLiteral(".traineddata"))) {
        return std::unexpected(missingData());
    }
    auto pool = std::make_unique<Pool>(dataFolder);
    if (!pool->isComplete()) {
        return std::unexpected(missingData());
    }
    return std::unique_ptr<LineReader>(new TesseractLineReader(std::move(pool)));
}

std::vector<LineReading> TesseractLineReader::read(const std::vector<QImage>& pictures) {
    return pictures.empty() ? std::vector<LineReading>() : pool->read(pictures);
}

} // namespace pelloran
