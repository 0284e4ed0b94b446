// A web process that is there before the first ad is asked for. It starts when it disturbs nobody: after the
// first frame of the application, when its main loop has nothing else to do; and leaves again when no ad comes
// for five minutes, or memory gets short. Main thread only.
#pragma once

#include "velto/gtk/Signal.h"
#include "velto/gtk/web/WebProcesses.h"
#include "velto/platform/Handle.h"

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <vector>

namespace velto::gtk {

class EarlyStart {
 public:
  explicit EarlyStart(std::shared_ptr<WebSession> session) : session_(std::move(session)) {}
  EarlyStart(const EarlyStart&) = delete;
  EarlyStart& operator=(const EarlyStart&) = delete;
  ~EarlyStart() { stop(); }

  // An ad will probably be asked for. Only the first call counts. `meanwhile` is called when the process begins to start;
  // what it returns goes when that is taken or given back.
  void expect(std::function<Handle()> meanwhile);
  // The first ad is asked for: what has been brought up, or null. From now on ads bring up what they need.
  std::shared_ptr<PreparedEngine> take();

 private:
  static void windowsChanged(GListModel*, guint, guint, guint, EarlyStart* self) noexcept;
  static void windowRealized(GtkWidget* window, EarlyStart* self) noexcept;
  static void framePainted(GdkFrameClock*, EarlyStart* self) noexcept;
  static gboolean idle(gpointer self) noexcept;
  static void memoryIsShort(GMemoryMonitor*, GMemoryMonitorWarningLevel, EarlyStart* self) noexcept;
  void watchWindows();
  void watchFrames(GtkWidget* window);
  void afterFirstFrame();
  void stop();

  std::shared_ptr<WebSession> session_;
  bool isOver_ = false;
  std::vector<Signal> signals_;  // of windows until the first frame, then of the machine's memory
  std::shared_ptr<PreparedEngine> engine_;
  std::function<Handle()> meanwhile_;
  Handle companion_;  // what that returned; until it is called, the call
};

}  // namespace velto::gtk
