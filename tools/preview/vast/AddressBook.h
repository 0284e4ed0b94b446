// The addresses of a video ad's documents, and of which of them a request was: by what the library's timeline says that it has
// told, and by the letters between an address' macros. Main thread.
#pragma once

#include <velto/timeline/VeltoTimelineEntry.h>

#include <cstddef>
#include <string>
#include <vector>

#include "preview/vast/DocumentReading.h"

namespace velto::preview {

// What stands between the macros of an address, as it leaves this machine.
std::vector<std::string> partsOf(const std::string& url);

class AddressBook {
 public:
  struct Known {
    DocumentAddress address;
    size_t document = 0;             // as it was added with
    std::vector<std::string> parts;  // between its macros
    size_t letters = 0;              // of these
    int told = 0;
  };

  void clear();
  // Those that no request of the library's is of (files, pages, where clicks lead) are left out.
  void add(const DocumentAddress& address, size_t document);
  // What the timeline says; before the request is asked for that it speaks of.
  void note(const VeltoTimelineEntry& entry);
  // Of a request that has ended, with the status of its answer (0: none). Counts as told once more. Null for what is in none of
  // the documents. What the timeline has told comes first, then the address that is meant to the letter, then the one with most
  // letters of its own, then the one that was told least often.
  const Known* take(const std::string& url, int status);

 private:
  struct Told {  // of which no request was found yet
    std::string name;
    int status = 0;
  };
  int certaintyOf(const Known& known, int status) const;

  std::vector<Known> known_;
  std::vector<Told> told_;
};

}  // namespace velto::preview
