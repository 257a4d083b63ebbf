#include "tests/browser/web_driver.h"

#include <stdexcept>

#include "common/text/text.h"
#include "common/text/transfer_encoding.h"
#include "common/text/unicode.h"
#include "tests/support/wire/raw_connection.h"

namespace corvane::testing {
namespace {

constexpr char kDriver[] = "/usr/bin/chromedriver";
constexpr char kProgram[] = "/usr/bin/chromium";

// Reads an answer of HTTP to its end.
std::string BodyOfAnswer(RawConnection& connection, bool& refused) {
  std::string answer;
  std::size_t end = answer.npos;
  char piece[65536];
  const auto more = [&] {
    const std::size_t count = connection.ReceiveSome(piece, sizeof(piece));
    if (count == 0) throw std::runtime_error("the browser's driver has hung up");
    answer.append(piece, count);
  };
  for (; end == answer.npos; end = answer.find("\r\n\r\n")) more();
  constexpr char kLength[] = "\r\nCONTENT-LENGTH:";
  const std::size_t length = text::ToUpperAscii(answer.substr(0, end)).find(kLength);
  if (length == answer.npos)
    throw std::runtime_error("the browser's driver does not say how much it answers");
  const std::size_t size = std::stoul(answer.substr(length + sizeof(kLength) - 1));
  while (answer.size() < end + 4 + size) more();
  refused = !answer.starts_with("HTTP/1.1 200");
  return answer.substr(end + 4, size);
}

}  // namespace

Browser::Browser() {
  const std::string home = directory_.path().string();
  driver_ = std::make_unique<Process>(
      kDriver, std::vector<std::string>{"--port=0"},
      ProcessOptions{.environment = {{"HOME", home}, {"TMPDIR", home}}, .captureErrors = true});
  constexpr char kPort[] = "on port ";
  for (std::string line = driver_->ReadLine(); port_ == 0; line = driver_->ReadLine()) {
    if (line.empty()) throw std::runtime_error("the browser's driver does not start");
    const std::size_t at = line.find(kPort);
    if (line.find("started successfully") != line.npos && at != line.npos)
      port_ = static_cast<std::uint16_t>(std::stoi(line.substr(at + sizeof(kPort) - 1)));
    if (port_ != 0) break;
  }
  const json options = {
      {"binary", kProgram},
      {"args",
       {"--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--hide-scrollbars",
        "--no-first-run", "--disable-background-networking", "--disable-component-update",
        "--disable-gpu", "--lang=en-GB", "--user-data-dir=" + home + "/profile"}}};
  const json made = Do("POST", "/session",
                       {{"capabilities",
                         {{"alwaysMatch",
                           {{"browserName", "chrome"},
                            {"unhandledPromptBehavior", "ignore"},
                            {"timeouts", {{"script", 60'000}}},
                            {"goog:loggingPrefs", {{"browser", "ALL"}}},
                            {"goog:chromeOptions", options}}}}}});
  session_ = "/session/" + made["sessionId"].get<std::string>();
}

Browser::~Browser() {
  try {
    bool refused = false;
    Send("DELETE", session_, json::object(), refused);
    Send("GET", "/shutdown", json::object(), refused);
    driver_->Wait();
  } catch (const std::exception&) {
    // The driver goes with its process.
  }
}

json Browser::Send(const std::string& method, const std::string& path, const json& body,
                   bool& refused) {
  const std::string text = method == "POST" ? body.dump() : std::string();
  RawConnection connection(port_);
  connection.Send(method + " " + path + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port_) +
                  "\r\nContent-Type: application/json\r\nContent-Length: " +
                  std::to_string(text.size()) + "\r\n\r\n" + text);
  return json::parse(BodyOfAnswer(connection, refused))["value"];
}

json Browser::Do(const std::string& method, const std::string& path, const json& body) {
  bool refused = false;
  json value = Send(method, session_ + path, body, refused);
  if (refused) throw std::runtime_error("the browser refuses " + path + ": " + value.dump());
  return value;
}

void Browser::Open(const std::string& url) {
  // Another part of the same document would not be loaded afresh.
  Do("POST", "/url", {{"url", "about:blank"}});
  Do("POST", "/url", {{"url", url}});
}

void Browser::Resize(int width, int height) {
  DevTools("Emulation.setDeviceMetricsOverride",
           {{"width", width}, {"height", height}, {"deviceScaleFactor", 1}, {"mobile", false}});
}

void Browser::PreferDark(bool dark) {
  const json feature = {{"name", "prefers-color-scheme"}, {"value", dark ? "dark" : "light"}};
  DevTools("Emulation.setEmulatedMedia", {{"features", json::array({feature})}});
}

json Browser::Value(const std::string& expression) {
  return Do("POST", "/execute/sync",
            {{"script", "return (" + expression + ")"}, {"args", json::array()}});
}

void Browser::Run(const std::string& script) {
  Do("POST", "/execute/sync", {{"script", script}, {"args", json::array()}});
}

void Browser::Await(const std::string& expression) {
  Do("POST", "/execute/async",
     {{"script",
       "const done = arguments[0];"
       "const look = () => (" +
           expression + ") ? done(true) : requestAnimationFrame(look); look();"},
      {"args", json::array()}});
}

void Browser::Press(const std::string& keys) {
  json actions = json::array();
  std::u16string units = text::FromUtf8Lossy(keys);
  for (std::u16string_view rest = units; !rest.empty();) {
    std::string key;
    text::AppendUtf8(key, text::TakeCharacter(rest));
    actions.push_back({{"type", "keyDown"}, {"value", key}});
    actions.push_back({{"type", "keyUp"}, {"value", key}});
  }
  const json keyboard = {{"type", "key"}, {"id", "keyboard"}, {"actions", actions}};
  Do("POST", "/actions", {{"actions", json::array({keyboard})}});
}

std::string Browser::Screenshot() {
  return text::DecodeBase64(Do("GET", "/screenshot").get<std::string>());
}

std::string Browser::Print() {
  return text::DecodeBase64(Do("POST", "/print").get<std::string>());
}

bool Browser::HasDialog() {
  bool refused = false;
  Send("GET", session_ + "/alert/text", json::object(), refused);
  return !refused;
}

std::string Browser::ConsoleMessages() {
  std::string messages;
  for (const json& entry : Do("POST", "/se/log", {{"type", "browser"}}))
    messages += entry["message"].get<std::string>() + "\n";
  return messages;
}

json Browser::DevTools(const std::string& command, const json& parameters) {
  return Do("POST", "/goog/cdp/execute", {{"cmd", command}, {"params", parameters}});
}

}  // namespace corvane::testing
