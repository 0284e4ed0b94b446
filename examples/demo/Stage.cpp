// See Stage.h.
#include "Stage.h"

#include <velto/core/VeltoDataStore.h>
#include <velto/gtk/GtkVersions.h>
#include <velto/gtk/VeltoGtk.h>
#include <velto/measurement/OMIDVeltoSDK.h>
#include <velto/platform/ui/WKWebView.h>
#include <velto/ui/VeltoBannerViewControllerPrivate.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "Inspector.h"

namespace demo {
namespace {

constexpr velto::CGPoint point{40, 360};

// The page leaves room for banners at the top and at the bottom, and says what its holes are for.
constexpr char layout[] = R"(
<interface>
  <object class="GtkWindow" id="window">
    <property name="title">Velto demo</property>
    <property name="default-width">1240</property>
    <property name="default-height">860</property>
    <property name="child">
      <object class="GtkBox">
        <property name="margin-top">60</property>
        <property name="margin-bottom">100</property>
        <child>
          <object class="GtkFixed" id="page">
            <property name="hexpand">true</property>
            <style><class name="view"/></style>
            <child>
              <object class="GtkLabel">
                <property name="label">&lt;span size="22pt" weight="bold"&gt;The harbour in the morning&lt;/span&gt;

A page of some application. It knows nothing of the ads around it:
one fills this widget, one floats at a point, two hold the edges.</property>
                <property name="use-markup">true</property>
                <layout><property name="transform">translate(40, 20)</property></layout>
              </object>
            </child>
            <child>
              <object class="GtkBox" id="slot">
                <property name="width-request">600</property>
                <property name="height-request">60</property>
                <style><class name="hole"/></style>
                <layout><property name="transform">translate(40, 170)</property></layout>
              </object>
            </child>
            <child>
              <object class="GtkBox">
                <property name="width-request">300</property>
                <property name="height-request">250</property>
                <style><class name="hole"/></style>
                <layout><property name="transform">translate(40, 300)</property></layout>
              </object>
            </child>
            <child>
              <object class="GtkLabel">
                <property name="width-request">280</property>
                <property name="xalign">0</property>
                <property name="label">Nets are mended on the quay
before the first ferry comes in.
By eight the bakery has sold out,
and the gulls know it.</property>
                <layout><property name="transform">translate(370, 310)</property></layout>
              </object>
            </child>
          </object>
        </child>
        <child>
          <object class="GtkBox">
            <property name="orientation">vertical</property>
            <property name="spacing">6</property>
            <property name="margin-start">12</property>
            <property name="margin-end">12</property>
            <property name="width-request">480</property>
            <child>
              <object class="GtkGrid" id="buttons">
                <property name="row-spacing">4</property>
                <property name="column-spacing">4</property>
                <property name="column-homogeneous">true</property>
              </object>
            </child>
            <child>
              <object class="GtkScrolledWindow">
                <property name="vexpand">true</property>
                <property name="child">
                  <object class="GtkTextView" id="log">
                    <property name="editable">false</property>
                    <property name="cursor-visible">false</property>
                    <property name="monospace">true</property>
                    <property name="left-margin">6</property>
                  </object>
                </property>
              </object>
            </child>
          </object>
        </child>
      </object>
    </property>
  </object>
</interface>)";

constexpr char style[] = ".hole { border: 1px dashed alpha(currentColor, 0.3); }";

void addButton(GtkGrid* grid, int column, int row, const std::string& label, std::function<void()> action) {
  GtkWidget* button = gtk_button_new_with_label(label.c_str());
  const auto clicked = +[](GtkButton*, gpointer data) { (*static_cast<std::function<void()>*>(data))(); };
  const auto forget = +[](gpointer data, GClosure*) { delete static_cast<std::function<void()>*>(data); };
  g_signal_connect_data(button, "clicked", G_CALLBACK(clicked), new std::function<void()>(std::move(action)),
                        forget, GConnectFlags{});
  gtk_grid_attach(grid, button, column, row, 1, 1);
}

}  // namespace

// A banner and its delegate.
class Stage::Banner : public velto::VeltoBannerViewControllerDelegate {
 public:
  Banner(Stage& stage, std::string name) : stage_(stage), name_(std::move(name)) {}

