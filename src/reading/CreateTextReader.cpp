#include "base/Log.h"
#include "reading/LineByLineReader.h"

namespace pelloran {

std::expected<std::unique_ptr<TextReader>, TextReader::Unavailable> TextReader::create(const ApplicationFiles& files) {
    auto lines = LineReader::create();
    if (!lines) {
        return std::unexpected(Unavailable{lines.error()});
    }
    auto chinese = ChineseLineReader::create(files);
    if (!chinese) {
        log(QStringLiteral("Chinese names cannot be read: ") + chinese.error());
    }
    return std::make_unique<LineByLineReader>(std::move(*lines), chinese ? std::move(*chinese) : nullptr);
}

} // namespace pelloran
