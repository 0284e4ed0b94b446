// Reading.
#include "preview/RecordedAnswer.h"

#include <velto/platform/foundation/JSON.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string_view>

#include "preview/Arguments.h"

namespace velto::preview {
namespace {

// What speaks of the recorded transfer, not of the ad: the server that answers now says it itself.
bool isOfTheTransfer(std::string name) {
  static const std::set<std::string> names{
      "content-length", "content-encoding", "transfer-encoding", "connection",
      "date",           "keep-alive",       "set-cookie"};
  std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
  return names.count(name) > 0;
}

std::string textOf(const JSON& value) {
  if (const auto* text = value.string()) return *text;
  return value.isNull() ? "" : writeJSON(value, false).value_or("");
}

const JSON* memberOf(const JSON& value, const char* key) {
  const auto* object = value.object();
  const auto found = object ? object->find(key) : JSON::Object::const_iterator{};
  return object && found != object->end() ? &found->second : nullptr;
}

void addHeaders(const JSON& headers, const std::string& file, sandbox::Answer& answer) {
  const auto add = [&](const std::string& name, const JSON& value) {
    if (name.empty() || isOfTheTransfer(name)) return;
    answer.headers.emplace_back(name, textOf(value));
    for (const auto& part : {name, answer.headers.back().second})
      if (part.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos)
        throw UsageError(file + ": a header ends within its line");
  };
  if (const auto* object = headers.object())
    for (const auto& [name, value] : *object) add(name, value);
  if (const auto* list = headers.array())
    for (const auto& header : *list)
      if (const auto* name = memberOf(header, "name"), *value = memberOf(header, "value"); name && value)
        add(textOf(*name), *value);
}

sandbox::Answer answerOf(const JSON& recorded, const std::string& file) {
  if (!recorded.object()) throw UsageError(file + ": an answer is an object with status, headers and body");
  sandbox::Answer answer;
  if (const auto* status = memberOf(recorded, "status"))
    answer.status = static_cast<int>(std::clamp(status->number().value_or(0), 0.0, 1000.0));
  if (answer.status < 100 || answer.status > 599) throw UsageError(file + ": that is no status of an answer");
  if (const auto* headers = memberOf(recorded, "headers")) addHeaders(*headers, file, answer);
  if (const auto* body = memberOf(recorded, "body")) answer.body = textOf(*body);
  return answer;
}

}  // namespace

std::vector<sandbox::Answer> readAnswers(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in || !std::filesystem::is_regular_file(file)) throw UsageError(file + ": cannot be read");
  const auto read = readJSON(std::string(std::istreambuf_iterator<char>(in), {}));
  if (!read) throw UsageError(file + ": is no JSON");
  std::vector<sandbox::Answer> answers;
  if (const auto* list = read->array())
    for (const auto& recorded : *list) answers.push_back(answerOf(recorded, file));
  else
    answers.push_back(answerOf(*read, file));
  if (answers.empty()) throw UsageError(file + ": holds no answer");
  return answers;
}

}  // namespace velto::preview