  std::shared_ptr<velto::VeltoBannerViewController> controller;

 private:
  std::shared_ptr<velto::UIViewController> presentViewController() override { return stage_.host_; }
  void veltoBannerViewControllerDidFinishLoad(velto::VeltoBannerViewControllerPrivate&) override {
    stage_.hear(name_, "DidFinishLoad");
  }
  void veltoBannerViewControllerDidPress(velto::VeltoBannerViewControllerPrivate&) override {
    stage_.hear(name_, "DidPress");
  }
  void veltoBannerViewControllerDidFail(velto::VeltoBannerViewControllerPrivate&,
                                        const velto::VeltoErrorAd& error) override {
    stage_.hear(name_, "DidFail " + std::to_string(error.errorCode));
  }
  void veltoBannerViewControllerDidClose(velto::VeltoBannerViewControllerPrivate&) override {
    stage_.hear(name_, "DidClose");
  }

  Stage& stage_;
  const std::string name_;
};

const std::vector<Case>& Stage::cases() {
  using namespace velto;
  static const std::vector<Case> all{
      {"top", "Top, 320 × 50", Place::Top, VeltoBannerSize320x50},
      {"bottom", "Bottom, 728 × 90", Place::Bottom, VeltoBannerSize728x90},
      {"point", "At a point, 300 × 250", Place::AtPoint, VeltoBannerSize300x250},
      {"smart", "Smart, in a widget of the page", Place::InPage, VeltoBannerSizeSmart},
      {"slide", "Top, from the left", Place::Top, VeltoBannerSize320x50, VeltoAnimationFromLeft},
      {"spring", "Top, from the left with spring", Place::Top, VeltoBannerSize320x50,
       VeltoAnimationFromLeftWithSpring},
      {"refresh", "Top, refreshed every 2 s", Place::Top, VeltoBannerSize320x50, VeltoAnimationNone, 2},
      {"no fill", "No fill", Place::Top, VeltoBannerSize320x50, VeltoAnimationNone, 0, "nofill"},
      {"error", "Server error", Place::Top, VeltoBannerSize320x50, VeltoAnimationNone, 0, "error"},
      {"net banner", "Top, another network's", Place::Top, VeltoBannerSize320x50, VeltoAnimationNone, 0,
       "network"},
      {"waterfall", "Top, third network of three", Place::Top, VeltoBannerSize320x50, VeltoAnimationNone, 0,
       "waterfall"},
      {"expanding", "Bottom, expanding", Place::Bottom, VeltoBannerSize320x50, VeltoAnimationNone, 0,
       "expanding"},
      {"resizing", "Bottom, resizing", Place::Bottom, VeltoBannerSize320x50, VeltoAnimationNone, 0,
       "resizing"},
      {"two-part", "Bottom, in two parts", Place::Bottom, VeltoBannerSize320x50, VeltoAnimationNone, 0,
       "two-part"},
      {"measured", "At a point, measured", Place::AtPoint, VeltoBannerSize300x250, VeltoAnimationNone, 0,
       "measured"},
  };
  return all;
}

const Case& Stage::caseOf(const std::string& name) {
  const auto found =
      std::find_if(cases().begin(), cases().end(), [&](const Case& c) { return c.name == name; });
  if (found == cases().end()) throw std::logic_error("no case \"" + name + "\"");
  return *found;
}

