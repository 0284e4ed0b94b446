// What a real server expects of each request. The server calls checkRequest for every request that arrives
// and records what is wrong with it.
#pragma once

#include <string>
#include <vector>

#include "sandbox/Record.h"

namespace velto::sandbox {

struct Names;

// The kind of a request whose method, path and query are set.
Kind kindOf(const RecordedRequest& record);

// The part of host in front of the publisher host: "abc" for abc.publishers.velto.example, "" for any other
// host.
std::string endpointOf(const std::string& host, const Names& names);

// Fills record.problems and record.track; everything else of the record must be set already.
void checkRequest(RecordedRequest& record, const Names& names);

// What is wrong with the query of a request for a video ad.
std::vector<std::string> checkVastQuery(const RecordedRequest& record);

// What is wrong with the JSON body of an ad request; userAgent is the request's header.
std::vector<std::string> checkAdBody(const std::string& body, const std::string& userAgent);

}  // namespace velto::sandbox
