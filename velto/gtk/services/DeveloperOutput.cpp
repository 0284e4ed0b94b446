// GLib's structured log, and the trace file.
#include "velto/gtk/services/DeveloperOutput.h"

#include "velto/gtk/Modules.h"
#include "velto/gtk/modules/Profiler.h"

#include <fcntl.h>
#include <glib.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

namespace velto::gtk {
namespace {

constexpr char logDomain[] = "Velto";

GLogLevelFlags glibLevel(LogLevel level) {
  return level == LogLevel::Info ? G_LOG_LEVEL_INFO : G_LOG_LEVEL_DEBUG;
}

// Each piece is one call to the system, so what was written stays, whatever ends the process.
class TraceFile {
 public:
  explicit TraceFile(const char* path)
      : file_(open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR)) {}
  TraceFile(const TraceFile&) = delete;
  TraceFile& operator=(const TraceFile&) = delete;
  ~TraceFile() {
    if (isOpen()) close(file_);
  }
  bool isOpen() const { return file_ >= 0; }
  void write(std::string_view piece) const {
    while (!piece.empty()) {
      const ssize_t written = ::write(file_, piece.data(), piece.size());
      if (written < 0 && errno == EINTR) continue;
      if (written <= 0) return;  // a full disk costs the trace, and nothing else
      piece.remove_prefix(static_cast<size_t>(written));
    }
  }

 private:
  const int file_;
};

}  // namespace

bool DeveloperOutput::wants(LogLevel level) const {
  return !g_log_writer_default_would_drop(glibLevel(level), logDomain);
}

void DeveloperOutput::log(const LogLine& line) {
  std::vector<std::pair<std::string, std::string>> named{{"GLIB_DOMAIN", logDomain}, {"MESSAGE", line.text}};
  for (const auto& [name, value] : line.fields) {
    std::string key = "VELTO_" + name;
    for (auto& letter : key) letter = g_ascii_toupper(letter);
    named.emplace_back(std::move(key), value);
  }
  std::vector<GLogField> fields;
  for (const auto& [name, value] : named)
    fields.push_back({name.c_str(), value.c_str(), static_cast<gssize>(value.size())});
  g_log_structured_array(glibLevel(line.level), fields.data(), fields.size());
}

std::function<void(std::string_view)> DeveloperOutput::traceOutput() {
  const char* path = g_getenv("VELTO_TRACE");
  if (!path || !*path) return nullptr;
  const auto file = std::make_shared<TraceFile>(path);
  if (!file->isOpen()) {
    g_log(logDomain, G_LOG_LEVEL_MESSAGE, "VELTO_TRACE: %s cannot be written", path);
    return nullptr;
  }
  return [file](std::string_view piece) { file->write(piece); };
}

std::function<void(const ProfilerMark&)> DeveloperOutput::markOutput() {
  constexpr double nanoseconds = 1e9;
  const bool isProfiled = g_getenv(profilerVariable) != nullptr;
  const auto mark =
      isProfiled ? moduleFunction<ProfilerMarkFunction>(profilerModule, profilerMarkName) : nullptr;
  if (!mark) return nullptr;
  return [mark](const ProfilerMark& made) {
    mark(static_cast<int64_t>(made.from * nanoseconds), static_cast<int64_t>(made.seconds * nanoseconds),
         made.name.c_str(), made.text.c_str());
  };
}

}  // namespace velto::gtk
