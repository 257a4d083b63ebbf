// A browser without a window, driven by the WebDriver protocol.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <memory>
#include <string>

#include "tests/support/temporary_directory.h"
#include "tests/support/wire/process.h"

namespace corvane::testing {

using nlohmann::json;

class Browser {
 public:
  // Throws std::runtime_error when the browser or its driver cannot be started.
  Browser();
  ~Browser();
  Browser(const Browser&) = delete;
  Browser& operator=(const Browser&) = delete;

  // What follows throws std::runtime_error when the browser refuses.
  void Open(const std::string& url);
  void Resize(int width, int height);
  void PreferDark(bool dark);
  // The value of a JavaScript expression.
  json Value(const std::string& expression);
  void Run(const std::string& script);
  // Until the expression is true; looked at with each frame that is drawn.
  void Await(const std::string& expression);
  // A key as it is in KeyboardEvent.key for what is typed, else one of WebDriver's characters.
  void Press(const std::string& keys);
  std::string Screenshot();  // PNG
  std::string Print();       // PDF
  bool HasDialog();
  // What the console has got since it was asked last, one message a line; empty for nothing.
  std::string ConsoleMessages();
  // A command of the browser's own protocol.
  json DevTools(const std::string& command, const json& parameters);

 private:
  json Send(const std::string& method, const std::string& path, const json& body, bool& refused);
  json Do(const std::string& method, const std::string& path, const json& body = json::object());

  TemporaryDirectory directory_;
  std::unique_ptr<Process> driver_;
  std::uint16_t port_ = 0;
  std::string session_;
};

inline constexpr char kEscapeKey[] = "\xEE\x80\x8C";      // U+E00C
inline constexpr char kEnterKey[] = "\xEE\x80\x87";       // U+E007
inline constexpr char kTabKey[] = "\xEE\x80\x84";         // U+E004
inline constexpr char kArrowLeftKey[] = "\xEE\x80\x92";   // U+E012
inline constexpr char kArrowRightKey[] = "\xEE\x80\x94";  // U+E014
inline constexpr char kArrowDownKey[] = "\xEE\x80\x95";   // U+E015
inline constexpr char kEndKey[] = "\xEE\x80\x90";         // U+E010

}  // namespace corvane::testing
