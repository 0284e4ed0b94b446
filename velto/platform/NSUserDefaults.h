// Supplied by the platform: a persistent store of the host application, small values under string keys.
#pragma once

#include "velto/Export.h"

#include <map>
#include <optional>
#include <string>
#include <variant>

namespace velto {

// Dictionaries hold text to text, which is all that is stored in one.
using DefaultsDictionary = std::map<std::string, std::string>;

// Booleans are kept as the numbers 0 and 1.
using DefaultsValue = std::variant<std::string, double, DefaultsDictionary>;

// Any thread. Readers see at once what was set, in this process and, after its synchronize, from another one.
// A failing medium (full, read-only, unreadable) makes set and remove throw std::runtime_error, never loses
// what was acknowledged before, and reads as the last values known.
class VELTO_EXPORT NSUserDefaults {
 public:
  virtual ~NSUserDefaults() = default;

  virtual std::optional<DefaultsValue> objectForKey(const std::string& key) const = 0;
  virtual void setObject(const std::string& key, const DefaultsValue& value) = 0;
  virtual void removeObjectForKey(const std::string& key) = 0;

  // Changes one entry of a dictionary value (made if absent): the same as reading, changing and setting the
  // whole, at a cost that does not grow with the dictionary. Nothing as value removes the entry.
  virtual void setEntry(const std::string& key, const std::string& entry,
                        const std::optional<std::string>& value) = 0;

  // Returns once everything set so far would survive a kill of the process. Throws as above.
  virtual void synchronize() = 0;
};

}  // namespace velto
