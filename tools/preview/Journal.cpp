// Writing down.
#include "preview/Journal.h"

#include <glib.h>
#include <velto/measurement/OMIDVeltoSDK.h>
#include <velto/platform/foundation/NSURL.h>
#include <velto/platform/ui/WKWebView.h>

#include <cstdio>
#include <set>

namespace velto::preview {
namespace {

constexpr char reportScheme[] = "velto-preview:";

// Sends what a page writes to its console, and the errors of its scripts, as navigations of frames that come
// and go: the engine tells of them in order.
constexpr char consoleScript[] = R"JS((function () {
  if (window.__veltoPreview) return;
  window.__veltoPreview = true;
  var waiting = [];
  function flush() {
    var root = document.documentElement;
    if (!root) return;
    while (waiting.length) {
      var frame = document.createElement('iframe');
      frame.style.display = 'none';
      frame.src = waiting.shift();
      root.appendChild(frame);
      root.removeChild(frame);
    }
  }
  function report(kind, details) {
    waiting.push('velto-preview:' + kind + '?' + encodeURIComponent(JSON.stringify(details)));
    flush();
  }
  function text(value) {
    if (typeof value === 'string') return value;
    if (value instanceof Error) return String(value);
    try { return JSON.stringify(value) || String(value); } catch (e) { return String(value); }
  }
  ['log', 'info', 'warn', 'error', 'debug'].forEach(function (level) {
    var original = console[level];
    console[level] = function () {
      report('console', {level: level, text: Array.prototype.map.call(arguments, text).join(' ')});
      return original.apply(console, arguments);
    };
  });
  window.addEventListener('error', function (e) {
    if (e.target && e.target !== window) {
      if (/(^|\/)mraid\.js([?#]|$)/.test(e.target.src || '')) return;  // it is there in any case
      report('resource-error', {url: String(e.target.src || e.target.href || '')});
    } else {
      report('script-error', {message: String(e.message), line: e.lineno || 0, column: e.colno || 0});
    }
  }, true);
  window.addEventListener('unhandledrejection', function (e) {
    report('script-error', {message: 'unhandled rejection: ' + text(e.reason), line: 0, column: 0});
  });
  document.addEventListener('DOMContentLoaded', flush);
})();)JS";

const std::set<std::string> namingKeys{"name", "state", "type", "level"};

std::string textOf(const JSON::Object& object, const char* key) {
  const auto found = object.find(key);
  const auto* text = found == object.end() ? nullptr : found->second.string();
  return text ? *text : std::string();
}

// What stands in quotes in a statement such as window.mraid.setState("expanded");
std::string argumentOf(const std::string& statement, const std::string& function) {
  const auto at = statement.find(function + "(\"");
  if (at == std::string::npos) return {};
  const auto begin = at + function.size() + 2;
  return statement.substr(begin, statement.find('"', begin) - begin);
}

}  // namespace

Journal::Journal() : start_(g_get_monotonic_time()) {
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
  std::set<std::string> names{event};
  for (const auto& key : namingKeys)
    if (const auto name = textOf(details, key.c_str()); !name.empty()) names.insert(name);
  for (const auto& name : names) ++counts_[name];

  details["t"] = milliseconds();
  details["event"] = event;
  const auto line =
      writeJSON(JSON(details), false).value_or("{\"event\":\"" + event + "\",\"unreadable\":true}");
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
  if (onEntry) onEntry(line);
}

int Journal::count(const std::string& name) const {
  const auto found = counts_.find(name);
  return found == counts_.end() ? 0 : found->second;
}

void Journal::inspect(const std::string& event, JSON::Object details) {
  if (event == "navigation") {
    const auto url = textOf(details, "url");
    if (url == "about:blank" || isOfThePage(url)) return;  // frames without content are nothing to tell of
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

bool Journal::isOfThePage(const std::string& url) {
  if (url.rfind(reportScheme, 0) != 0) return false;
  const auto question = url.find('?');
  if (question == std::string::npos) return true;
  const auto decoded = g_uri_unescape_string(url.c_str() + question + 1, nullptr);
  const auto details = decoded ? readJSON(decoded) : std::nullopt;
  g_free(decoded);
  const auto* object = details ? details->object() : nullptr;
  if (object) add(url.substr(sizeof reportScheme - 1, question - (sizeof reportScheme - 1)), *object);
  return true;
}

void Journal::prepare(WKWebViewConfiguration& configuration) {
  auto& scripts = configuration.userContentController.userScripts;
  scripts.insert(scripts.begin(), {consoleScript, WKUserScriptInjectionTime::AtDocumentStart, false});
}

}  // namespace velto::preview
