// What a URL session does with an answer that sends its request elsewhere. One set of rules for all
// platforms; any thread.
#pragma once

#include "velto/Export.h"
#include "velto/platform/NSURLSession.h"

#include <optional>

namespace velto {

// At most one of the two; neither: the answer stands for itself.
struct Redirection {
  std::optional<NSURLRequest> request;  // to go on with
  std::optional<NSError> error;         // to end with
};

// For an answer with that status and header fields to a request that has been sent on `redirects` times
// before.
//
// As browsers do it (RFC 9110, 15.4): but for 307 and 308 a request with content becomes a GET, and
// credentials stay with their server. Three things end the request instead, with errors of the domain
// "NSURLErrorDomain": leaving https (-1022), since what was told in confidence would be told again in clear;
// a place that is not of http or https (-1002); the twenty-first redirect (-1007).
VELTO_EXPORT Redirection redirectionFor(const NSURLRequest& request, int status, const HeaderFields& fields,
                                        int redirects);

}  // namespace velto
