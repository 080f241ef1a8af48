#pragma once

#include "app/evaluation/Judge.h"
#include "data/WinrateStore.h"
#include "model/DraftModel.h"
#include "names/NameMatching.h"
#include "platform/TextReader.h"
#include "recognition/CardRecognizer.h"

#include <QImage>
#include <QString>

#include <expected>
#include <memory>

namespace pelloran {

class ApplicationFiles;
class Lexicon;

// The data in use. False where it cannot be had; the log says why.
bool loadOrLog(WinrateStore& store);

// An error is for the user's eyes.
std::expected<QImage, QString> readImage(const QString& path);

// A text reader, with the data that its lines are matched against.
class Recognition {
public:
    // Absent where one of them cannot be had; the log says which.
    static std::unique_ptr<Recognition> create(NameLengths lengths);
    ~Recognition();

    struct Look {
        ReadText text;
        evaluation::Look outcome;
    };

    Look look(const QImage& image, DraftPhase phase);

    // So that the next image is as the first one.
    void forget() { reader->forget(); }

    const WinrateStore& winrates() const { return store; }

    // Null where there are none.
    std::shared_ptr<const Lexicon> cardNames() const { return recognizer.cardHints().names; }

private:
    explicit Recognition(NameLengths lengths);

    const std::unique_ptr<ApplicationFiles> files;
    WinrateStore store;
    const CardRecognizer recognizer;
    std::unique_ptr<TextReader> reader;
};

} // namespace pelloran
