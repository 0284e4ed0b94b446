// The widget class, and what the page knows. What it looks like is in InspectorPageLook.cpp.
#include "velto/gtk/inspector/InspectorPage.h"

#include "velto/gtk/ProcessNames.h"
#include "velto/gtk/views/Peer.h"
#include "velto/platform/ui/UIView.h"
#include "velto/platform/ui/UIViewController.h"

#include <algorithm>
#include <utility>

namespace velto::gtk {
namespace {

constexpr char extensionPoint[] = "gtk-inspector-page", typeName[] = "VeltoInspectorPage",
               pageTitle[] = "Velto";
constexpr guint millisecondsOfAMovingChart = 100;
enum Property : guint { Title = 1, Object };

struct PageWidget {
  GtkBox parent;
  InspectorPage* page;
};
GObjectClass* pageParentClass = nullptr;

void pageInit(GTypeInstance* instance, gpointer) noexcept {
  auto* widget = reinterpret_cast<PageWidget*>(instance);
  widget->page = new InspectorPage(GTK_WIDGET(instance));
}

// Its parts go first, and tell the page so.
void finalizePage(GObject* object) noexcept {
  auto* page = std::exchange(reinterpret_cast<PageWidget*>(object)->page, nullptr);
  pageParentClass->finalize(object);
  delete page;
}

void getProperty(GObject*, guint property, GValue* value, GParamSpec*) noexcept {
  if (property == Title) g_value_set_static_string(value, pageTitle);
}

// The inspector sets what a person has chosen in it.
void setProperty(GObject* object, guint property, const GValue* value, GParamSpec*) noexcept {
  auto* chosen = property == Object ? g_value_get_object(value) : nullptr;
  if (GTK_IS_WIDGET(chosen)) InspectorPage::of(GTK_WIDGET(object)).selectAround(GTK_WIDGET(chosen));
}

void pageClassInit(gpointer klass, gpointer) noexcept {
  pageParentClass = G_OBJECT_CLASS(g_type_class_peek_parent(klass));
  auto* objects = G_OBJECT_CLASS(klass);
  objects->finalize = finalizePage;
  objects->get_property = getProperty;
  objects->set_property = setProperty;
  constexpr auto reads = static_cast<GParamFlags>(G_PARAM_READABLE | G_PARAM_STATIC_STRINGS);
  constexpr auto writes = static_cast<GParamFlags>(G_PARAM_WRITABLE | G_PARAM_STATIC_STRINGS);
  g_object_class_install_property(objects, Title, g_param_spec_string("title", "", "", pageTitle, reads));
  g_object_class_install_property(objects, Object,
                                  g_param_spec_object("object", "", "", G_TYPE_OBJECT, writes));
}

GType pageType() {
  static const GType type = registerOwnType(GTK_TYPE_BOX, typeName, sizeof(GtkBoxClass), pageClassInit,
                                            sizeof(PageWidget), pageInit);
  return type;
}

}  // namespace

// Another copy of this library in the process may have come before.
void registerInspectorPage() {
  if (!g_io_extension_point_lookup(extensionPoint)) {
    auto* point = g_io_extension_point_register(extensionPoint);
    g_io_extension_point_set_required_type(point, GTK_TYPE_WIDGET);
  }
  if (!g_type_from_name(typeName)) g_io_extension_point_implement(extensionPoint, pageType(), "velto", 0);
}

GtkWidget* newInspectorPage() {
  return GTK_WIDGET(g_object_new(pageType(), nullptr));
}

GtkWidget* widgetOf(InspectedPlacement& placement) {
  auto* controller = dynamic_cast<UIViewController*>(&placement);
  auto* peer = controller ? dynamic_cast<Peer*>(&controller->view()->peer()) : nullptr;
  return peer ? peer->widget() : nullptr;
}

InspectorPage& InspectorPage::of(GtkWidget* page) {
  return *reinterpret_cast<PageWidget*>(page)->page;
}

InspectorPage::InspectorPage(GtkWidget* box)
    : box_(box), feed_(std::make_shared<InspectorFeed>([this] { changed(); })) {
  build();
  feed_->connect();
  const auto mapped = +[](GtkWidget*, InspectorPage* self) noexcept { self->setShown(true); };
  const auto unmapped = +[](GtkWidget*, InspectorPage* self) noexcept { self->setShown(false); };
  g_signal_connect(box, "map", G_CALLBACK(mapped), this);
  g_signal_connect(box, "unmap", G_CALLBACK(unmapped), this);
}

InspectorPage::~InspectorPage() {
  feed_->stop();
  if (timer_) g_source_remove(timer_);
}

// --- when it looks

void InspectorPage::setShown(bool shown) {
  isShown_ = shown;
  if (shown) {
    feed_->connect();
    return update();
  }
  follow(false);
  if (tick_) gtk_widget_remove_tick_callback(box_, std::exchange(tick_, 0));
}

// Once a frame is enough.
void InspectorPage::changed() {
  if (!isShown_ || tick_) return;
  const auto look = [](GtkWidget*, GdkFrameClock*, gpointer self) -> gboolean {
    static_cast<InspectorPage*>(self)->tick_ = 0;
    static_cast<InspectorPage*>(self)->update();
    return G_SOURCE_REMOVE;
  };
  tick_ = gtk_widget_add_tick_callback(box_, look, this, nullptr);
}

// While a load is on its way its chart grows. A load that is shown, or has ended, needs no timer.
void InspectorPage::follow(bool isUnderWay) {
  if (isUnderWay == (timer_ != 0)) return;
  if (!isUnderWay) {
    g_source_remove(std::exchange(timer_, 0));
    return;
  }
  const auto look = [](gpointer self) -> gboolean {
    static_cast<InspectorPage*>(self)->changed();
    return G_SOURCE_CONTINUE;
  };
  timer_ = g_timeout_add(millisecondsOfAMovingChart, look, this);
}

void InspectorPage::update() {
  feed_->connect();
  collect();
  isUpdating_ = true;
  showPlacements();
  showLoads();
  isUpdating_ = false;
  showLoad();
}

// --- what there is

// Those that have gone are kept for a while: why a short-lived ad did not show is asked afterwards.
void InspectorPage::collect() {
  for (auto& shown : shown_)
    if (shown.placement.expired()) shown.state = "gone";
  for (const auto& placement : feed_->placements()) {
    const auto record = placement->record();
    auto found =
        std::find_if(shown_.begin(), shown_.end(), [&](const auto& shown) { return shown.record == record; });
    if (found == shown_.end())
      found = shown_.insert(shown_.end(), {record, placement, {}, placement->kindName(), {}});
    found->name = record->name();
    found->state = placement->stateName();
  }
  auto gone = std::count_if(shown_.begin(), shown_.end(),
                            [](const auto& shown) { return shown.placement.expired(); });
  std::erase_if(shown_, [&](const auto& shown) {
    if (!shown.placement.expired()) return false;
    return shown.record->isEmpty() || gone-- > static_cast<int>(mostGone);
  });
  const bool isThere = std::any_of(shown_.begin(), shown_.end(),
                                   [this](const auto& shown) { return shown.record == selected_; });
  if (!isThere) selected_ = shown_.empty() ? nullptr : shown_.back().record;  // the newest
  loads_ = selected_ ? selected_->timelines() : std::vector<VeltoAdTimeline>();
  std::reverse(loads_.begin(), loads_.end());
}

void InspectorPage::select(size_t placement, std::optional<uint64_t> load) {
  if (placement < shown_.size()) selected_ = shown_[placement].record;
  selectedLoad_ = load;
  update();
}

void InspectorPage::selectAround(GtkWidget* widget) {
  for (size_t i = 0; i < shown_.size(); ++i) {
    const auto placement = shown_[i].placement.lock();
    auto* ad = placement ? widgetOf(*placement) : nullptr;
    if (ad && (widget == ad || gtk_widget_is_ancestor(widget, ad))) return select(i);
  }
}

const VeltoAdTimeline* InspectorPage::selectedLoad() const {
  const auto found = std::find_if(loads_.begin(), loads_.end(),
                                  [this](const auto& load) { return load.load == selectedLoad_; });
  if (found != loads_.end()) return &*found;
  return loads_.empty() ? nullptr : &loads_.front();
}

const InspectorPage::Shown* InspectorPage::selected() const {
  const auto found = std::find_if(shown_.begin(), shown_.end(),
                                  [this](const auto& shown) { return shown.record == selected_; });
  return found == shown_.end() ? nullptr : &*found;
}

std::string InspectorPage::json() const {
  const auto* of = selected();
  if (!of) return "{}";
  JSON::Array loads;
  for (auto load = loads_.rbegin(); load != loads_.rend(); ++load) loads.emplace_back(load->json());
  const JSON::Object all{
      {"placement", of->name}, {"kind", of->kind}, {"state", of->state}, {"loads", std::move(loads)}};
  return writeJSON(all, true).value_or("{}");
}

}  // namespace velto::gtk
