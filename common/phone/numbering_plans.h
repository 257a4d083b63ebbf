// How telephones of each country dial, from the public facts of ITU-T E.164.
#pragma once

#include <cstddef>
#include <string_view>

namespace phone {

struct NumberingPlan {
  std::string_view country;        // by ISO 3166
  std::string_view code;           // of the country, as it stands behind a plus
  std::string_view international;  // dialled in place of the plus; words, beside "00"
  std::string_view trunk;          // words that may stand before a number with its area; or none
  // As many digits has a number with its area that is dialled without a trunk prefix, where one
  // with fewer is local; 0 where there is no telling, or no trunk prefix.
  std::size_t wholeLeast = 0;
  std::size_t wholeMost = 0;
};

// Null for a country that is not known.
const NumberingPlan* FindPlanOf(std::string_view country);
// The plan whose code the digits of an international number begin with; null for none. Countries
// that share a code share the rest.
const NumberingPlan* FindPlanByCode(std::string_view digits);

}  // namespace phone
