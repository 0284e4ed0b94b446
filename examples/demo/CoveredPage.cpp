// See CoveredPage.h.
#include "CoveredPage.h"

#include <velto/gtk/VeltoGtk.h>
#include <velto/measurement/ViewSight.h>
#include <velto/ui/VeltoBannerViewControllerPrivate.h>

namespace demo {
namespace {

constexpr char layout[] = R"(
<interface>
  <object class="GtkWindow" id="window">
    <property name="title">A page with a dialog</property>
    <property name="default-width">480</property>
    <property name="default-height">420</property>
    <property name="child">
      <object class="GtkOverlay" id="content">
        <property name="child">
          <object class="GtkBox" id="page">
            <property name="orientation">vertical</property>
            <style><class name="view"/></style>
            <child><object class="GtkLabel">
              <property name="label">Nets are mended on the quay
before the first ferry comes in.</property>
              <property name="vexpand">true</property>
            </object></child>
          </object>
        </property>
        <child type="overlay">
          <object class="GtkFrame" id="dialog">
            <property name="visible">false</property>
            <property name="halign">center</property>
            <property name="valign">end</property>
            <property name="margin-bottom">20</property>
            <style><class name="background"/></style>
            <property name="child">
              <object class="GtkBox">
                <property name="orientation">vertical</property>
                <property name="spacing">12</property>
                <property name="margin-top">18</property>
                <property name="margin-bottom">18</property>
                <property name="margin-start">18</property>
                <property name="margin-end">18</property>
                <child><object class="GtkLabel">
                  <property name="label">Leave without saving?</property>
                </object></child>
                <child><object class="GtkButton" id="leave"><property name="label">Leave</property></object></child>
              </object>
            </property>
          </object>
        </child>
        <child type="overlay">
          <object class="GtkFrame" id="toast">
            <property name="visible">false</property>
            <property name="halign">center</property>
            <property name="valign">end</property>
            <property name="margin-bottom">8</property>
            <style><class name="osd"/></style>
            <property name="child"><object class="GtkLabel">
              <property name="label">The page was kept for later</property>
              <property name="margin-start">16</property>
              <property name="margin-end">16</property>
              <property name="margin-top">6</property>
              <property name="margin-bottom">6</property>
            </object></property>
          </object>
        </child>
      </object>
    </property>
  </object>
</interface>)";

}  // namespace

class CoveredPage::Ads : public velto::VeltoBannerViewControllerDelegate {
 public:
  std::shared_ptr<velto::UIViewController> host;
  std::shared_ptr<velto::VeltoBannerViewController> banner;
  bool loaded = false;

 private:
  std::shared_ptr<velto::UIViewController> presentViewController() override { return host; }
  void veltoBannerViewControllerDidFinishLoad(velto::VeltoBannerViewControllerPrivate&) override {
    loaded = true;
  }
};

CoveredPage::CoveredPage() : slot_(velto::gtk::adSlot()), ads_(std::make_shared<Ads>()) {
  GtkBuilder* builder = gtk_builder_new_from_string(layout, -1);
  const auto object = [builder](const char* id) { return gtk_builder_get_object(builder, id); };
  window_ = GTK_WINDOW(object("window"));
  content_ = GTK_WIDGET(object("content"));
  dialog_ = GTK_WIDGET(object("dialog"));
  toast_ = GTK_WIDGET(object("toast"));
  gtk_box_append(GTK_BOX(object("page")), slot_);
  const auto leave = +[](GtkButton*, CoveredPage* page) {
    page->showDialog(false);
    page->showToast(true);
  };
  g_signal_connect(object("leave"), "clicked", G_CALLBACK(leave), this);
  g_object_unref(builder);
  g_object_ref(window_);  // also when a person closes it
  ads_->host = velto::gtk::hostViewController(slot_);
  ads_->banner = velto::VeltoBannerViewController::initWithDelegate(ads_, velto::VeltoBannerSize320x50,
                                                                    velto::VeltoBannerPositionTop);
  ads_->banner->load();
  gtk_window_present(window_);
}

CoveredPage::~CoveredPage() {
  ads_->banner.reset();
  gtk_window_destroy(window_);
  g_object_unref(window_);
}

bool CoveredPage::isLoaded() const {
  return ads_->loaded;
}

velto::CGRect CoveredPage::frameOf(GtkWidget* widget) const {
  graphene_rect_t bounds;
  if (!gtk_widget_get_mapped(widget) || !gtk_widget_compute_bounds(widget, content_, &bounds)) return {};
  return {{bounds.origin.x, bounds.origin.y}, {bounds.size.width, bounds.size.height}};
}

// In the middle of the slot.
velto::CGRect CoveredPage::adFrame() const {
  const auto slot = frameOf(slot_);
  const auto size = ads_->banner->vc()->view()->frame().size;
  return {{slot.midX() - size.width / 2, slot.minY()}, size};
}

velto::CGRect CoveredPage::dialogFrame() const {
  return frameOf(dialog_);
}
velto::CGRect CoveredPage::toastFrame() const {
  return frameOf(toast_);
}

int CoveredPage::seen() const {
  return velto::viewabilityOf(velto::sightOf(ads_->banner->vc()->webView().get(), {})).percentageInView;
}

}  // namespace demo
