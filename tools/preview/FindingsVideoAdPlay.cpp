// What comes of a video ad on the network and in the player.
#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>

#include "preview/Findings.h"

namespace velto::preview {
namespace {

constexpr double slowAnswer = 1000;                   // milliseconds
constexpr double mostOfARate = 2, mostOfASize = 1.1;  // as many times as said, or as little
constexpr double sideTolerance = 0.05;                // of what is said
constexpr double lengthTolerance = 1;                 // second

bool hasFailed(const Entry& answer) {
  return answer.contains("error") || numberIn(answer, "status") >= 400;
}

// What an address answered, for people.
JSON::Object answerOf(const Story& story, const Entry& answer) {
  JSON::Object told{{"url", story.shortAddress(textIn(answer, "url"))}};
  if (const auto name = textIn(answer, "name"); !name.empty()) told["name"] = name;
  if (const auto error = textIn(answer, "error"); !error.empty()) told["error"] = error;
  if (const double status = numberIn(answer, "status"); status != 0) told["status"] = status;
  if (answer.contains("line")) told["line"] = numberIn(answer, "line");
  return told;
}

Evidence listed(const char* name, JSON::Array list) {
  if (list.empty()) return std::nullopt;
  return JSON::Object{{name, std::move(list)}};
}

// The outermost document, when it came from an address, and those of wrappers.
Evidence slowAnswers(const Story& story) {
  JSON::Array slow;
  for (const auto* document : story.of("document"))
    if (const double duration = numberIn(*document, "duration"); duration > slowAnswer)
      slow.emplace_back(JSON::Object{{"url", story.shortAddress(textIn(*document, "url"))},
                                     {"milliseconds", std::round(duration)}});
  return listed("documents", std::move(slow));
}

Evidence wrapperFailed(const Story& story) {
  JSON::Array failed;
  for (const auto* wrapper : story.of("wrapper")) {
    const double status = numberIn(*wrapper, "status");
    if (wrapper->contains("error") || status < 200 || status >= 300)
      failed.emplace_back(answerOf(story, *wrapper));
  }
  return listed("wrappers", std::move(failed));
}

// Where the network was away the same is told again; once is enough.
Evidence notTold(const Story& story) {
  std::set<std::string> arrived;
  std::map<std::string, JSON::Object> lost;
  for (const auto* told : story.of("told")) {
    if (hasFailed(*told))
      lost.emplace(textIn(*told, "url"), answerOf(story, *told));
    else
      arrived.insert(textIn(*told, "url"));
  }
  JSON::Array list;
  for (auto& [url, answer] : lost)
    if (!arrived.contains(url)) list.emplace_back(std::move(answer));
  return listed("addresses", std::move(list));
}

// Scripts, pictures and pages, as the engine tells of them.
Evidence partFailed(const Story& story) {
  JSON::Array failed;
  std::set<std::string> known;
  for (const auto* part : story.of("part"))
    for (const auto* request : story.of("resource")) {
      if (addressesOf(*request).front() != textIn(*part, "url") || !hasFailed(*request)) continue;
      if (!known.insert(textIn(*part, "url")).second) continue;
      auto answer = answerOf(story, *request);
      answer["line"] = numberIn(*part, "line");
      answer["name"] = textIn(*part, "name");
      failed.emplace_back(std::move(answer));
    }
  return listed("parts", std::move(failed));
}

Evidence fileFailed(const Story& story) {
  JSON::Array failed;
  for (const auto* look : story.of("file-look"))
    if (look->contains("error")) failed.emplace_back(answerOf(story, *look));
  return listed("files", std::move(failed));
}

std::string numberWords(double value) {
  return writeJSON(JSON(std::round(value * 10) / 10), false).value_or("?");
}

// Containers go by several names, and the brand of an MP4 file is no matter to who plays it.
struct ContainerName {
  const char *name, *kind;
};
constexpr std::array containerNames{
    ContainerName{"application/mp4", "video/mp4"},
    ContainerName{"application/ogg", "video/ogg"},
    ContainerName{"application/vnd.apple.mpegurl", "application/x-mpegurl"},
    ContainerName{"application/x-3gp", "video/mp4"},
    ContainerName{"audio/3gpp", "video/mp4"},
    ContainerName{"audio/mp4", "video/mp4"},
    ContainerName{"audio/mpegurl", "application/x-mpegurl"},
    ContainerName{"audio/ogg", "video/ogg"},
    ContainerName{"audio/wav", "audio/x-wav"},
    ContainerName{"audio/webm", "video/webm"},
    ContainerName{"audio/x-m4a", "video/mp4"},
    ContainerName{"audio/x-ms-wma", "video/x-ms-asf"},
    ContainerName{"video/3gp", "video/mp4"},
    ContainerName{"video/3gpp", "video/mp4"},
    ContainerName{"video/3gpp2", "video/mp4"},
    ContainerName{"video/avi", "video/x-msvideo"},
    ContainerName{"video/flv", "video/x-flv"},
    ContainerName{"video/mkv", "video/webm"},
    ContainerName{"video/mov", "video/mp4"},
    ContainerName{"video/quicktime", "video/mp4"},
    ContainerName{"video/wmv", "video/x-ms-asf"},
    ContainerName{"video/x-m4v", "video/mp4"},
    ContainerName{"video/x-matroska", "video/webm"},
    ContainerName{"video/x-ms-wmv", "video/x-ms-asf"},
};

std::string kindOf(const std::string& type) {
  const auto name = type.substr(0, type.find(';'));
  const auto* found = std::find_if(containerNames.begin(), containerNames.end(),
                                   [&](const auto& one) { return one.name == name; });
  return found == containerNames.end() ? name : found->kind;
}

// A line for each thing that is otherwise than it is said.
void compareFile(const Entry& said, const Entry& is, JSON::Array& list) {
  const auto add = [&](const std::string& what, const std::string& wanted, const std::string& found) {
    JSON::Object difference{{"line", numberIn(said, "line")},
                            {"text", what + " is " + found + ", not " + wanted}};
    list.emplace_back(std::move(difference));
  };
  const auto type = kindOf(textIn(said, "type")), real = kindOf(textIn(is, "type"));
  if (!type.empty() && !real.empty() && type != real) add("its type", type, real);
  if (isSetIn(said, "streaming")) return;  // what it plays differs from moment to moment
  for (const char* side : {"width", "height"}) {
    const double wanted = numberIn(said, side), found = numberIn(is, side);
    if (wanted > 0 && found > 0 && std::abs(wanted - found) > std::max(2.0, wanted * sideTolerance))
      add(std::string("its ") + side, numberWords(wanted), numberWords(found));
  }
  const double seconds = numberIn(is, "seconds"), length = numberIn(said, "seconds");
  if (seconds > 0 && length > 0 && std::abs(seconds - length) > lengthTolerance)
    add("its duration", numberWords(length) + " s", numberWords(seconds) + " s");
  const double bytes = numberIn(is, "bytes"), size = numberIn(said, "bytes");
  const auto differs = [](double wanted, double found, double most) {
    return wanted > 0 && found > 0 && (found > wanted * most || found * most < wanted);
  };
  if (differs(size, bytes, mostOfASize)) add("its fileSize", numberWords(size), numberWords(bytes));
  const double rate = seconds > 0 ? bytes * 8 / 1000 / seconds : 0;
  if (differs(numberIn(said, "bitrate"), rate, mostOfARate))
    add("its bitrate", numberWords(numberIn(said, "bitrate")) + " kbit/s", numberWords(rate) + " kbit/s");
}

Evidence fileDiffers(const Story& story) {
  JSON::Array differences;
  for (const auto* said : story.of("file"))
    for (const auto* is : story.of("file-look"))
      if (textIn(*said, "url") == textIn(*is, "url")) compareFile(*said, *is, differences);
  return listed("places", std::move(differences));
}

// The delegate's words, whatever else was found.
Evidence notPlayed(const Story& story) {
  JSON::Array failures;
  for (const auto* callback : story.of("callback"))
    if (textIn(*callback, "name") == "DidFail")
      failures.emplace_back(
          JSON::Object{{"code", numberIn(*callback, "code")}, {"text", textIn(*callback, "description")}});
  return listed("failures", std::move(failures));
}

constexpr std::array videoAdPlayTable{
    Rule{"vast-not-played", Severity::Error, "An ad could not be played.",
         "Nobody sees it, and nobody pays for it.",
         "Look at the other findings. The number is that of the standard, as the ad's servers are told it.",
         "An ad that stands in for another one and plays.", notPlayed},
    Rule{"vast-wrapper-failed", Severity::Error, "A wrapper's address does not answer with a document.",
         "There is no ad behind it: error 301.", "Check address and server.",
         "An answer that is slow, but comes.", wrapperFailed},
    Rule{"vast-slow", Severity::Warning, "A document takes longer than 1 s to come.",
         "The person waits for it before anything is seen, once for each wrapper.",
         "Answer sooner, or leave wrappers out.", "1 s.", slowAnswers},
    Rule{"vast-file-failed", Severity::Error, "A file of the ad cannot be fetched or read.",
         "Players that choose it show nothing: error 401, 402 or 405.",
         "Check its address, its server and the file itself.",
         "A file for which this machine lacks the decoder.", fileFailed},
    Rule{"vast-file-differs", Severity::Warning, "A file is not what the document says of it.",
         "Players choose files by what is said, and quartiles come at the wrong time.",
         "Write into the document what the file is.",
         "A size within 5%, a length within 1 s, a bitrate within twice of what is said.", fileDiffers},
    Rule{"vast-part-failed", Severity::Error, "A script, picture or page of the ad does not load.",
         "Nobody measures it, or its icon or companion stays empty.", "Check address and server.",
         "What is loaded only when it comes into sight.", partFailed},
    Rule{"vast-not-told", Severity::Warning, "An address that was told something did not take it.",
         "What happened is not counted.", "Check address and server.",
         "What arrives at a second try; addresses of what did not happen.", notTold},
};

}  // namespace

std::span<const Rule> videoAdPlayRules() {
  return videoAdPlayTable;
}

}  // namespace velto::preview
