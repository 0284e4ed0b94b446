// The host view: following a widget.
#include "velto/gtk/views/HostView.h"

#include "velto/gtk/Translations.h"
#include "velto/gtk/views/Peer.h"
#include "velto/platform/ui/ViewChanges.h"

#include <algorithm>
#include <optional>

namespace velto::gtk {

// Two widgets: the outer one stands where something is to be seen and cuts the rest off; in it the inner one
// has the whole of the view, so that an ad keeps its place in a view that is half scrolled away.
class ClipPeer final : public Peer {
 public:
  ClipPeer() : inner_(GPtr<GtkWidget>::sink(newViewWidget())) {
    gtk_widget_set_overflow(widget(), GTK_OVERFLOW_HIDDEN);
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget()), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                   translated("Advertisement"), -1);
    gtk_widget_set_parent(inner_, widget());
  }
  ~ClipPeer() override {
    if (gtk_widget_get_parent(inner_)) gtk_widget_unparent(inner_);
  }

  void setFrame(const CGRect& frame) override {
    frame_ = frame;
    place();
  }
  std::optional<CGRect> clip() const override { return clip_; }
  void setBackgroundColor(const UIColor& color) override { setViewColor(inner_, color); }
  void setClip(const CGRect& clip) {
    if (clip == clip_) return;
    clip_ = clip;
    place();
    ViewChanges::note();
  }

 protected:
  GtkWidget* container() const override { return inner_; }

 private:
  void place() {
    setViewFrame(widget(), clip_);
    setViewFrame(inner_, {{frame_.minX() - clip_.minX(), frame_.minY() - clip_.minY()}, frame_.size});
  }

  GPtr<GtkWidget> inner_;
  CGRect frame_;
  CGRect clip_;  // in the superview's coordinates, like the frame
};

namespace {

std::optional<CGRect> boundsIn(GtkWidget* widget, GtkWidget* layer) {
  graphene_rect_t bounds;
  if (!gtk_widget_compute_bounds(widget, layer, &bounds)) return std::nullopt;
  return CGRect{{bounds.origin.x, bounds.origin.y}, {bounds.size.width, bounds.size.height}};
}

CGRect intersection(const CGRect& a, const CGRect& b) {
  const double left = std::max(a.minX(), b.minX());
  const double top = std::max(a.minY(), b.minY());
  return {{left, top},
          {std::max(0.0, std::min(a.maxX(), b.maxX()) - left),
           std::max(0.0, std::min(a.maxY(), b.maxY()) - top)}};
}

// The part of a widget's bounds that those around it, such as a scrolled list, let be seen.
CGRect visiblePart(GtkWidget* widget, GtkWidget* layer, CGRect bounds) {
  for (auto* around = gtk_widget_get_parent(widget); around && around != layer;
       around = gtk_widget_get_parent(around))
    if (gtk_widget_get_overflow(around) == GTK_OVERFLOW_HIDDEN)
      if (const auto clip = boundsIn(around, layer)) bounds = intersection(bounds, *clip);
  return bounds;
}

}  // namespace

HostView::HostView(GtkWidget* widget, GtkWidget* layer, std::function<void()> gone)
    : widget_(widget), layer_(layer), gone_(std::move(gone)) {
  auto peer = std::make_unique<ClipPeer>();
  peer_ = peer.get();
  view_ = UIView::makeWithPeer(std::move(peer));
  g_signal_connect_after(widget_, "map", G_CALLBACK(mappedOrNot), this);
  g_signal_connect_after(widget_, "unmap", G_CALLBACK(mappedOrNot), this);
  g_signal_connect(widget_, "destroy", G_CALLBACK(destroyed), this);
}

HostView::~HostView() {
  g_signal_handlers_disconnect_by_data(widget_, this);
  view_->removeFromSuperview();
}

void HostView::mappedOrNot(GtkWidget*, HostView* self) noexcept {
  self->follow();
}

void HostView::destroyed(GtkWidget*, HostView* self) noexcept {
  const auto gone = std::move(self->gone_);
  gone();
}

void HostView::follow() {
  const bool shown = gtk_widget_get_mapped(widget_) && gtk_widget_is_ancestor(widget_, layer_);
  const auto bounds = shown ? boundsIn(widget_, layer_) : std::nullopt;
  if (view_->isHidden() == bounds.has_value()) view_->setHidden(!bounds);
  if (!bounds) return;
  view_->setFrame(*bounds);
  peer_->setClip(visiblePart(widget_, layer_, *bounds));
}

}  // namespace velto::gtk
