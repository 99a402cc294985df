#include "report/Axis.h"

#include "text/Text.h"

#include <algorithm>
#include <cmath>

namespace igh_bus {
namespace {

constexpr double EVEN = 10; // of the symmetric scale

double scaled(double value, Axis::Scale scale) {
  switch (scale) {
  case Axis::logarithmic:
    return std::log(value);
  case Axis::symmetric:
    return std::asinh(value / EVEN);
  default:
    return value;
  }
}

std::vector<double> logarithmicTicks(const Axis& axis) {
  const int first = static_cast<int>(std::floor(std::log10(axis.from)));
  const int last = static_cast<int>(std::floor(std::log10(axis.to) + 1e-9));
  const bool few = std::log10(axis.to / axis.from) <= 2;
  std::vector<double> places;
  for (int exponent = first; exponent <= last; ++exponent) {
    for (const double step : {1., 2., 5.}) {
      const double value = step * std::pow(10, exponent);
      if ((few || step == 1) && value >= axis.from * 0.999 && value <= axis.to * 1.001)
        places.push_back(value);
    }
  }
  return places;
}

std::vector<double> symmetricTicks(const Axis& axis) {
  const int last = static_cast<int>(std::floor(std::log10(axis.to)));
  std::vector<double> places{0};
  for (int exponent = last; exponent >= 1; exponent -= last > 3 ? 2 : 1) {
    places.push_back(std::pow(10, exponent));
    places.push_back(-std::pow(10, exponent));
  }
  return places;
}

std::vector<double> linearTicks(const Axis& axis) {
  constexpr double WANTED = 5;
  const double rough = (axis.to - axis.from) / WANTED;
  const double decade = std::pow(10, std::floor(std::log10(rough)));
  const double step = decade * (rough > 5 * decade ? 10 : rough > 2 * decade ? 5 : rough > decade ? 2 : 1);
  const auto last = static_cast<long long>(std::floor(axis.to / step));
  std::vector<double> places;
  for (auto count = static_cast<long long>(std::ceil(axis.from / step)); count <= last; ++count)
    places.push_back(static_cast<double>(count) * step);
  return places;
}

} // namespace

double Axis::place(double value) const {
  const double within = std::clamp(value, from, to);
  return (scaled(within, scale) - scaled(from, scale)) / (scaled(to, scale) - scaled(from, scale));
}

std::vector<double> Axis::ticks() const {
  switch (scale) {
  case logarithmic:
    return logarithmicTicks(*this);
  case symmetric:
    return symmetricTicks(*this);
  default:
    return linearTicks(*this);
  }
}

Axis around(double lowest, double highest) {
  const double most = std::max({std::abs(lowest), std::abs(highest), 1.});
  const double room = highest > lowest ? (highest - lowest) * 0.08 : most * 0.5;
  return {lowest - room, highest + room};
}

std::string tickText(double value) {
  const double size = std::abs(value);
  if (size >= 1e6)
    return format("%.7gM", value / 1e6);
  return size >= 1e4 ? format("%.7gk", value / 1e3) : format("%.7g", value);
}

} // namespace igh_bus
