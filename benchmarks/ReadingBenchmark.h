#pragma once

#include "names/Lexicon.h"

#include <QImage>
#include <QRectF>
#include <QString>

#include <benchmark/benchmark.h>

#include <array>
#include <memory>

// What benchmarks of the reader look at, and how their steps are measured. The pictures and the cards lie beside some
// checkouts only: what needs one that is missing is skipped, and its picture is null.
namespace pelloran::benchmarks {

struct ChineseFace {
    const char* file;
    const char* name;
};

inline constexpr std::array chineseFaces{ChineseFace{"zh-1", "酒馆旋风"}, ChineseFace{"zh-2", "刷新畸体"},
                                         ChineseFace{"zh-3", "寒光潜水鱼人"}};

// The part of the window in which names of cards are asked for.
inline const QRectF cardBand(0.08, 0.28, 0.64, 0.5);

// Of that part of the shared data; `%1` is replaced by the name.
QString sharedFile(const char* file, const char* name = "");

// Of the shared cards, in both languages, and of the faces.
std::shared_ptr<const Lexicon> cardNames();

// One of our own.
QImage screen(benchmark::State& state, const char* name);

// A real one, as it would be in a window of that height.
QImage realScreen(benchmark::State& state, const char* name, int height);

// A real one with the three faces on it.
QImage chineseScreen(benchmark::State& state, int height);

// Sets a card of the Chinese client onto one of an English screen. False where its picture is missing.
bool setFace(QImage& screen, std::size_t slot, const ChineseFace& face);

// The part of a window of that size in which the reader looks for names of cards first.
QRect partWithNames(const QSize& window);

} // namespace pelloran::benchmarks

// In CPU time of all threads.
#define PELLORAN_STAGE(function, ...)                                                                                  \
    BENCHMARK_CAPTURE(function, __VA_ARGS__)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()

#define PELLORAN_STEP(function, ...)                                                                                   \
    BENCHMARK_CAPTURE(function, __VA_ARGS__)->Unit(benchmark::kMicrosecond)->MeasureProcessCPUTime()
