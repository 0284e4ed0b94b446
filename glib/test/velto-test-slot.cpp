// The slot as a widget class, and the card that stands for an ad.
#include <algorithm>
#include <cmath>

#include "velto-test-ground-private.h"
#include "velto-test-slot-private.h"

namespace velto_test {
namespace {

constexpr GdkRGBA cardColor{0.93F, 0.93F, 0.9F, 1};
constexpr GdkRGBA textColor{0.2F, 0.2F, 0.2F, 1};
constexpr int cardPadding = 4;  // points

GtkWidgetClass* parentClass = nullptr;

// What a person would read of a page, more or less.
std::string textOf(const std::string& markup) {
  std::string text;
  auto* unseen =
      g_regex_new("<(script|style)\\b.*?</\\1\\s*>|<!--.*?-->|<[^>]*>|\\s+",
                  GRegexCompileFlags(G_REGEX_CASELESS | G_REGEX_DOTALL | G_REGEX_RAW), {}, nullptr);
  if (auto* seen =
          g_regex_replace_literal(unseen, markup.c_str(), gssize(markup.size()), 0, " ", {}, nullptr)) {
    auto* valid = g_utf8_make_valid(seen, -1);
    text = g_strstrip(valid);
    g_free(valid);
    g_free(seen);
  }
  g_regex_unref(unseen);
  return text;
}

}  // namespace

struct TestSlot::Widget {
  GtkWidget parent;
  TestSlot* slot;
};

class TestSlot::AdView final : public velto::UIView {
 public:
  explicit AdView(GtkWidget* ad)
      : UIView(velto::Platform::current().views().makeView()), ad_(GTK_WIDGET(g_object_ref_sink(ad))) {}
  AdView(const AdView&) = delete;
  AdView& operator=(const AdView&) = delete;
  ~AdView() override {
    if (gtk_widget_get_parent(ad_)) gtk_widget_unparent(ad_);
    g_object_unref(ad_);
  }
  GtkWidget* widget() const { return ad_; }

