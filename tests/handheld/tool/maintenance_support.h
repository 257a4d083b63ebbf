// A handheld's directory and what a command said, for the tests of corvane-device's commands.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "handheld/tool/handheld_commands.h"
#include "handheld/tool/import_files.h"
#include "handheld/tool/records.h"
#include "handheld/tool/show_records.h"
#include "tests/support/fault_runs.h"
#include "tests/support/temporary_directory.h"

namespace tool::testing {

// Collects a Report's two streams.
class Capture {
 public:
  explicit Capture(Verbosity verbosity = Verbosity::kAll) {
    report_.verbosity = verbosity;
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

inline Report AsJson(Report report) {
  report.json = true;
  return report;
}

inline std::size_t Count(const std::string& text, const std::string& what) {
  std::size_t count = 0;
  for (std::size_t at = text.find(what); at != text.npos; at = text.find(what, at + 1)) ++count;
  return count;
}

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

  // Runs command(session, report) on the handheld. What it says is in out_ and err_ then.
  template <typename Command>
  Outcome Run(Command command) {
    Session session(HandheldPath());
    return RunIn(session, command);
  }
  template <typename Command>
  Outcome RunIn(Session& session, Command command) {
    Capture capture(verbosity_);
    const Outcome outcome = command(session, capture.report());
    out_ = capture.Out();
    err_ = capture.Err();
    return outcome;
  }
  Outcome Import(const std::vector<std::filesystem::path>& files,
                 const ImportOptions& options = {}) {
    return Run([&](Session& session, const Report& report) {
      return ImportFiles(session, files, options, report);
    });
  }
  // As JSON, or as a table.
  template <typename Record>
  std::string Shown(bool json = true) {
    Session session(HandheldPath());
    Capture capture;
    EXPECT_EQ(ShowRecords<Record>(session, json, capture.report()), Outcome::kDone);
    return capture.Out();
  }
  template <typename Record>
  std::size_t Stored() {
    Session session(HandheldPath());
    return CountRecords<Record>(session);
  }
  // Imports the file into a new handheld, once for each platform call that fails, and then once
  // more; `check` is told what each import ended with. Answers the number of calls.
  template <typename Check>
  std::uint64_t ImportFailingEachCall(const std::filesystem::path& file, const InitOptions& options,
                                      Check check) {
    std::optional<Session> session;
    const auto prepare = [&] {
      std::filesystem::remove_all(HandheldPath());
      Init(options);
      session.emplace(HandheldPath());
    };
    const auto run = [&] {
      Capture capture;
      try {
        return ImportFiles(*session, {file}, {}, capture.report());
      } catch (const std::exception&) {
        return Outcome::kFailed;
      }
    };
    return corvane::testing::FailEachCall(
        ce::ERROR_NOT_ENOUGH_MEMORY, prepare, run,
        [&](Outcome outcome, const std::string& failedCall) {
          session.reset();
          EXPECT_TRUE(outcome == Outcome::kDone || !failedCall.empty());
          check(outcome);
          // Whatever failed: importing the file again completes
          // it, without a second copy.
          EXPECT_EQ(Import({file}), Outcome::kDone);
          check(Outcome::kDone);
        });
  }

  const corvane::testing::TemporaryDirectory temporary_;
  const std::filesystem::path directory_ = temporary_.path();
  std::string out_, err_;
  Verbosity verbosity_ = Verbosity::kAll;  // of what is run
};

}  // namespace tool::testing
