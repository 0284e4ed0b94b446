// The keyboard in the hand of one widget that covers its window: from construction to destruction the focus
// is in it and cannot go to anything beside it, but for a dialog above all of the window's content; then it
// returns to where it was. Main thread only.
#pragma once

#include "velto/platform/foundation/GMemory.h"

#include <gtk/gtk.h>

#include <functional>
#include <vector>

namespace velto::gtk {

class ModalFocus {
 public:
  using Key = std::function<bool(guint key)>;

  // The widget is in its window already. Escape is reported before anything inside hears of it, other keys
  // when nothing inside took them, to `pressed`, which says whether it took them. Both may destroy this.
  ModalFocus(GtkWidget* widget, std::function<void()> escaped, Key pressed);
  ModalFocus(const ModalFocus&) = delete;
  ModalFocus& operator=(const ModalFocus&) = delete;
  ~ModalFocus();

 private:
  static gboolean keyPressed(GtkEventControllerKey*, guint key, guint, GdkModifierType,
                             ModalFocus* self) noexcept;
  static void focusMoved(GtkRoot*, GParamSpec*, ModalFocus* self) noexcept;
  static gboolean keyLeftOver(GtkEventControllerKey*, guint key, guint, GdkModifierType,
                              ModalFocus* self) noexcept;
  void claim(GtkWidget* before);
  void shutOut(GtkWidget* widget);
  bool holdsFocus() const;

  GPtr<GtkWidget> widget_;
  GtkEventController* keys_;              // the widget's
  GWeakRef root_;                         // the window, which goes although this is there
  GtkEventController* leftOver_;          // the widget's
  GWeakRef before_;                       // what had the focus
  std::vector<GPtr<GtkWidget>> shutOut_;  // all that lies beside it and could have had the focus
  bool claimed_ = false;                  // not yet where a dialog was there first
  std::function<void()> escaped_;
  Key pressed_;
};

}  // namespace velto::gtk
