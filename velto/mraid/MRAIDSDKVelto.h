// What rich media does to an ad's markup, and the script that it puts into the ad's page. Any thread.
#pragma once

#include "velto/platform/foundation/NSURL.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace velto::MRAIDSDKVelto {

// The page's side of the bridge: defines window.mraid. To run before any script of the page.
const std::string& MRAIDJs();

// The markup without its script tags that load "mraid.js" and without the line breaks behind them: all
// matches of
//   <script\s+[^>]*\bsrc\s*=\s*\\?([\\"\\'])mraid\.js\\?\1[^>]*>[^<]*<\/script>\n*
// in any case of letters. Time is linear in the text, whatever it holds; `steps`, if given, counts the bytes
// looked at.
std::string withoutLocalScript(std::string_view html, size_t* steps = nullptr);

// A URL as a page wrote it. Characters that no URL holds, such as blanks, are escaped in one that names its
// scheme, as web engines do.
std::optional<NSURL> URLFromPage(const std::string& text);

}  // namespace velto::MRAIDSDKVelto