 private:
  GtkWidget* ad_;
};

std::shared_ptr<velto::UIView> TestSlot::viewOf(GtkWidget* widget) {
  if (gtk_widget_get_parent(widget)) throw std::invalid_argument("the ad's widget is in another one");
  return std::make_shared<AdView>(widget);
}

// --- the widget ----------------------------------------------------------------------------------------

GType TestSlot::widgetType() {
  static const GType type =
      g_type_register_static_simple(GTK_TYPE_WIDGET, "VeltoTestSlot", sizeof(GtkWidgetClass), classInit,
                                    sizeof(Widget), nullptr, GTypeFlags(0));
  return type;
}

void TestSlot::classInit(gpointer klass, gpointer) noexcept {
  parentClass = GTK_WIDGET_CLASS(g_type_class_peek_parent(klass));
  G_OBJECT_CLASS(klass)->dispose = dispose;
  auto* widget = GTK_WIDGET_CLASS(klass);
  widget->measure = measure;
  widget->get_request_mode = [](GtkWidget*) { return GTK_SIZE_REQUEST_HEIGHT_FOR_WIDTH; };
  widget->size_allocate = allocate;
  widget->snapshot = snapshot;
  gtk_widget_class_set_css_name(widget, "velto-slot");
}

TestSlot* TestSlot::of(GtkWidget* widget) {
  const bool is = widget && G_TYPE_CHECK_INSTANCE_TYPE(widget, widgetType());
  return is ? reinterpret_cast<Widget*>(widget)->slot : nullptr;
}

GtkWidget* TestSlot::make() {
  auto* widget = GTK_WIDGET(g_object_new(widgetType(), "overflow", GTK_OVERFLOW_HIDDEN, nullptr));
  reinterpret_cast<Widget*>(widget)->slot = new TestSlot(widget);
  return widget;
}

void TestSlot::dispose(GObject* object) noexcept {
  delete std::exchange(reinterpret_cast<Widget*>(object)->slot, nullptr);
  while (auto* child = gtk_widget_get_first_child(GTK_WIDGET(object))) gtk_widget_unparent(child);
  G_OBJECT_CLASS(parentClass)->dispose(object);
}

void TestSlot::measure(GtkWidget* widget, GtkOrientation orientation, int forSize, int* minimum, int* natural,
                       int*, int*) noexcept {
  *minimum = *natural = 0;
  auto* self = of(widget);
  if (!self) return;
  const auto& room = self->host_.room();
  const auto size = room.asked(self->kept_);
  if (orientation == GTK_ORIENTATION_HORIZONTAL) {
    *natural = int(std::ceil(size.width));
    *minimum = int(std::ceil(size.width * velto::AdRoom::leastScale));
  } else {
    *natural = int(std::ceil(size.height * room.scaleIn(forSize)));
    *minimum = int(std::ceil(size.height * room.leastScaleIn(forSize)));
  }
}

void TestSlot::allocate(GtkWidget* widget, int width, int height, int) noexcept {
  auto* self = of(widget);
  if (!self) return;
  self->awaits_ = false;
  const auto* ad = self->adViewIn(self->host_.view());
  if (!ad || gtk_widget_get_parent(ad->widget()) != widget) return;
  const double scale = self->host_.room().scaleIn(width);
  const auto size = self->host_.room().size();
  int least = 0;  // the toolkit wants to be asked first
  gtk_widget_measure(ad->widget(), GTK_ORIENTATION_HORIZONTAL, -1, &least, nullptr, nullptr, nullptr);
  const GtkAllocation place{std::max(0, int(width - size.width * scale) / 2), 0, int(size.width * scale),
                            std::min(height, int(size.height * scale))};
  gtk_widget_size_allocate(ad->widget(), &place, -1);
}

void TestSlot::snapshot(GtkWidget* widget, GtkSnapshot* snapshot) noexcept {
  const auto* self = of(widget);
  if (self && !self->words_.empty()) {
    const auto width = float(gtk_widget_get_width(widget));
    const graphene_rect_t all{{0, 0}, {width, float(gtk_widget_get_height(widget))}};
    gtk_snapshot_append_color(snapshot, &cardColor, &all);
    auto* layout = gtk_widget_create_pango_layout(widget, self->words_.c_str());
    pango_layout_set_width(layout, std::max(0, int(width) - 2 * cardPadding) * PANGO_SCALE);
    gtk_snapshot_save(snapshot);
    const graphene_point_t corner{cardPadding, cardPadding};
    gtk_snapshot_translate(snapshot, &corner);
    gtk_snapshot_append_layout(snapshot, layout, &textColor);
    gtk_snapshot_restore(snapshot);
    g_object_unref(layout);
  }
  GTK_WIDGET_CLASS(parentClass)->snapshot(widget, snapshot);
}

// --- in a window ---------------------------------------------------------------------------------------

TestSlot::TestSlot(GtkWidget* widget) : widget_(widget), host_([this] { changed(); }) {
  g_signal_connect(widget_, "notify::root", G_CALLBACK(rootChanged), this);
  TestGround::current().add(this);
  showOrHide();
}

TestSlot::~TestSlot() {
  TestGround::current().remove(this);
  g_signal_handlers_disconnect_by_data(widget_, this);
  if (joining_) g_source_remove(joining_);
}

// A slot that only moves to another parent stays what it is.
void TestSlot::rootChanged(GtkWidget*, GParamSpec*, TestSlot* self) noexcept {
  const auto later = [](gpointer data) -> gboolean {
    static_cast<TestSlot*>(data)->joining_ = 0;
    velto_glib::guarded("VeltoTest", [&] { static_cast<TestSlot*>(data)->join(); });
    return G_SOURCE_REMOVE;
  };
  if (!self->joining_) self->joining_ = g_idle_add_full(G_PRIORITY_HIGH, later, self, nullptr);
}

void TestSlot::join() {
  auto* root = gtk_widget_get_root(widget_);
  auto* window = GTK_IS_WINDOW(root) ? &TestGround::current().windowOf(GTK_WINDOW(root)) : nullptr;
  if (window == window_) return;
  window_ = window;
  host_.moveTo(window);
  follow();
}

void TestSlot::leave() {
  window_ = nullptr;
  host_.moveTo(nullptr);
}

void TestSlot::keepRoom(std::optional<velto::CGSize> room) {
  kept_ = room;
  queueLayout();
}

void TestSlot::queueLayout() {
  showOrHide();
  awaits_ = true;
  gtk_widget_queue_resize(widget_);
}

// A box keeps its spacing beside a child that is empty, but not beside one that is hidden.
void TestSlot::showOrHide() {
  gtk_widget_set_visible(widget_, !host_.room().isEmpty() || kept_);
}

void TestSlot::follow() {
  auto* root = gtk_widget_get_root(widget_);
  auto* parent = gtk_widget_get_parent(widget_);
  auto* place = !gtk_widget_get_visible(widget_) && parent ? parent : widget_;  // one that is hidden has none
  const graphene_point_t zero{0, 0};
  graphene_point_t origin;
  if (root && gtk_widget_compute_point(place, GTK_WIDGET(root), &zero, &origin)) {
    const double scale = host_.room().scaleIn(gtk_widget_get_width(place));
    host_.setFrame({{origin.x, origin.y},
                    {std::round(gtk_widget_get_width(place) / scale),
                     place == widget_ ? std::round(gtk_widget_get_height(place) / scale) : 0}});
  }
  if (auto now = words(); now != words_) {
    words_ = std::move(now);
    gtk_widget_queue_draw(widget_);
  }
}

// --- its ad --------------------------------------------------------------------------------------------

void TestSlot::changed() {
  const auto size = host_.room().size();
  const auto* ad = adViewIn(host_.view());
  auto* shown = gtk_widget_get_first_child(widget_);
  auto* wanted = ad ? ad->widget() : nullptr;
  if (shown == wanted && size == asked_) return;
  asked_ = size;
  if (shown && shown != wanted) gtk_widget_unparent(shown);
  if (wanted && !gtk_widget_get_parent(wanted)) gtk_widget_set_parent(wanted, widget_);
  queueLayout();
}

TestSlot::AdView* TestSlot::adViewIn(const velto::UIView& view) const {
  for (const auto& subview : view.subviews()) {
    if (auto* found = dynamic_cast<AdView*>(subview.get())) return found;
    if (auto* found = adViewIn(*subview)) return found;
  }
  return nullptr;
}

velto::headless::RecordingWebView* TestSlot::page() const {
  const auto& pages = TestGround::current().platform().webViews();
  const auto found = std::find_if(pages.rbegin(), pages.rend(), [this](const auto* page) {
    return page->webView().isDescendantOfView(host_.view());
  });
  return found == pages.rend() ? nullptr : *found;
}

std::string TestSlot::words() const {
  const auto size = host_.room().size();
  const auto* shown = page();
  if (size == velto::CGSize{} || !shown) return {};
  return std::to_string(int(size.width)) + " × " + std::to_string(int(size.height)) + "\n" +
         textOf(shown->html());
}

}  // namespace velto_test
