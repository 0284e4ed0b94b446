// Processes, several at once.
#include "preview/Batch.h"

#include <gio/gio.h>
#include <glib-unix.h>
#include <signal.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <set>

namespace velto::preview {
namespace {

namespace fs = std::filesystem;
using End = BatchResult::End;

constexpr guint grace = 5;          // seconds from the request to end to the order
constexpr int endedBySignal = 128;  // codes from here on: a shell's, and that of whoever supervises a play
constexpr char outputFile[] = "output.jsonl", errorFile[] = "errors.txt", eventFile[] = "events.jsonl",
               baselineFile[] = "baseline.json";

// The last lines, as few as can tell why. A library's warnings have the time in them, and two runs would differ.
std::string endOf(const fs::path& file) {
  constexpr std::streamoff most = 600;
  std::ifstream in(file, std::ios::binary | std::ios::ate);
  if (!in) return {};
  in.seekg(std::max<std::streamoff>(0, static_cast<std::streamoff>(in.tellg()) - most));
  std::string text;
  for (std::string line; std::getline(in, line);)
    if (line.find(" WARNING **: ") == std::string::npos) text += line + "\n";
  const auto last = text.find_last_not_of("\n ");
  char* valid =
      g_utf8_make_valid(text.c_str(), last == std::string::npos ? 0 : static_cast<gssize>(last + 1));
  std::string words = valid;
  g_free(valid);
  words.erase(0, words.find_first_not_of("\n"));
  return words;
}

// What a process said itself is kept where its report has not said it already, or not to the end.
void keepOutput(const fs::path& folder) {
  std::error_code none;
  const auto own = fs::file_size(folder / eventFile, none);
  if (none || own < fs::file_size(folder / outputFile, none))
    fs::rename(folder / outputFile, folder / eventFile, none);
  else
    fs::remove(folder / outputFile, none);
  if (fs::file_size(folder / errorFile, none) == 0) fs::remove(folder / errorFile, none);
}

// What one play needs to know of a baseline over many.
void saveBaseline(const fs::path& file, const std::string& creative, const std::set<std::string>& ids) {
  JSON::Array findings;
  for (const auto& id : ids) findings.emplace_back(JSON::Object{{"id", id}});
  const JSON known(JSON::Object{{"creative", creative}, {"findings", findings}});
  std::ofstream(file, std::ios::binary) << writeJSON(known, false).value_or("{}") << "\n";
}

}  // namespace

struct Batch::Running {
  Batch& batch;
  const BatchItem& item;
  const size_t index;
  const fs::path folder;
  GSubprocess* process = nullptr;
  guint limit = 0, last = 0;
  bool hung = false;

