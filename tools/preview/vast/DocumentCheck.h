// The parts of a document's check. Inner header of this folder; any thread.
#pragma once

#include <velto/platform/foundation/Text.h>
#include <velto/vast/VASTNode.h>

#include <map>
#include <string>
#include <string_view>

#include "preview/vast/DocumentReading.h"

namespace velto::preview {

// Collects what is found.
class DocumentCheck {
 public:
  DocumentCheck(DocumentReading& into, const DocumentSurroundings& surroundings)
      : reading(into), around(surroundings) {}

  // Of one kind as many as somebody reads, and of a text as much.
  void add(const char* id, int line, const std::string& text) {
    constexpr int most = 20;
    constexpr size_t longest = 300;
    if (++counts_[id] > most) return;
    const bool isLong = text.size() > longest;
    reading.faults.push_back({id, line, validUTF8(text.substr(0, longest)) + (isLong ? "…" : "")});
  }
  void add(const char* id, const VASTNode& at, const std::string& text) { add(id, at.line, text); }

  DocumentReading& reading;
  const DocumentSurroundings& around;
  double version = 0;  // 0: not known

 private:
  std::map<std::string_view, int> counts_;
};

// The markup as it is written, before anything is made of it: names in another case than the standard's, ampersands that
// stand by themselves. Returns it with blanks in place of these. For texts within the reader's limits.
std::string checkMarkup(const std::string& text, DocumentCheck& check);
// "AdSystem" of "adsystem"; of others the same.
std::string nodeName(const std::string& lower);

// Addresses, of which it lists all, and what is told by them.
void checkAddresses(const VASTNode& root, DocumentCheck& check);

// What an InLine or Wrapper is made of below its creatives, and its verifications.
void checkCreatives(const VASTNode& ad, DocumentCheck& check);

}  // namespace velto::preview
