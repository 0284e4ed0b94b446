// What the library writes for developers, kept for tests: nothing, unless a test asks for it before the first load.
#pragma once

#include "velto/Export.h"
#include "velto/platform/Diagnostics.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace velto::headless {

class VELTO_EXPORT RecordingDiagnostics : public Diagnostics {
 public:
  void keepLog() { keepsLog_ = true; }
  void keepMarks() { keepsMarks_ = true; }
  void keepTrace() { trace_ = std::make_shared<std::string>(); }

  std::vector<LogLine> lines() const {
    std::lock_guard lock(mutex_);
    return lines_;
  }
  // All that was written so far, also once the platform has gone. Null unless it is kept.
  std::shared_ptr<const std::string> trace() const { return trace_; }

  std::vector<ProfilerMark> marks() const {
    std::lock_guard lock(mutex_);
    return marks_;
  }

  bool wants(LogLevel) const override { return keepsLog_; }
  void log(const LogLine& line) override {
    std::lock_guard lock(mutex_);
    lines_.push_back(line);
  }
  std::function<void(const ProfilerMark&)> markOutput() override {
    if (!keepsMarks_) return nullptr;
    return [this](const ProfilerMark& mark) {
      std::lock_guard lock(mutex_);
      marks_.push_back(mark);
    };
  }
  std::function<void(std::string_view)> traceOutput() override {
    if (!trace_) return nullptr;
    return [trace = trace_](std::string_view piece) { trace->append(piece); };
  }

 private:
  mutable std::mutex mutex_;
  bool keepsLog_ = false, keepsMarks_ = false;
  std::vector<ProfilerMark> marks_;
  std::vector<LogLine> lines_;
  std::shared_ptr<std::string> trace_;
};

}  // namespace velto::headless
