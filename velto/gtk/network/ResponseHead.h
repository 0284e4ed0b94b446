// Reads the header lines of one exchange as they come in and keeps those of the last response. Transport
// thread.
#pragma once

#include "velto/platform/NSURLSession.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velto::gtk {

class ResponseHead {
 public:
  // One line, with or without its end. Interim responses (status 1xx, a proxy's) are replaced by what follows
  // them; fields after the body are left out; what is no field is passed over.
  void addLine(std::string_view line);

  // Values as they came, of whatever bytes; repeated names are joined with ", " (RFC 9110, 5.3).
  HeaderFields fields() const;

 private:
  bool ended_ = true;  // the next status line begins a head
  std::vector<HeaderFields::Field> fields_;
};

}  // namespace velto::gtk
