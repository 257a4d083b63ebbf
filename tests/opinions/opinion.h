// Another library's reading of what the programs write.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

#include "tests/support/wire/process.h"

namespace corvane::testing {

// A script of this folder, running: it answers each line of JSON with one.
class Opinion {
 public:
  explicit Opinion(const std::string& script);
  ~Opinion();
  Opinion(const Opinion&) = delete;
  Opinion& operator=(const Opinion&) = delete;

  // Throws std::runtime_error when the script has ended, which shows why on the standard error.
  nlohmann::json Ask(const nlohmann::json& question);

 private:
  struct Ends {
    Ends();
    int own, script;
  };
  Ends ends_;
  Process process_;
};

}  // namespace corvane::testing
