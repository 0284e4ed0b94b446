// See Http.h.
#include "sandbox/Http.h"

#include <charconv>

#include "sandbox/Text.h"
#include "sandbox/TlsServer.h"

namespace velto::sandbox {

namespace {

constexpr std::size_t kMaxHeadBytes = 64 * 1024;
constexpr std::size_t kMaxBodyBytes = 8'000'000;
constexpr std::size_t kReadBytes = 16 * 1024;  // a TLS record

std::string_view trim(std::string_view text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::size_t sizeIn(std::string_view digits, int base) {
  std::size_t size = 0;
  const char* end = digits.data() + digits.size();
  const auto read = std::from_chars(digits.data(), end, size, base);
  if (read.ec == std::errc::result_out_of_range) throw HttpError(413);
  if (read.ec != std::errc() || read.ptr != end) throw HttpError(400);
  if (size > kMaxBodyBytes) throw HttpError(413);
  return size;
}

}  // namespace

std::string HttpRequest::header(std::string_view name) const {
  const std::string wanted = lowerCase(name);
  for (const auto& [field, value] : headers) {
    if (lowerCase(field) == wanted) return value;
  }
  return {};
}

std::optional<HttpRequest> HttpReader::next() {
  if (buffer_.empty() && !connection_.awaitRequest()) return std::nullopt;
  try {
    return read();
  } catch (const Left&) {
    return std::nullopt;
  }
}

HttpRequest HttpReader::read() {
  headBytesLeft_ = kMaxHeadBytes;
  std::string line;
  while (line.empty()) line = readLine();  // empty lines before a request are passed over
  const std::vector<std::string> words = split(line, " ");
  if (words.size() != 3 || words[0].empty() || words[1].empty() || !words[2].starts_with("HTTP/1."))
    throw HttpError(400);
  HttpRequest request{words[0], words[1], readFields(), {}, words[2] != "HTTP/1.0"};
  if (lowerCase(request.header("Connection")).find("close") != std::string::npos)
    request.keepsConnection = false;

  const std::string coding = lowerCase(request.header("Transfer-Encoding"));
  const std::string length = request.header("Content-Length");
  if (!coding.empty() && coding != "chunked") throw HttpError(501);
  if (!coding.empty() && !length.empty()) throw HttpError(400);
  const std::size_t size = length.empty() ? 0 : sizeIn(length, 10);
  if (lowerCase(request.header("Expect")) == "100-continue") connection_.write(headOf(100, {}));
  if (coding.empty()) {
    request.body = readBytes(size);
  } else {
    readChunks(request.body);
  }
  return request;
}

HeaderFields HttpReader::readFields() {
  HeaderFields fields;
  for (std::string line = readLine(); !line.empty(); line = readLine()) {
    const auto colon = line.find(':');
    if (colon == std::string::npos || colon == 0 || line.find_first_of(" \t") < colon) throw HttpError(400);
    fields.emplace_back(line.substr(0, colon), trim(std::string_view(line).substr(colon + 1)));
  }
  return fields;
}

std::string HttpReader::readLine() {
  std::size_t end = 0;
  while ((end = buffer_.find('\n')) == std::string::npos) {
    if (buffer_.size() > headBytesLeft_) throw HttpError(431);
    fill();
  }
  if (end >= headBytesLeft_) throw HttpError(431);
  headBytesLeft_ -= end + 1;
  std::string line = buffer_.substr(0, end);
  buffer_.erase(0, end + 1);
  if (line.ends_with('\r')) line.pop_back();
  return line;
}

std::string HttpReader::readBytes(std::size_t count) {
  while (buffer_.size() < count) fill();
  std::string bytes = buffer_.substr(0, count);
  buffer_.erase(0, count);
  return bytes;
}

void HttpReader::readChunks(std::string& body) {
  for (;;) {
    headBytesLeft_ = kMaxHeadBytes;
    const std::string line = readLine();
    const std::size_t size = sizeIn(trim(std::string_view(line).substr(0, line.find(';'))), 16);
    if (size == 0) break;
    if (body.size() + size > kMaxBodyBytes) throw HttpError(413);
    body += readBytes(size);
    if (!readLine().empty()) throw HttpError(400);
  }
  readFields();  // after the last chunk; nobody asks for them
}

void HttpReader::fill() {
  const std::size_t before = buffer_.size();
  buffer_.resize(before + kReadBytes);
  const std::size_t count = connection_.read(buffer_.data() + before, kReadBytes);
  buffer_.resize(before + count);
  if (count == 0) throw Left{};
}

std::string headOf(int status, const HeaderFields& fields) {
  std::string head = "HTTP/1.1 " + std::to_string(status) + " \r\n";
  for (const auto& [name, value] : fields) head += name + ": " + value + "\r\n";
  return head + "\r\n";
}

}  // namespace velto::sandbox
