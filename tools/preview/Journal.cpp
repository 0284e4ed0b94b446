// Writing down.
#include "preview/Journal.h"

#include <glib.h>
#include <velto/gtk/GtkPlatform.h>
#include <velto/measurement/OMIDVeltoSDK.h>

#include <cstdio>
#include <set>

namespace velto::preview {
namespace {

std::string textOf(const JSON::Object& object, const char* key) {
  const auto found = object.find(key);
  const auto* text = found == object.end() ? nullptr : found->second.string();
  return text ? *text : std::string();
}

// What tells entries of one kind apart, and the kinds whose entries are events by that name alone: a state or a command
// may have the name of an event.
constexpr const char* namingKeys[] = {"name", "state", "type", "level", "command", "quartile"};
const std::set<std::string> kindsOfEvents{"callback", "statement", "state", "measurement"};

// "state", "state/expanded", "state/stateChange", "stateChange".
std::set<std::string> countedNames(const std::string& event, const JSON::Object& details) {
  std::set<std::string> names{event};
  for (const auto* key : namingKeys)
    if (const auto name = textOf(details, key); !name.empty()) names.insert(event + "/" + name);
  if (kindsOfEvents.count(event))
    for (const auto* key : {"name", "type"})
      if (const auto name = textOf(details, key); !name.empty()) names.insert(name);
  return names;
}

bool wasTapped() {
  auto* platform = gtk::GtkPlatform::installed();
  return platform && platform->application().touchGuard().mayOpen();
}

// What stands in quotes in a statement such as window.mraid.setState("expanded");
std::string argumentOf(const std::string& statement, const std::string& function) {
  const auto at = statement.find(function + "(\"");
  if (at == std::string::npos) return {};
  const auto begin = at + function.size() + 2;
  return statement.substr(begin, statement.find('"', begin) - begin);
}

}  // namespace

Journal::Journal()
    : start_(g_get_monotonic_time()),
      ears_([this](const auto& kind, auto details) { add(kind, std::move(details)); }) {
  VeltoInspector::install(this);
  OMIDVeltoSDK::sharedInstance()->setTracer([this](const JSON& event) { addMeasured(event); });
}

Journal::~Journal() {
  OMIDVeltoSDK::sharedInstance()->setTracer(nullptr);
  VeltoInspector::install(nullptr);
}

double Journal::milliseconds() const {
  return static_cast<double>((g_get_monotonic_time() - start_) / 100) / 10;
}

void Journal::add(const std::string& event, JSON::Object details) {
  for (const auto& name : countedNames(event, details)) ++counts_[name];

  details["t"] = milliseconds();
  details["event"] = event;
  const auto line =
      writeJSON(JSON(details), false).value_or("{\"event\":\"" + event + "\",\"unreadable\":true}");
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
  for (size_t i = 0; i < observers_.size(); ++i) observers_[i](details);  // one may add an entry itself
}

int Journal::count(const std::string& name) const {
  const auto found = counts_.find(name);
  return found == counts_.end() ? 0 : found->second;
}

int Journal::countFromHere(const std::string& name) const {
  const auto before = countsBefore_.find(name);
  return count(name) - (before == countsBefore_.end() ? 0 : before->second);
}

void Journal::inspect(const std::string& event, JSON::Object details) {
  if (event == "navigation") {
    const auto url = textOf(details, "url");
    if (url == "about:blank") return;  // frames without content are nothing to tell of
    if (url.rfind("http", 0) == 0) lastAddress_ = url;
  } else if (event == "navigation-failed") {
    details["url"] = lastAddress_;
    details["removesBanner"] = true;
  } else if (event == "command") {
    details["tapped"] = wasTapped();
  } else if (event == "open") {
    details["tapped"] = details.contains("opened") && details["opened"] == JSON(true);
  } else if (event == "statement") {
    const auto text = textOf(details, "text");
    if (const auto fired = argumentOf(text, "fireEvent"); !fired.empty()) details["name"] = fired;
    if (const auto placement = argumentOf(text, "setPlacementType"); !placement.empty())
      placement_ = placement;
    if (const auto state = argumentOf(text, "setState"); !state.empty() && state != state_) {
      add(event, std::move(details));
      state_ = state;
      return add("state", {{"state", state}, {"name", "stateChange"}});
    }
  }
  add(event, std::move(details));
}

void Journal::addMeasured(const JSON& event) {
  const auto* object = event.object();
  if (!object) return;
  JSON::Object details{{"type", textOf(*object, "type")}};
  if (const auto data = object->find("data"); data != object->end()) details["data"] = data->second;
  add("measurement", std::move(details));
}

void Journal::prepare(WKWebViewConfiguration& configuration) {
  if (prepares) prepares(configuration);
}

void Journal::willLoad(WKWebView& webView) {
  ears_.listenTo(webView);
}

}  // namespace velto::preview