Stage::Stage(const std::function<void()>& application) {
  GtkBuilder* builder = gtk_builder_new_from_string(layout, -1);
  const auto object = [builder](const char* id) { return gtk_builder_get_object(builder, id); };
  window_ = GTK_WINDOW(object("window"));
  slot_ = GTK_WIDGET(object("slot"));
  log_ = GTK_TEXT_VIEW(object("log"));
  auto* buttons = GTK_GRID(object("buttons"));
  int row = 0;
  for (const Case& c : cases()) addButton(buttons, 0, row++, c.label, [this, &c] { show(c.name); });
  addButton(buttons, 0, row, "Remove all", [this] { clear(); });
  row = 0;
  for (const auto& c : Interstitials::cases())
    addButton(buttons, 1, row++, c.label, [this, &c] { interstitials_->open(c.name); });
  addButton(buttons, 1, row++, "A video ad", [this] { videoAds_->open(); });
  addButton(buttons, 1, row, "A slot, a dialog, a toast", [this] {
    covered_ = std::make_unique<CoveredPage>();
    covered_->showDialog(true);
  });
  addButton(buttons, 1, ++row, "The inspector", [] { openInspector(); });
  if (application) addButton(buttons, 1, ++row, "A GTK application", application);
  g_object_unref(builder);

  GtkCssProvider* css = gtk_css_provider_new();
  velto::gtk::loadStyle(css, style);
  gtk_style_context_add_provider_for_display(gtk_widget_get_display(slot_), GTK_STYLE_PROVIDER(css),
                                             GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  g_object_unref(css);

  host_ = velto::gtk::hostViewController(window_);
  interstitials_ = std::make_unique<Interstitials>(
      host_, [this](const std::string& name, const std::string& what) { hear(name, what); });
  videoAds_ = std::make_unique<VideoAds>(
      host_, [this](const std::string& name, const std::string& what) { add(name, what); });
  const auto closed = +[](GtkWidget*, gpointer stage) {
    static_cast<Stage*>(stage)->clear();
    static_cast<Stage*>(stage)->window_ = nullptr;
  };
  g_signal_connect(window_, "destroy", G_CALLBACK(closed), this);
  gtk_window_present(window_);
  velto::OMIDVeltoSDK::sharedInstance()->setTracer([this](const velto::JSON& event) { addMeasured(event); });
}

Stage::~Stage() {
  velto::OMIDVeltoSDK::sharedInstance()->setTracer(nullptr);
  if (window_) gtk_window_destroy(window_);
}

void Stage::show(const std::string& name) {
  using velto::VeltoBannerViewController;
  const Case& c = caseOf(name);
  banners_.erase(c.place);
  auto banner = std::make_shared<Banner>(*this, name);
  switch (c.place) {
    case Place::Top:
      banner->controller =
          VeltoBannerViewController::initWithDelegate(banner, c.size, velto::VeltoBannerPositionTop);
      break;
    case Place::Bottom:
      banner->controller =
          VeltoBannerViewController::initWithDelegate(banner, c.size, velto::VeltoBannerPositionBottom);
      break;
    case Place::AtPoint:
      banner->controller = VeltoBannerViewController::initWithDelegate(banner, c.size, point);
      break;
    case Place::InPage:
      banner->controller =
          VeltoBannerViewController::initWithDelegate(banner, c.size, velto::gtk::hostView(slot_));
      break;
  }
  banners_[c.place] = banner;
  banner->controller->setAnimation(c.animation);
  banner->controller->setEnableAutoRefresh(c.refreshSeconds > 0);
  banner->controller->setRefreshTimeSeconds(c.refreshSeconds);
  banner->controller->setPlacement(name);
  load(c, *banner->controller);
}

void Stage::loadAgain(const std::string& name) {
  const Case& c = caseOf(name);
  const auto banner = banners_.find(c.place);
  if (banner != banners_.end()) load(c, *banner->second->controller);
}

// Real applications register one key, once. Here it picks the answer, so it holds for this load only.
void Stage::load(const Case& c, velto::VeltoBannerViewController& banner) {
  velto::VeltoFramework::addVeltoKey(c.key);
  add(c.name, "load");
  banner.load();
  velto::VeltoFramework::addVeltoKey("demo");
}

void Stage::clear() {
  banners_.clear();
  interstitials_->clear();
  videoAds_->clear();
}

velto::CGRect Stage::adFrame(const std::string& name) const {
  const auto banner = banners_.find(caseOf(name).place);
  const auto view = banner == banners_.end() ? nullptr : banner->second->controller->vc()->webView();
  if (!view || !view->isInWindow()) return {};
  return {host_->view()->convertPointFromView({0, 0}, *view), view->frame().size};
}

velto::CGRect Stage::expectedFrame(const std::string& name, velto::CGSize size) const {
  const double width = gtk_widget_get_width(content());
  const double height = gtk_widget_get_height(content());
  switch (caseOf(name).place) {
    case Place::Top:
      return {{(width - size.width) / 2, 0}, size};
    case Place::Bottom:
      return {{(width - size.width) / 2, height - size.height}, size};
    case Place::AtPoint:
      return {point, size};
    case Place::InPage:
      break;
  }
  graphene_rect_t slot;
  if (!gtk_widget_compute_bounds(slot_, content(), &slot)) return {};
  const double middle = slot.origin.x + slot.size.width / 2;
  return {{middle - size.width / 2, slot.origin.y}, size};
}

struct Stage::Click {
  std::weak_ptr<Stage*> stage;
  std::string name;
  std::vector<std::string> identifiers;  // of the clicks that wait for the server

  static std::vector<std::string> waiting() {
    std::vector<std::string> clicks;
    const auto tracks = velto::VeltoDataStore::getDictionaryForKey("kVeltoTrackIdentifierKey");
    for (const auto& [identifier, type] : tracks.value_or(velto::DefaultsDictionary{}))
      if (type == "click") clicks.push_back(identifier);
    return clicks;
  }
  static void destroy(gpointer data) { delete static_cast<Click*>(data); }

  // In the turn after the press, when the click is in the store and no answer can have come.
  static gboolean begin(gpointer data) {
    auto& click = *static_cast<Click*>(data);
    click.identifiers = waiting();
    if (!click.identifiers.empty())
      g_timeout_add_full(G_PRIORITY_DEFAULT, 50, look, new Click(click), destroy);
    return G_SOURCE_REMOVE;
  }

  static gboolean look(gpointer data) {
    auto& click = *static_cast<Click*>(data);
    const auto stage = click.stage.lock();
    if (!stage) return G_SOURCE_REMOVE;
    const auto left = waiting();
    for (const auto& identifier : click.identifiers)
      if (std::find(left.begin(), left.end(), identifier) != left.end()) return G_SOURCE_CONTINUE;
    (*stage)->add(click.name, "click acknowledged");
    return G_SOURCE_REMOVE;
  }
};

void Stage::followClick(const std::string& name) {
  g_idle_add_full(G_PRIORITY_HIGH, Click::begin, new Click{self_, name, {}}, Click::destroy);
}

// What measurement tells of the ads: how much of the view is seen, and why not more.
void Stage::addMeasured(const velto::JSON& event) {
  const auto member = [](const velto::JSON* of, const char* key) -> const velto::JSON* {
    const auto* object = of ? of->object() : nullptr;
    if (!object) return nullptr;
    const auto found = object->find(key);
    return found == object->end() ? nullptr : &found->second;
  };
  const auto* type = member(&event, "type");
  if (!type || !type->string()) return;
  std::string what = *type->string();
  const auto* view = member(member(&event, "data"), "adView");
  if (const auto* percentage = member(view, "percentageInView")) {
    what += " " + std::to_string(static_cast<int>(percentage->number().value_or(0))) + " %";
    const auto* reasons = member(view, "reasons");
    if (reasons && reasons->array())
      for (const auto& reason : *reasons->array()) what += " " + (reason.string() ? *reason.string() : "");
  }
  add("measurement", what);
}

void Stage::hear(const std::string& name, const std::string& what) {
  add(name, what);
  if (what == "DidPress") followClick(name);
}

int Stage::count(const std::string& name, const std::string& what) const {
  return static_cast<int>(std::count_if(events_.begin(), events_.end(), [&](const Event& event) {
    return event.name == name && event.what == what;
  }));
}

void Stage::add(const std::string& name, const std::string& what) {
  const Event& event =
      events_.emplace_back(Event{double(g_get_monotonic_time() - start_) / 1000, name, what});
  char line[160];
  std::snprintf(line, sizeof line, "%6.0f ms %-12s %s\n", event.ms, name.c_str(), what.c_str());
  std::fputs(line, stdout);
  std::fflush(stdout);
  if (!window_) return;
  GtkTextBuffer* buffer = gtk_text_view_get_buffer(log_);
  GtkTextIter end;
  gtk_text_buffer_get_end_iter(buffer, &end);
  gtk_text_buffer_insert(buffer, &end, line, -1);
  gtk_text_buffer_get_end_iter(buffer, &end);
  gtk_text_buffer_place_cursor(buffer, &end);
  gtk_text_view_scroll_to_mark(log_, gtk_text_buffer_get_insert(buffer), 0, FALSE, 0, 0);
}

}  // namespace demo
