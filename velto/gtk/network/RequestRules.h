// What HTTP and the transport demand of a request: its header fields, the place it goes to.
#pragma once

#include "velto/gtk/VeltoGtk.h"
#include "velto/platform/NSURLSession.h"

#include <string>
#include <string_view>
#include <vector>

namespace velto::gtk {

// A method or field name (RFC 9110, 5.6.2).
bool isToken(std::string_view text);

// The fields as lines without end. Names that are none and fields of the transport's own (such as
// "Content-Length") are left out; what would end a line inside a value becomes a blank, so no value can bring
// a field of its own.
std::vector<std::string> headerLines(const HeaderFields& fields);

// The address that connections for the host go to instead; empty: none.
std::string mappedAddress(const std::vector<HostMapping>& map, const NSURL& url);
std::string mappedAddress(const std::vector<HostMapping>& map, const std::string& host);

}  // namespace velto::gtk
