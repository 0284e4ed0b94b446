// HTTP/1.1 as far as the sandbox server needs it (RFC 9112): requests read from a connection one after the other, and
// heads of answers as text. A library's server would mend or add what a scenario wants to go over the wire as it is.
#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velto::sandbox {

class TlsConnection;

using HeaderFields = std::vector<std::pair<std::string, std::string>>;

struct HttpRequest {
  std::string method;
  std::string target;    // as sent, so percent-encoded and with the query
  HeaderFields headers;  // as sent, in order
  std::string body;
  bool keepsConnection = true;  // the client may send another request

  std::string header(std::string_view name) const;  // any case; "" when absent
};

// What was sent is no request, or too large; the status says which. The connection is of no more use.
struct HttpError : std::runtime_error {
  explicit HttpError(int code) : std::runtime_error("HTTP status " + std::to_string(code)), status(code) {}
  int status;
};

// Reads the requests of one connection, on its thread. The connection must outlive the reader.
class HttpReader {
 public:
  explicit HttpReader(TlsConnection& connection) : connection_(connection) {}

  // Waits for the next request; none when the client has left or kept silent for too long. Throws HttpError.
  std::optional<HttpRequest> next();

 private:
  struct Left {};  // thrown when the connection ends within a request
  HttpRequest read();
  HeaderFields readFields();
  std::string readLine();
  std::string readBytes(std::size_t count);
  void readChunks(std::string& body);
  void fill();

  TlsConnection& connection_;
  std::string buffer_;             // received, not yet used
  std::size_t headBytesLeft_ = 0;  // for the request line and all fields of the request being read
};

// The status line and the fields, with the empty line that ends them.
std::string headOf(int status, const HeaderFields& fields);

}  // namespace velto::sandbox
