#include "common/page/page_file.h"

#include <string>

#include "common/page/page_data.h"
#include "common/page/page_text.h"
#include "common/text/xml_text.h"

namespace page {
namespace {

// Within a script element every "<" is one of a text in JSON.
std::string WithoutMarkup(const std::string& json) {
  std::string safe;
  safe.reserve(json.size());
  for (const char c : json) {
    if (c == '<') {
      safe += "\\u003c";
    } else {
      safe += c;
    }
  }
  return safe;
}

std::string ValueOf(std::string_view name, const Contents& contents) {
  if (name == "title") return text::XmlText(contents.name);
  if (name == "style-hash") return std::string(kPageStyleHash);
  if (name == "script-hash") return std::string(kPageScriptHash);
  if (name == "style") return std::string(kPageStyle);
  if (name == "script") return std::string(kPageScript);
  return WithoutMarkup(DataOf(contents));
}

}  // namespace

void WritePage(const Contents& contents, const std::function<void(std::string_view)>& sink) {
  std::string_view rest = kPageFrame;
  for (std::size_t at = rest.find("{{"); at != rest.npos; at = rest.find("{{")) {
    const std::size_t end = rest.find("}}", at);
    sink(rest.substr(0, at));
    sink(ValueOf(rest.substr(at + 2, end - at - 2), contents));
    rest.remove_prefix(end + 2);
  }
  sink(rest);
}

}  // namespace page
