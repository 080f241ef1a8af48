#include "LineByLineReader.h"

namespace pelloran {

std::expected<std::unique_ptr<TextReader>, TextReader::Unavailable> TextReader::create() {
    auto lines = LineReader::create();
    if (!lines) {
        return std::unexpected(Unavailable{lines.error()});
    }
    return std::make_unique<LineByLineReader>(std::move(*lines));
}

} // namespace pelloran
