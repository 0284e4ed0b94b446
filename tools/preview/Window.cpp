// Commands and keys; the file, and playing it anew.
#include "preview/Window.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "preview/Arguments.h"
#include "preview/Findings.h"
#include "preview/Probe.h"

namespace velto::preview {

const std::array<Window::Command, 10> Window::commands{{
    {"reload", "Reload", "<Control>r", "Plays the creative anew", false,
     [](Window& window, bool) { window.play(window.creative_); }},
    {"rotate", "Rotate", "<Control>t", "Turns the device on its side, and back", true,
     [](Window& window, bool on) { window.screen_.rotate(on); }},
    {"hide", "Hide", "<Control>h", "The device's screen goes, and comes back", true,
     [](Window& window, bool on) { window.screen_.setShown(!on); }},
    {"cover", "Cover half", "<Control>b", "Puts something over the lower half of the ad", true,
     [](Window& window, bool on) { window.device_.setCovered(on); }},
    {"mute", "Mute", "<Control>m", "The output volume is zero", true,
     [](Window& window, bool on) { window.device_.setMuted(on); }},
    {"offline", "Offline", "<Control>l", "The page loads nothing more", true,
     [](Window& window, bool on) { window.device_.setOffline(on); }},
    {"dark", "Dark", "<Control>d", "A dark desktop, which pages are told of", true,
     [](Window&, bool on) {
       g_object_set(gtk_settings_get_default(), "gtk-application-prefer-dark-theme", gboolean{on}, nullptr);
     }},
    {"close", "Close ad", "<Control>e", "Presses the ad's close button, or skips a video ad", false,
     [](Window& window, bool) { window.screen_.pressClose(); }},
    {"inspect", "Web inspector", "F12", "Opens the engine's inspector of the page", false,
     [](Window& window, bool) { window.device_.showWebInspector(); }},
    {"open", "Open…", "<Control>o", "Plays another file; it can be dropped here, too", false,
     [](Window& window, bool) {
       if (!window.fileDialog_)
         window.fileDialog_.emplace(window.window_,
                                    [&window](const std::string& path) { window.play(path); });
       window.fileDialog_->show(window.creative_);
     }},
}};

void Window::activated(GSimpleAction* action, GVariant*, Window* self) noexcept {
  const std::string name = g_action_get_name(G_ACTION(action));
  if (!self->screen_.isOpen()) return;
  for (const auto& command : commands) {
    if (name != command.name) continue;
    bool on = false;
    if (command.isSwitch) {
      GVariant* state = g_action_get_state(G_ACTION(action));
      on = !g_variant_get_boolean(state);
      g_variant_unref(state);
      g_simple_action_set_state(action, g_variant_new_boolean(on));
    }
    JSON::Object done{{"name", name}};
    if (command.isSwitch) done["on"] = on;
    self->journal_.add("hand", std::move(done));
    command.run(*self, on);
  }
}

bool Window::press(const std::string& name) {
  if (!window_) return false;
  const std::array pages{"timeline", "console", "network", "findings", "loads"};
  const auto page = std::find(pages.begin(), pages.end(), name);
  if (page != pages.end()) {
    gtk_notebook_set_current_page(GTK_NOTEBOOK(notebook_), static_cast<int>(page - pages.begin()));
    return true;
  }
  if (!g_action_group_has_action(G_ACTION_GROUP(actions_), name.c_str())) return false;
  g_action_group_activate_action(G_ACTION_GROUP(actions_), name.c_str(), nullptr);
  return true;
}

// In the device's window, too: there the keys come before the page's.
void Window::addKeys(GtkWidget* window) {
  gtk_widget_insert_action_group(window, "preview", G_ACTION_GROUP(actions_));
  auto* controller = GTK_SHORTCUT_CONTROLLER(gtk_shortcut_controller_new());
  gtk_event_controller_set_propagation_phase(GTK_EVENT_CONTROLLER(controller), GTK_PHASE_CAPTURE);
  gtk_shortcut_controller_set_scope(controller, GTK_SHORTCUT_SCOPE_MANAGED);
  const auto add = [controller](const char* keys, GtkShortcutAction* action, GVariant* argument = nullptr) {
    auto* shortcut = gtk_shortcut_new(gtk_shortcut_trigger_parse_string(keys), action);
    if (argument) gtk_shortcut_set_arguments(shortcut, argument);
    gtk_shortcut_controller_add_shortcut(controller, shortcut);
  };
  for (const auto& command : commands)
    add(command.keys, gtk_named_action_new((std::string("preview.") + command.name).c_str()));
  for (int page = 0; page <= 5; ++page)  // of them 0 is the search
    add((page ? "<Control>" + std::to_string(page) : "<Control>f").c_str(),
        gtk_callback_action_new(pageKey, this, nullptr), g_variant_new_int32(page));
  for (const char* keys : {"<Control>w", "<Control>q"}) add(keys, gtk_named_action_new("window.close"));
  gtk_widget_add_controller(window, GTK_EVENT_CONTROLLER(controller));

  auto* target = gtk_drop_target_new(G_TYPE_FILE, GDK_ACTION_COPY);
  gtk_event_controller_set_propagation_phase(GTK_EVENT_CONTROLLER(target), GTK_PHASE_CAPTURE);
  g_signal_connect(target, "drop", G_CALLBACK(dropped), this);
  gtk_widget_add_controller(window, GTK_EVENT_CONTROLLER(target));
}

gboolean Window::pageKey(GtkWidget*, GVariant* page, gpointer data) noexcept {
  auto* self = static_cast<Window*>(data);
  auto* notebook = GTK_NOTEBOOK(self->notebook_);
  if (!self->window_) return FALSE;
  if (const int number = g_variant_get_int32(page)) {
    gtk_notebook_set_current_page(notebook, number - 1);
  } else {
    const std::array lists{&self->events_, &self->console_, &self->network_, &self->findings_};
    const auto shown = static_cast<size_t>(gtk_notebook_get_current_page(notebook));
    if (shown < lists.size()) lists.at(shown)->find();
  }
  return TRUE;
}

gboolean Window::dropped(GtkDropTarget*, const GValue* value, double, double, Window* self) noexcept {
  char* path =
      G_VALUE_HOLDS(value, G_TYPE_FILE) ? g_file_get_path(G_FILE(g_value_get_object(value))) : nullptr;
  if (!path) return FALSE;
  self->play(path);
  g_free(path);
  return TRUE;
}

void Window::play(std::string creative) {
  std::string base;
  try {
    base = offer_(creative);
  } catch (const UsageError& error) {
    return journal_.add("failure", {{"text", error.what()}});
  }
  creative_ = std::move(creative);
  watchFile();  // there may be new folders
  device_.setCovered(false);
  g_simple_action_set_state(G_SIMPLE_ACTION(g_action_map_lookup_action(G_ACTION_MAP(actions_), "cover")),
                            g_variant_new_boolean(FALSE));
  for (auto* list : {&console_, &network_, &findings_}) list->clear();
  titleFindings();
  ++plays_;
  story_ = {};
  begin(base);
  screen_.load();
  update();
}

// Told before it is loaded: the base says what is the creative's own.
void Window::begin(const std::string& base) {
  char* name = g_utf8_make_valid(creative_.c_str(), -1);
  journal_.add("creative", {{"source", name}, {"base", base}});
  g_free(name);
}

void Window::judgeSoon() {
  const double now = journal_.milliseconds();
  if (!judging_)
    newsSince_ = now;
  else if (now - newsSince_ > judgesAtLatest)
    return;
  else
    g_source_remove(judging_);
  judging_ = g_timeout_add(
      judgesAfter,
      [](gpointer self) -> gboolean {
        static_cast<Window*>(self)->judging_ = 0;
        static_cast<Window*>(self)->judgeNow();
        return G_SOURCE_REMOVE;
      },
      this);
}

// What asks the page lives no longer than that takes: it would go on asking. A page that hangs makes that long, and
// meanwhile the window may be closed, or play another.
void Window::judgeNow() {
  // What keeps a video ad from being played stands in its document.
  const bool isThere = screen_.hasLoaded() || (story_.isOfVideoAd() && screen_.hasFailed());
  if (!window_ || !isThere || !screen_.isOpen()) return;
  if (isJudging_) return judgeSoon();
  const auto isOver = [this, plays = plays_] { return !window_ || !screen_.isOpen() || plays != plays_; };
  isJudging_ = true;
  Probe(screen_, journal_, requests_).examine(isOver);
  isJudging_ = false;
  if (isOver()) return;
  findings_.clear();
  for (const auto& finding : judge(story_, {})) {
    auto entry = jsonOf(finding);
    entry["event"] = "finding";
    entry["t"] = journal_.milliseconds();
    findings_.add(entry);
  }
  titleFindings();
  showSight();
}

void Window::titleFindings() {
  const auto title = findings_.count() ? "Findings (" + std::to_string(findings_.count()) + ")" : "Findings";
  gtk_notebook_set_tab_label_text(GTK_NOTEBOOK(notebook_), findings_.widget(), title.c_str());
}

// Of its folder: style and pictures are beside it, and editors put another file in its place; and of the folders below, the
// nearest first.
void Window::watchFile() {
  constexpr size_t mostFolders = 50;
  monitors_.clear();
  std::error_code none;
  if (!std::filesystem::is_regular_file(creative_, none)) return;
  std::vector folders{std::filesystem::absolute(creative_, none).parent_path()};
  for (size_t i = 0; i < folders.size(); ++i) {
    GFile* file = g_file_new_for_path(folders[i].c_str());
    auto* monitor = g_file_monitor_directory(file, G_FILE_MONITOR_WATCH_MOVES, nullptr, nullptr);
    g_object_unref(file);
    if (!monitor) continue;
    g_signal_connect(monitor, "changed", G_CALLBACK(fileChanged), this);
    monitors_.push_back(GPtr<GFileMonitor>::adopt(monitor));
    for (std::filesystem::directory_iterator entry(folders[i], none), end;
         entry != end && folders.size() < mostFolders; entry.increment(none))
      if (entry->is_directory(none) && !entry->is_symlink(none) &&
          entry->path().filename().native().front() != '.')
        folders.push_back(entry->path());
  }
}

void Window::fileChanged(GFileMonitor*, GFile* file, GFile* other, GFileMonitorEvent event,
                         Window* self) noexcept {
  if (event == G_FILE_MONITOR_EVENT_ATTRIBUTE_CHANGED || event == G_FILE_MONITOR_EVENT_DELETED) return;
  // What is no part of a page, such as an editor's lock or this program's own output, is not meant.
  const auto isOf = [self](GFile* changed) {
    char* name = changed ? g_file_get_basename(changed) : nullptr;
    const std::filesystem::path path(name ? name : "");
    g_free(name);
    const auto kind = path.extension();
    return path == std::filesystem::path(self->creative_).filename() || kind == ".html" || kind == ".htm" ||
           kind == ".js" || kind == ".css" || kind == ".svg";
  };
  if (!isOf(other ? other : file)) return;
  if (self->settling_) g_source_remove(self->settling_);
  self->settling_ = g_timeout_add(
      settles,
      [](gpointer data) -> gboolean {
        auto* window = static_cast<Window*>(data);
        window->settling_ = 0;
        window->play(window->creative_);
        return G_SOURCE_REMOVE;
      },
      self);
}

}  // namespace velto::preview
