// What the journal has told, for those who judge it and write about it: the entries in their order, and what is read from
// them. Main thread.
#pragma once

#include <velto/platform/foundation/JSON.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velto::preview {

using Entry = JSON::Object;

class Story {
 public:
  // Of one kind are kept this many; a page may write to its console for ever.
  static constexpr size_t mostOfAKind = 2000;

  void add(const Entry& entry);
  const std::vector<Entry>& entries() const { return entries_; }
  size_t leftOut() const { return leftOut_; }
  // A video ad's document was played.
  bool isOfVideoAd() const { return counts_.contains("document"); }

  std::vector<const Entry*> of(std::string_view kind) const;
  const Entry* last(std::string_view kind) const;  // or null
  // What that list holds in any "page" entry, each once. There is one for each look at a page.
  JSON::Array inPages(const char* list) const;
  // The time of the first entry of that kind, or of that kind and name; nothing without one.
  std::optional<double> timeOf(std::string_view kind, std::string_view name = {}) const;

  // Addresses beside the creative are short, and the same from run to run.
  std::string shortAddress(const std::string& address) const;
  // Whether it leads elsewhere than to where the creative comes from.
  bool isElsewhere(const std::string& address) const;

 private:
  std::vector<Entry> entries_;
  std::map<std::string, size_t> counts_;
  size_t leftOut_ = 0;
  std::string base_;
};

// Nothing, 0 and false where the entry has none of that type.
std::string textIn(const Entry& entry, const char* key);
double numberIn(const Entry& entry, const char* key, double otherwise = 0);
bool isSetIn(const Entry& entry, const char* key);
const JSON::Array& listIn(const Entry& entry, const char* key);
const Entry& objectIn(const Entry& entry, const char* key);

// Where a request went: the address that was asked for, those that it was sent on to, and the one that answered.
std::vector<std::string> addressesOf(const Entry& request);

// "example.org" of an http(s) address.
std::string hostOf(const std::string& address);
bool isLocal(const std::string& host);  // this machine

}  // namespace velto::preview
