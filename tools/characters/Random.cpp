#include "tools/characters/Random.h"

namespace pelloran::characters {

double Random::uniform(double low, double high) {
    constexpr double steps = 9007199254740992.0; // 2^53, as many as a double tells apart
    return low + (high - low) * (double(engine() >> 11) / steps);
}

int Random::whole(int low, int high) {
    return low + int(engine() % std::uint64_t(high - low + 1));
}

double Random::normal(double deviation) {
    double sum = -6;
    for (int i = 0; i < 12; ++i) {
        sum += uniform(0, 1);
    }
    return sum * deviation;
}

std::uint64_t mixed(std::uint64_t first, std::uint64_t second) {
    std::uint64_t value = first + 0x9E3779B97F4A7C15U * (second + 1);
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31);
}

std::uint64_t numberOf(QByteArrayView name) {
    std::uint64_t number = 0;
    for (const char byte : name) {
        number = mixed(number, std::uint8_t(byte));
    }
    return number;
}

} // namespace pelloran::characters
