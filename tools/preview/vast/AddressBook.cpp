// Patterns, and what was told.
#include "preview/vast/AddressBook.h"

#include <velto/platform/foundation/NSURL.h>
#include <velto/platform/foundation/Text.h>

#include <algorithm>
#include <array>
#include <regex>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>
#include <variant>

namespace velto::preview {
namespace {

constexpr size_t mostAddresses = 5000, mostTold = 1000;
constexpr char wrapperName[] = "wrapper";

// The library's names of events that documents have other names for.
constexpr std::array otherNames{std::pair{"customClick", "custom click"},
                                std::pair{"notViewable", "not viewable"},
                                std::pair{"viewUndetermined", "view undetermined"},
                                std::pair{"iconView", "icon"},
                                std::pair{"iconClick", "icon click"},
                                std::pair{"companionView", "creativeview"},
                                std::pair{"companionClick", "companion click"}};

std::string nameOfEvent(const std::string& event) {
  for (const auto& [told, written] : otherNames)
    if (event == told) return written;
  return lowercased(event);
}

// The player and the web engine load these, or nobody does.
bool isAskedFor(const std::string& name) {
  static const std::set<std::string> others{"captions",      "file",    "page",   "picture",
                                            "overlay click", "program", "script", "survey"};
  return !name.ends_with("destination") && !others.contains(name);
}

bool fits(const std::vector<std::string>& parts, const std::string& url) {
  if (parts.size() == 1) return parts.front() == url;
  if (!url.starts_with(parts.front())) return false;
  size_t at = parts.front().size();
  for (size_t i = 1; i + 1 < parts.size(); ++i) {
    at = url.find(parts[i], at);
    if (at == std::string::npos) return false;
    at += parts[i].size();
  }
  return url.size() >= at + parts.back().size() && url.ends_with(parts.back());
}

}  // namespace

std::vector<std::string> partsOf(const std::string& url) {
  static const std::regex macro(R"((?:\[|%5[Bb])[A-Z][A-Z0-9_]{1,40}(?:\]|%5[Dd]))");
  const std::string mark = "velto-macro";
  const auto marked = NSURL::URLByEscaping(std::regex_replace(url, macro, mark));
  return split(marked ? marked->absoluteString() : url, mark);
}

void AddressBook::clear() {
  known_.clear();
  told_.clear();
}

void AddressBook::add(const DocumentAddress& address, size_t document) {
  if (!isAskedFor(address.name) || known_.size() >= mostAddresses) return;
  auto parts = partsOf(address.url);
  size_t letters = 0;
  for (const auto& part : parts) letters += part.size();
  known_.push_back({address, document, std::move(parts), letters, 0});
}

void AddressBook::note(const VeltoTimelineEntry& entry) {
  if (entry.kind == VeltoTimelineKind::AddressTold && told_.size() < mostTold)
    if (const auto* told = std::get_if<VeltoVideoTold>(&entry.detail))
      told_.push_back({nameOfEvent(told->event), told->status});
}

// Whatever was told is in the timeline by now; a wrapper's answer may be read still.
int AddressBook::certaintyOf(const Known& known, int status) const {
  if (known.address.name == wrapperName) return 1;
  const auto name = lowercased(known.address.name);
  const bool isTold = std::any_of(told_.begin(), told_.end(), [&](const Told& told) {
    return told.name == name && told.status == status;
  });
  return isTold ? 2 : 0;
}

const AddressBook::Known* AddressBook::take(const std::string& url, int status) {
  Known* best = nullptr;
  const auto rank = [&](const Known& known) {
    return std::tuple(certaintyOf(known, status), known.parts.size() == 1, known.letters, -known.told);
  };
  for (auto& known : known_)
    if (fits(known.parts, url) && (!best || rank(known) > rank(*best))) best = &known;
  if (!best) return nullptr;
  ++best->told;
  const auto name = lowercased(best->address.name);
  const auto told = std::find_if(told_.begin(), told_.end(),
                                 [&](const Told& one) { return one.name == name && one.status == status; });
  if (told != told_.end()) told_.erase(told);
  return best;
}

}  // namespace velto::preview