  void end() {
    if (last || !process) return;
    g_subprocess_send_signal(process, SIGTERM);
    last = g_timeout_add_seconds(
        grace,
        [](gpointer self) -> gboolean {
          static_cast<Running*>(self)->last = 0;
          g_subprocess_force_exit(static_cast<Running*>(self)->process);
          return G_SOURCE_REMOVE;
        },
        this);
  }
};

Batch::Batch(Setting setting, Told told) : setting_(std::move(setting)), told_(std::move(told)) {}

Batch::~Batch() = default;

std::vector<BatchResult> Batch::play(const std::vector<BatchItem>& items) {
  results_.assign(items.size(), std::nullopt);
  toldOf_ = 0;
  std::set<std::string> names;
  for (const auto& item : items) names.insert(item.name);
  makeRoom(setting_.folder, names);
  std::vector<std::pair<Batch*, int>> ways{{this, SIGINT}, {this, SIGTERM}, {this, SIGHUP}};
  std::vector<guint> watched;
  for (auto& way : ways)
    watched.push_back(g_unix_signal_add(
        way.second,
        [](gpointer data) -> gboolean {
          auto& [batch, signal] = *static_cast<std::pair<Batch*, int>*>(data);
          batch->stop(signal);
          return G_SOURCE_CONTINUE;
        },
        &way));
  size_t next = 0;
  const auto isOver = [&] { return next >= items.size() || signal_ || fault_; };
  while (!running_.empty() || !isOver()) {
    while (running_.size() < static_cast<size_t>(setting_.jobs) && !isOver()) {
      try {
        start(items[next], next);
      } catch (...) {
        fail();
      }
      ++next;
    }
    if (!running_.empty()) g_main_context_iteration(nullptr, TRUE);
  }
  for (const guint watch : watched) g_source_remove(watch);
  if (fault_) std::rethrow_exception(fault_);
  std::vector<BatchResult> results;
  for (auto& result : results_)
    if (result) results.push_back(std::move(*result));
  return results;
}

std::vector<std::string> Batch::optionsOf(const BatchItem& item) const {
  auto words = setting_.options;
  if (!item.isVideoAd) std::erase_if(words, [](const auto& word) { return word.starts_with("--ca="); });
  words.insert(words.end(), item.options.begin(), item.options.end());
  return words;
}

std::vector<std::string> Batch::wordsFor(const BatchItem& item) {
  if (item.isVideoAd) return {"--vast=" + item.creative};
  return {"--", item.creative};
}

Tolerance Batch::toleranceOf(const BatchItem& item) const {
  Tolerance tolerance;
  if (setting_.baseline) tolerance.known = setting_.baseline->of(item.creative, item.name);
  auto words = optionsOf(item);
  for (const auto& word : wordsFor(item)) words.push_back(word);
  try {
    if (const auto arguments = parseArguments(words)) tolerance.allowed = arguments->allowed;
  } catch (const UsageError&) {
    // Its own process says what is wrong with them.
  }
  return tolerance;
}

void Batch::start(const BatchItem& item, size_t index) {
  const auto folder = fs::path(setting_.folder) / item.name;
  fs::create_directories(folder);
  auto* running = new Running{.batch = *this, .item = item, .index = index, .folder = folder};
  std::vector<std::string> words{setting_.program};
  for (const auto& option : optionsOf(item)) words.push_back(option);
  if (setting_.baseline) {
    const auto known = running->folder / baselineFile;
    saveBaseline(known, item.creative, toleranceOf(item).known);
    words.push_back("--baseline=" + known.string());
  }
  words.push_back("--report=" + running->folder.string());
  for (const auto& word : wordsFor(item)) words.push_back(word);
  std::vector<const char*> pointers;
  for (const auto& word : words) pointers.push_back(word.c_str());
  pointers.push_back(nullptr);

  GSubprocessLauncher* launcher = g_subprocess_launcher_new(G_SUBPROCESS_FLAGS_NONE);
  g_subprocess_launcher_set_stdout_file_path(launcher, (running->folder / outputFile).c_str());
  g_subprocess_launcher_set_stderr_file_path(launcher, (running->folder / errorFile).c_str());
  // None of them shares a screen, and so a pointer, with another or with a person.
  for (const char* display : {"DISPLAY", "WAYLAND_DISPLAY"})
    g_subprocess_launcher_unsetenv(launcher, display);
  GError* error = nullptr;
  running->process = g_subprocess_launcher_spawnv(launcher, pointers.data(), &error);
  g_object_unref(launcher);
  if (!running->process) {
    const std::string reason = error->message;
    g_error_free(error);
    delete running;
    results_[index] = resultOf(folder, item.creative, End::Refused, refusedCode, reason, toleranceOf(item));
    return tell();
  }
  running_.push_back(running);
  running->limit = g_timeout_add(
      static_cast<guint>(setting_.timeLimit.count()),
      [](gpointer self) -> gboolean {
        auto* late = static_cast<Running*>(self);
        late->limit = 0;
        late->hung = true;
        late->end();
        return G_SOURCE_REMOVE;
      },
      running);
  g_subprocess_wait_async(
      running->process, nullptr,
      [](GObject* process, GAsyncResult* result, gpointer self) {
        g_subprocess_wait_finish(G_SUBPROCESS(process), result, nullptr);
        auto* over = static_cast<Running*>(self);
        over->batch.ended(*over);
      },
      running);
}

void Batch::ended(Running& running) {
  for (const guint timer : {running.limit, running.last})
    if (timer) g_source_remove(timer);
  const bool exited = g_subprocess_get_if_exited(running.process);
  const int code = exited ? g_subprocess_get_exit_status(running.process)
                          : endedBySignal + g_subprocess_get_term_sig(running.process);
  g_object_unref(running.process);
  try {
    take(running, code);
  } catch (...) {
    fail();
  }
  std::erase(running_, &running);
  delete &running;
  tell();
}

void Batch::take(const Running& running, int code) {
  keepOutput(running.folder);
  if (signal_ && code >= endedBySignal) return;  // it was told to end because the batch was: no result
  const auto end = running.hung          ? End::Hung
                   : code == refusedCode ? End::Refused
                   : code > 1            ? End::Crashed
                                         : End::Played;
  results_[running.index] = resultOf(running.folder, running.item.creative, end, code,
                                     endOf(running.folder / errorFile), toleranceOf(running.item));
}

// Where nothing can be written the others need not play on, and none may be left behind.
void Batch::fail() {
  if (!fault_) fault_ = std::current_exception();
  for (auto* running : running_) running->end();
}

void Batch::tell() {
  for (; toldOf_ < results_.size() && results_[toldOf_]; ++toldOf_) told_(*results_[toldOf_]);
}

void Batch::stop(int signal) {
  signal_ = signal;
  for (auto* running : running_) running->end();
}

int playAll(const Arguments& arguments) {
  const auto items = batchOf(arguments);
  const auto start = g_get_monotonic_time();
  const auto told = [start](const BatchResult& result) {
    JSON::Array ids;
    for (const auto& id : idsOf(result)) ids.emplace_back(id);
    const JSON line(JSON::Object{{"event", "play"},
                                 {"t", static_cast<double>((g_get_monotonic_time() - start) / 1000)},
                                 {"name", result.name},
                                 {"code", result.code},
                                 {"findings", ids}});
    std::printf("%s\n", writeJSON(line, false).value_or("{}").c_str());
    std::fflush(stdout);
  };
  Batch batch(
      {.program = fs::read_symlink("/proc/self/exe").string(),
       .options = arguments.ofEach,
       .folder = arguments.report,
       .jobs = arguments.jobs ? arguments.jobs : static_cast<int>(g_get_num_processors()),
       .timeLimit = arguments.timeLimit,
       .baseline = arguments.baseline.empty() ? std::nullopt : std::optional(Baseline(arguments.baseline))},
      told);
  const auto results = batch.play(items);
  writeReport(arguments.report, results);
  return batch.signal() ? endedBySignal + batch.signal() : codeOf(results);
}

}  // namespace velto::preview
