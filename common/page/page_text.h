// The page's own parts, which the build makes of the files beside this one.
#pragma once

#include <string_view>

namespace page {

extern const std::string_view kPageFrame;   // page.html
extern const std::string_view kPageStyle;   // page.css
extern const std::string_view kPageScript;  // script/*.js
// As a content security policy names them: "sha256-...".
extern const std::string_view kPageStyleHash;
extern const std::string_view kPageScriptHash;

}  // namespace page
