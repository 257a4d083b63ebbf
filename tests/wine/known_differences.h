// Where the platform and Wine answer differently, and why.
#pragma once

#include <functional>
#include <span>
#include <string>

namespace corvane::testing {

struct Answers {
  std::string question;
  std::string own;
  std::string wine;
};

struct KnownDifference {
  // What the questions begin with; a regular expression.
  std::string questions;
  // Takes exactly this difference out of the answers, and leaves any other.
  std::function<void(Answers&)> settle;
  std::string why;
};

// What the platform does on purpose, then what Wine does in a way of its own.
std::span<const KnownDifference> KnownDifferences();

}  // namespace corvane::testing
