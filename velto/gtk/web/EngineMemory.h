// What an earlier run found out: that the web engine can start here. Kept in the store beside all of which that may depend
// (the machine's start, namespaces, rights, the sandbox's programs), so that no later run has to try it again. It is
// forgotten when the engine starts and kept anew once that has gone well: should the engine end the application after all,
// the next run tries again.
//
// Main thread. Only to find out the circumstances, and to compare them, is any thread's: it takes half a millisecond.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace velto::gtk {

class EngineMemory {
 public:
  // With the programs that the engine's sandbox consists of. Empty texts of the system count as what they are: a value.
  explicit EngineMemory(const std::vector<std::string>& programs);

  // What an earlier run has kept, for the comparison, which any thread may make.
  static std::optional<std::string> kept();
  bool isSameAs(const std::optional<std::string>& kept) const { return kept == circumstances_; }

  // Whether the engine started in an earlier run, under the same circumstances.
  bool recall() const { return isSameAs(kept()); }
  void forget() const;
  void keep() const;

 private:
  std::string circumstances_;
};

}  // namespace velto::gtk
