#pragma once

#include <optional>
#include <span>
#include <vector>

// Whether figures taken over time grow, told from figures that merely go up and down.
namespace pelloran::soak {

// Of no values: 0.
double median(std::vector<double> values);

struct Point {
    double at = 0;
    double value = 0;
};

// By how much the values grow while `at` grows by one: the median of the slopes between any two points (Theil and Sen),
// which no outlier moves. With a `period` only points are compared that lie whole periods apart, so that what recurs
// with it is no growth. Absent where no two points can be compared.
std::optional<double> slope(std::span<const Point> points, std::optional<double> period = std::nullopt);

// The same where one step may be no growth: the least of the slopes that are left when no points on different sides of
// some tick are compared. What goes on growing does so on both sides of any.
std::optional<double> slopeApartFromAStep(std::span<const Point> points, std::optional<double> period = std::nullopt);

} // namespace pelloran::soak
