// What happened, in order: each entry is a line of JSON on the standard output, and stays here for the steps
// to wait for and to count. Main thread.
#pragma once

#include <velto/core/VeltoInspector.h>
#include <velto/platform/foundation/JSON.h>

#include <functional>
#include <map>
#include <string>

namespace velto::preview {

class Journal final : public VeltoInspector {
 public:
  Journal();
  ~Journal() override;

  void add(const std::string& event, JSON::Object details);
  // How many entries bear that name: their kind ("command", "frame"), or the "name", "state", "type" or
  // "level" that tells them apart.
  int count(const std::string& name) const;
  double milliseconds() const;  // since the start

  // The rich-media state and placement that the page was last told of.
  const std::string& state() const { return state_; }
  const std::string& placement() const { return placement_; }

  // Called after each entry.
  std::function<void(const std::string& line)> onEntry;

  // From the library.
  void inspect(const std::string& event, JSON::Object details) override;
  void prepare(WKWebViewConfiguration& configuration) override;

 private:
  bool isOfThePage(const std::string& url);
  void addMeasured(const JSON& event);

  int64_t start_;
  std::map<std::string, int> counts_;
  std::string state_;
  std::string placement_;
};

}  // namespace velto::preview
