// A peer with a widget of somebody else's in it.
#include "velto/gtk/WidgetView.h"

#include "velto/gtk/views/Peer.h"
#include "velto/platform/ui/UIView.h"

#include <stdexcept>

namespace velto::gtk {
namespace {

class WidgetPeer final : public Peer {
 public:
  explicit WidgetPeer(GtkWidget* inner) : inner_(GPtr<GtkWidget>::sink(inner)) {
    gtk_widget_set_parent(inner_, widget());
  }
  ~WidgetPeer() override {
    if (gtk_widget_get_parent(inner_) == widget()) gtk_widget_unparent(inner_);
  }
  bool paintsContent() const override { return true; }

 private:
  GPtr<GtkWidget> inner_;
};

class WidgetView final : public UIView {
 public:
  explicit WidgetView(GtkWidget* inner) : UIView(std::make_unique<WidgetPeer>(inner)) {}
  bool isControl() const override { return true; }
};

}  // namespace

std::shared_ptr<UIView> widgetView(GtkWidget* widget) {
  if (!GTK_IS_WIDGET(widget) || GTK_IS_ROOT(widget) || gtk_widget_get_parent(widget))
    throw std::invalid_argument("widgetView: not a widget that is free to be put into a view");
  return std::make_shared<WidgetView>(widget);
}

}  // namespace velto::gtk
