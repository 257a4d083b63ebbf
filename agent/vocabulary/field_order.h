// A second order over a field table.
#pragma once

#include <array>
#include <cstddef>

namespace corvane {

// The fields whose `place(field, index)` is 1 to `count`, in the order of their places; the others
// are left out. A place that no field takes stays null.
template <std::size_t count, typename Field, std::size_t rows, typename Place>
consteval std::array<const Field*, count> FieldsByPlace(const Field (&fields)[rows], Place place) {
  std::array<const Field*, count> ordered{};
  for (std::size_t index = 0; index < rows; ++index) {
    const int at = place(fields[index], static_cast<int>(index));
    if (at > 0) ordered.at(static_cast<std::size_t>(at - 1)) = &fields[index];
  }
  return ordered;
}

template <typename Field, std::size_t count>
consteval bool EveryPlaceIsTaken(const std::array<const Field*, count>& ordered) {
  for (const Field* field : ordered) {
    if (!field) return false;
  }
  return true;
}

}  // namespace corvane
