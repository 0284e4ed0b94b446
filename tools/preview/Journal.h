// What happened, in order: each entry is a line of JSON on the standard output, and stays here for the steps
// to wait for and to count. Main thread.
#pragma once

#include <velto/core/VeltoInspector.h>
#include <velto/platform/foundation/JSON.h>

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "preview/PageEars.h"

namespace velto::preview {

class Journal final : public VeltoInspector {
 public:
  Journal();
  ~Journal() override;

  void add(const std::string& event, JSON::Object details);
  // How many entries bear that name: their kind ("command"), their kind and what tells them apart ("command/open",
  // "state/expanded", "console/error"), or the name of an event that the delegate, the page or a measurement heard
  // ("DidPress", "ready", "impression").
  int count(const std::string& name) const;
  // The same of those since the call.
  int countFromHere(const std::string& name) const;
  void beginHere() { countsBefore_ = counts_; }
  double milliseconds() const;  // since the start

  // The rich-media state and placement that the page was last told of.
  const std::string& state() const { return state_; }
  const std::string& placement() const { return placement_; }

  // Called after each entry, with its "event" and "t".
  using Observer = std::function<void(const JSON::Object& entry)>;
  void observe(Observer observer) { observers_.push_back(std::move(observer)); }

  // What else is to stand in each page.
  void (*prepares)(WKWebViewConfiguration& configuration) = nullptr;

  PageEars& ears() { return ears_; }

  // From the library.
  void inspect(const std::string& event, JSON::Object details) override;
  void prepare(WKWebViewConfiguration& configuration) override;
  void willLoad(WKWebView& webView) override;

 private:
  void addMeasured(const JSON& event);

  int64_t start_;
  std::vector<Observer> observers_;
  std::map<std::string, int> counts_;
  std::map<std::string, int> countsBefore_;
  std::string lastAddress_;  // that a page went to
  PageEars ears_;
  std::string state_;
  std::string placement_;
};

}  // namespace velto::preview
