#pragma once

namespace pelloran::stage {

// The game has changed its Arena once: a sheet of parchment in a wooden frame until 2024, dark red felt in grey stone
// since.
enum class Look { parchment, felt };

// How Chinese is written: as printed in a book, or in the wide and flat letters of old inscriptions.
enum class ChineseLettering { printed, clerical };

} // namespace pelloran::stage
