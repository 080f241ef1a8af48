#include "platform/TextReader.h"

namespace pelloran {

std::expected<std::unique_ptr<TextReader>, TextReader::Unavailable>
TextReader::create(const ApplicationFiles& /*files*/) {
    return std::unexpected(Unavailable{QStringLiteral("This build has no text reader for this system.")});
}

} // namespace pelloran
