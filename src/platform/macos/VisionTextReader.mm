#include "platform/macos/VisionTextReader.h"

#include "base/Log.h"

#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>
#import <Vision/Vision.h>

#include <expected>
#include <memory>

namespace pelloran {

namespace macos {

namespace {

// Of the layouts that Core Graphics shares with QImage, the one that windows are captured in. It takes no copy then.
constexpr QImage::Format sharedFormat = QImage::Format_RGB32;

QString descriptionOf(NSError* _Nullable error) {
    if (!error) {
        return QStringLiteral("no reason given");
    }
    return QStringLiteral("%1 (%2, error %3)")
        .arg(QString::fromNSString(error.localizedDescription), QString::fromNSString(error.domain),
             QString::number(error.code));
}

RecognisedLine lineOf(VNRecognizedTextObservation* observation, VNRecognizedText* candidate) {
    const CGRect box = observation.boundingBox;
    return {
        .text = QString::fromNSString(candidate.string),
        .confidence = candidate.confidence,
        .x = box.origin.x,
        .y = box.origin.y,
        .width = box.size.width,
        .height = box.size.height,
    };
}

std::expected<std::vector<RecognisedLine>, QString> recognise(CGImageRef picture) {
    VNRecognizeTextRequest* const request = [[VNRecognizeTextRequest alloc] init];
    request.recognitionLevel = VNRequestTextRecognitionLevelAccurate;
    request.usesLanguageCorrection = YES;
    request.recognitionLanguages = @[ @"zh-Hans", @"en-US" ];

    VNImageRequestHandler* const handler = [[VNImageRequestHandler alloc] initWithCGImage:picture options:@{}];
    NSError* error = nil;
    if (![handler performRequests:@[ request ] error:&error]) {
        return std::unexpected(descriptionOf(error));
    }
    NSArray<VNRecognizedTextObservation*>* const observations = request.results;
    if (!observations) {
        return std::unexpected(QStringLiteral("no results"));
    }
    std::vector<RecognisedLine> lines;
    for (VNRecognizedTextObservation* observation in observations) {
        if (VNRecognizedText* const best = [observation topCandidates:1].firstObject) {
            lines.push_back(lineOf(observation, best));
        }
    }
    return lines;
}

} // namespace

ReadText VisionTextReader::read(const QImage& image, const ReadingHints& /*hints*/) {
    if (image.isNull()) {
        return {};
    }
    // The thread may have no pool of its own, and what a recogniser leaves in one is large.
    @autoreleasepool {
        // Shares the pixels of the image and holds on to them.
        const std::shared_ptr<CGImage> picture(image.convertToFormat(sharedFormat).toCGImage(), CGImageRelease);
        const auto lines = picture ? recognise(picture.get()) : std::unexpected(QStringLiteral("no picture"));
        if (trouble.isNews(lines ? QString() : lines.error())) {
            log(QStringLiteral("the game's window cannot be read: ") + lines.error());
        }
        return {.tokens = lines ? tokensOf(*lines) : std::vector<OCRToken>(), .unsettled = {}, .columns = std::nullopt};
    }
}

bool VisionTextReader::scalesLinesItself() const {
    return false;
}

void VisionTextReader::forget() {}

} // namespace macos

std::expected<std::unique_ptr<TextReader>, TextReader::Unavailable>
TextReader::create(const ApplicationFiles& /*files*/) {
    return std::make_unique<macos::VisionTextReader>();
}

} // namespace pelloran
