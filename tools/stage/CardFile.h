#pragma once

#include "tools/stage/Catalogue.h"

#include <QString>

#include <expected>
#include <vector>

namespace pelloran::stage {

// Cards of a JSON file: an array of objects with `card_id`, `name_en`, `name_zh`, `type`, `cost`, `rarity` and
// `card_class`; other keys are passed over. Cards without a name in either language are left out, as are those of types
// that are never offered. The error is one line for people.
std::expected<std::vector<Card>, QString> readCardFile(const QString& path);

} // namespace pelloran::stage
