// Byte-exact documents under tests/golden. UPDATE_GOLDEN=1 in the environment rewrites them.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/support/paths.h"

namespace corvane::testing {

// Success when the file holds exactly `actual`; the failure names the first difference.
::testing::AssertionResult EqualsFile(const std::string& path, const std::string& actual);

inline ::testing::AssertionResult EqualsGolden(const std::string& name, const std::string& actual) {
  return EqualsFile(SourcePath("tests/golden/" + name), actual);
}

}  // namespace corvane::testing
