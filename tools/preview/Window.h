// The window beside the device: what the ad's state is, how much of it is seen, what happened, and what a device and its
// owner can do, by buttons and by keys. It draws when there is news, and sleeps otherwise. Main thread.
#pragma once

#include "velto/platform/foundation/GMemory.h"

#include <gtk/gtk.h>
#include <velto/gtk/inspector/Feed.h>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "preview/Device.h"
#include "preview/EventList.h"
#include "preview/FileDialog.h"
#include "preview/Network.h"
#include "preview/Screen.h"
#include "preview/Story.h"

namespace velto::preview {

class Window {
 public:
  // Has the creative of that file or address offered from now on, and says where what is beside it is served; throws
  // UsageError when it cannot be read.
  using Offer = std::function<std::string(const std::string& creative)>;
  // What has been offered is at that base.
  Window(Screen& screen, Journal& journal, std::string creative, const std::string& base, Offer offer);
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;
  ~Window();

  bool isOpen() const { return window_ != nullptr; }
  GtkWindow* widget() const { return window_; }
  // Whether anything but news, such as a timer, would wake it.
  bool isAwake() const { return settling_ || judging_ || isJudging_; }
  // A button by its name, or the title of a page in small letters; whether there is one.
  bool press(const std::string& name);

 private:
  // From the last change of the file, since an editor writes in several steps; and from the last news.
  static constexpr guint settles = 200, judgesAfter = 1500;  // ms
  static constexpr double judgesAtLatest = 4000;             // ms from the first news: some ads never rest
  struct Command {
    const char *name, *label, *keys, *tip;
    bool isSwitch;
    void (*run)(Window&, bool on);
  };
  static const std::array<Command, 10> commands;

  static void activated(GSimpleAction* action, GVariant*, Window* self) noexcept;
  static void closed(GtkWidget*, Window* self) noexcept;
  static gboolean pageKey(GtkWidget*, GVariant* page, gpointer self) noexcept;
  static gboolean dropped(GtkDropTarget*, const GValue* value, double, double, Window* self) noexcept;
  static void fileChanged(GFileMonitor*, GFile* file, GFile* other, GFileMonitorEvent, Window* self) noexcept;

  GtkWidget* tools();
  GtkWidget* sight();
  GtkWidget* pages();
  void addKeys(GtkWidget* window);
  void play(std::string creative);
  void begin(const std::string& base);
  void watchFile();
  void add(const JSON::Object& entry);
  void update();
  void showSight();
  void judgeSoon();
  void judgeNow();
  void titleFindings();

  Screen& screen_;
  Journal& journal_;
  std::string creative_;
  const Offer offer_;
  Device device_;
  GtkWindow* window_ = nullptr;  // null once closed
  GSimpleActionGroup* actions_ = nullptr;
  GtkLabel *state_ = nullptr, *frame_ = nullptr, *load_ = nullptr, *seen_ = nullptr;
  GtkWidget *graph_ = nullptr, *notebook_ = nullptr, *small_ = nullptr;
  EventList events_, console_, network_, findings_;
  std::shared_ptr<gtk::InspectorFeed> feed_;
  std::vector<GPtr<GFileMonitor>> monitors_;
  std::optional<FileDialog> fileDialog_;
  Network requests_;
  Story story_;
  guint settling_ = 0, judging_ = 0;
  double newsSince_ = 0;  // ms, while judging_
  int plays_ = 0;
  bool isJudging_ = false;
};

}  // namespace velto::preview
