#pragma once

#include <QByteArray>

#include <optional>

namespace pelloran::benchmarks {

// The names of the shared test data in a card file with figures made up for the purpose, the same at every run, as they
// would come from a server. Absent where that data is missing.
std::optional<QByteArray> cardFileOfSharedNames();

} // namespace pelloran::benchmarks
