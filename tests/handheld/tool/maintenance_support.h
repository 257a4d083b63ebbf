// A handheld's directory and what a command said, for the tests of corvane-device's commands.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "handheld/tool/handheld_commands.h"
#include "handheld/tool/report.h"
#include "handheld/tool/session.h"
#include "tests/support/temporary_directory.h"

namespace tool::testing {

// Collects a Report's two streams.
class Capture {
 public:
  Capture() {
    report_.out = open_memstream(&out_, &outSize_);
    report_.err = open_memstream(&err_, &errSize_);
  }
  ~Capture() {
    std::fclose(report_.out);
    std::fclose(report_.err);
    std::free(out_);
    std::free(err_);
  }
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;

  const Report& report() const { return report_; }
  std::string Out() const { return Text(report_.out, out_, outSize_); }
  std::string Err() const { return Text(report_.err, err_, errSize_); }

 private:
  static std::string Text(std::FILE* stream, char* const& text, const std::size_t& size) {
    std::fflush(stream);
    return {text, size};
  }
  Report report_;
  char* out_ = nullptr;
  char* err_ = nullptr;
  std::size_t outSize_ = 0;
  std::size_t errSize_ = 0;
};

class MaintenanceTest : public ::testing::Test {
 protected:
  std::filesystem::path HandheldPath() const { return directory_ / "handheld"; }
  void Init(const InitOptions& options = {}) {
    Capture capture;
    InitHandheld(HandheldPath(), options, capture.report());
  }
  std::filesystem::path WriteFile(const std::string& name, const std::string& content) const {
    std::ofstream(directory_ / name, std::ios::binary) << content;
    return directory_ / name;
  }
  std::string ReadFile(const std::filesystem::path& path) const {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  const corvane::testing::TemporaryDirectory temporary_;
  const std::filesystem::path directory_ = temporary_.path();
};

}  // namespace tool::testing
