// A push button on the screen: paints its look, shows that it is pressed, and can be used by pointer, touch
// and keyboard. Made by the view system for UIButton; main thread only.
#pragma once

#include "velto/gtk/views/Peer.h"

namespace velto {
class UIButton;
}

namespace velto::gtk {

class PushButtonPeer final : public Peer, public ButtonPeer {
 public:
  PushButtonPeer();
  ~PushButtonPeer() override;

  void setLook(const ButtonLook& look) override;

 private:
  static void pressed(GtkGestureClick* gesture, int presses, double x, double y,
                      PushButtonPeer* self) noexcept;
  static void moved(GtkGesture* gesture, GdkEventSequence* sequence, PushButtonPeer* self) noexcept;
  static void released(GtkGestureClick*, int presses, double x, double y, PushButtonPeer* self) noexcept;
  static void cancelled(GtkGesture*, GdkEventSequence*, PushButtonPeer* self) noexcept;
  static gboolean keyPressed(GtkEventControllerKey*, guint key, guint code, GdkModifierType state,
                             PushButtonPeer* self) noexcept;
  std::shared_ptr<UIButton> button() const;
  void highlight(bool highlighted);
  void paint(GtkSnapshot* snapshot, float width, float height) const;

  ButtonLook look_;
  bool isNamed_ = false;  // to who asks for accessible names
  bool highlighted_ = false;
  GtkGesture* press_;         // the widget's
  GtkEventController* keys_;  // the widget's
};

}  // namespace velto::gtk
