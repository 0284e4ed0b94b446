// Windows, the platform's beginning, and the two loops: the toolkit's and that of virtual time.
#include <algorithm>
#include <cstring>

#include "velto-test-ground-private.h"
#include "velto-test-slot-private.h"

namespace velto_test {
namespace {

using velto::headless::HostWindow;

constexpr velto::CGSize defaultWindow{800, 600};      // points, while the toolkit has not said
constexpr gint64 longestLayout = 5 * G_USEC_PER_SEC;  // of a window that is never drawn
constexpr guint longestFrame = 100;                   // milliseconds
constexpr int turnsAtOnce = 1000;                     // of a main loop that always has something to do
constexpr size_t longestIdentifier = 255;
constexpr char windowKey[] = "velto-test-window";
constexpr char placeKey[] = "velto-test-place";

// What an ad's object knows as long as it is there.
template <class Kept>
void remember(GObject* ad, const char* key, const std::shared_ptr<Kept>& kept) {
  g_object_set_data_full(ad, key, new std::weak_ptr(kept),
                         [](gpointer data) { delete static_cast<std::weak_ptr<Kept>*>(data); });
}

template <class Kept>
std::shared_ptr<Kept> recall(GObject* ad, const char* key) {
  const auto* known = static_cast<std::weak_ptr<Kept>*>(g_object_get_data(ad, key));
  return known ? known->lock() : nullptr;
}

velto::AuthorizationStatus statusOf(velto::gtk::Access access) {
  return static_cast<velto::AuthorizationStatus>(access);
}

// What is due runs from the application's main loop, too, for who waits in one. Only a test moves time.
struct QueueSource {
  GSource base;
  static gboolean isDue(GSource*) { return !TestGround::current().platform().mainQueue().isIdle(); }
  static gboolean prepare(GSource* source, int* timeout) {
    *timeout = -1;
    return isDue(source);
  }
  static gboolean dispatch(GSource*, GSourceFunc, gpointer) {
    velto_glib::guarded("VeltoTest", [] { TestGround::current().kept()->runUntilIdle(); });
    return G_SOURCE_CONTINUE;
  }
};

GSourceFuncs queueFunctions{
    QueueSource::prepare, QueueSource::isDue, QueueSource::dispatch, nullptr, nullptr, nullptr};

int lengthOf(int allocated, int byDefault, double otherwise) {
  return allocated > 0 ? allocated : byDefault > 0 ? byDefault : int(otherwise);
}

velto::CGSize sizeOf(GtkWindow* window) {
  int width = 0, height = 0;
  gtk_window_get_default_size(window, &width, &height);
  return {double(lengthOf(gtk_widget_get_width(GTK_WIDGET(window)), width, defaultWindow.width)),
          double(lengthOf(gtk_widget_get_height(GTK_WIDGET(window)), height, defaultWindow.height))};
}

}  // namespace

TestGround& TestGround::current() {
  static TestGround* installed = [] {
    auto made = std::make_unique<TestGround>();
    auto* ground = made.get();
    velto_glib::setGround(std::move(made));
    return ground;
  }();
  return *installed;
}

void TestGround::begin() {
  for (auto* slot : slots_) slot->host().moveTo(nullptr);
  while (!places_.empty()) leave(places_.begin()->first);
  while (!windows_.empty()) forget(windows_.begin()->first);
  nobodys_.reset();
  const bool isFirst = !platform_;
  platform_ = velto::headless::Platform::install();
  inForeground_ = true;
  platform_->setPagesFinishByThemselves(true);
  platform_->urlSession().respond([](const auto&) { return true; }, answerTo);
  platform_->device().facts = {.name = "Test",
                               .model = "Desktop",
                               .systemName = "Linux",
                               .systemVersion = "24.04",
                               .machine = "x86_64",
                               .idiom = velto::UIUserInterfaceIdiom::Pad};
  platform_->mainScreen().size = {1920, 1080};
  platform_->mainScreen().pixelsPerPoint = 1;
  if (isFirst) {
    auto* source = g_source_new(&queueFunctions, sizeof(QueueSource));
    g_source_set_can_recurse(source, TRUE);
    g_source_set_static_name(source, "VeltoTest");
    g_source_attach(source, nullptr);
    g_source_unref(source);
  }
  velto_glib::startAgain();
}

// --- windows -------------------------------------------------------------------------------------------

HostWindow& TestGround::windowOf(GtkWindow* window) {
  auto& host = windows_[window];
  if (host) return *host;
  host = std::make_shared<HostWindow>(sizeOf(window));
  if (!gtk_widget_get_mapped(GTK_WIDGET(window))) host->hide();
  using Handler = void (*)(GtkWindow*, TestGround*);
  const Handler mapped = [](GtkWindow* shown, TestGround* self) { self->windowOf(shown).show(); };
  const Handler unmapped = [](GtkWindow* hidden, TestGround* self) { self->windowOf(hidden).hide(); };
  const Handler destroyed = [](GtkWindow* gone, TestGround* self) { self->forget(gone); };
  g_signal_connect(window, "map", G_CALLBACK(mapped), this);
  g_signal_connect(window, "unmap", G_CALLBACK(unmapped), this);
  g_signal_connect(window, "destroy", G_CALLBACK(destroyed), this);
  return *host;
}

void TestGround::forget(GtkWindow* window) {
  leave(GTK_WIDGET(window));  // whose own handler would go with these
  const auto found = windows_.find(window);
  if (found == windows_.end()) return;
  g_signal_handlers_disconnect_by_data(window, this);
  for (auto* slot : slots_)
    if (slot->window() == found->second.get()) slot->leave();
  const auto host = std::move(found->second);
  windows_.erase(found);
}

std::shared_ptr<HostWindow> TestGround::windowOf(GObject* ad) {
  return recall<HostWindow>(ad, windowKey);
}

std::shared_ptr<velto::UIView> TestGround::placeOf(GObject* ad) {
  return recall<velto::UIView>(ad, placeKey);
}

TestGround::Window TestGround::windowAround(GtkWidget* widget) {
  auto* root = widget ? gtk_widget_get_root(widget) : nullptr;
  if (widget && !GTK_IS_WINDOW(root)) return nullptr;
  auto& host = root ? (windowOf(GTK_WINDOW(root)), windows_[GTK_WINDOW(root)]) : nobodys_;
  if (!host) host = std::make_shared<HostWindow>(defaultWindow);
  return host;
}

std::shared_ptr<velto::UIViewController> TestGround::windowController(GObject* ad, GtkWidget* parent,
                                                                      const char*& why) {
  const auto host = windowAround(parent);
  if (!host) why = "the widget to present over is in no window";
  if (!host) return nullptr;
  remember<HostWindow>(ad, windowKey, host);
  remember<velto::UIView>(ad, placeKey, nullptr);
  return host->controller();
}

std::shared_ptr<velto::UIView> TestGround::hostView(GObject* ad, GtkWidget* widget, const char*& why) {
  const auto host = windowAround(widget);
  if (!host) why = "the widget to play in is in no window";
  if (!host) return nullptr;
  auto place = widget ? places_[widget] : host->controller()->view();
  if (!place) {
    place = places_[widget] = velto::UIView::make();
    using Handler = void (*)(GtkWidget*, TestGround*);
    const Handler destroyed = [](GtkWidget* gone, TestGround* self) { self->leave(gone); };
    g_signal_connect(widget, "destroy", G_CALLBACK(destroyed), this);
  }
  if (widget && place->superview() != host->controller()->view().get()) host->view().addSubview(place);
  if (widget) follow(widget, *place);
  remember<HostWindow>(ad, windowKey, host);
  remember<velto::UIView>(ad, placeKey, place);
  return place;
}

void TestGround::leave(GtkWidget* widget) {
  const auto found = places_.find(widget);
  if (found == places_.end()) return;
  g_signal_handlers_disconnect_by_data(widget, this);
  const auto place = std::move(found->second);
  places_.erase(found);
  place->removeFromSuperview();
}

void TestGround::follow(GtkWidget* widget, velto::UIView& place) {
  auto* root = gtk_widget_get_root(widget);
  graphene_rect_t bounds;
  const bool isSeen = root && gtk_widget_get_mapped(widget);
  if (place.isHidden() == isSeen) place.setHidden(!isSeen);
  if (!isSeen || !gtk_widget_compute_bounds(widget, GTK_WIDGET(root), &bounds)) return;
  place.setFrame({{bounds.origin.x, bounds.origin.y}, {bounds.size.width, bounds.size.height}});
}

// --- time ----------------------------------------------------------------------------------------------

void TestGround::fit() {
  for (const auto& [window, host] : windows_)
    if (const auto size = sizeOf(window); size != host->view().bounds().size) host->resize(size);
  for (auto* slot : slots_) slot->follow();
  for (const auto& [widget, place] : places_) follow(widget, *place);
}

bool TestGround::isInSlot(const velto::UIView& view) const {
  return std::any_of(slots_.begin(), slots_.end(),
                     [&](TestSlot* slot) { return view.isDescendantOfView(slot->host().view()); });
}

bool TestGround::awaitsLayout() const {
  return std::any_of(slots_.begin(), slots_.end(), [](const TestSlot* slot) { return slot->awaitsLayout(); });
}

// A window is laid out when its next frame is due, which takes some milliseconds of real time.
void TestGround::settle() {
  const auto nothing = [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; };
  const gint64 end = g_get_monotonic_time() + longestLayout;
  guint wakes = 0;
  for (int turn = 0; turn < turnsAtOnce; ++turn) {
    if (g_main_context_iteration(nullptr, FALSE)) continue;
    fit();
    if (!awaitsLayout() && platform_->mainQueue().isIdle() && !g_main_context_pending(nullptr)) break;
    if (!awaitsLayout()) continue;
    if (!wakes) wakes = g_timeout_add(longestFrame, nothing, nullptr);
    g_main_context_iteration(nullptr, TRUE);
    if (g_get_monotonic_time() > end)
      for (auto* slot : slots_) slot->giveUp();
  }
  if (wakes) g_source_remove(wakes);
}

// --- what else the library asks -----------------------------------------------------------------------

void TestGround::install(const velto::gtk::Options& options) {
  const auto& identifier = options.applicationIdentifier;  // judged as on the screen of a person
  const bool isName = std::all_of(identifier.begin(), identifier.end(),
                                  [](char c) { return g_ascii_isalnum(c) || std::strchr(".-_", c); });
  if (identifier.empty() || identifier.size() > longestIdentifier || !isName || identifier.starts_with('.'))
    throw std::invalid_argument(
        "the application's name must be a reverse-domain name such as \"org.example.player\"");
  auto& bundle = platform_->mainBundle();
  bundle.identifier = options.applicationIdentifier;
  const char* known = g_get_application_name();
  const auto& name = options.applicationName;
  (*bundle.information)["CFBundleName"] = !name.empty() ? name
                                          : known       ? known
                                                        : options.applicationIdentifier;
}

void TestGround::setCalendarAccess(velto::gtk::Access access) {
  platform_->eventStore().eventStatus = statusOf(access);
}

void TestGround::setPicturesAccess(velto::gtk::Access access) {
  platform_->photoLibrary().setAuthorizationStatus(statusOf(access));
}

void TestGround::setInForeground(std::optional<bool> inForeground) {
  const bool is = inForeground.value_or(true);
  if (std::exchange(inForeground_, is) == is) return;
  is ? platform_->application().enterForeground() : platform_->application().enterBackground();
}

GtkWidget* TestGround::makeSlot() {
  return TestSlot::make();
}

void TestGround::setSlotRoom(GtkWidget* slot, std::optional<velto::CGSize> room) {
  if (auto* is = TestSlot::of(slot)) is->keepRoom(room);
}

std::shared_ptr<velto::UIViewController> TestGround::slotController(GtkWidget* widget) {
  auto* slot = TestSlot::of(widget);
  if (!slot) throw std::invalid_argument("a banner that was made before the test's server");
  slot->join();
  return slot->host().controller();
}

std::shared_ptr<velto::UIView> TestGround::adView(GtkWidget* widget) {
  return TestSlot::viewOf(widget);
}

void TestGround::onMainThread(std::function<void()> work) {
  auto& queue = platform_->mainQueue();
  auto run = [work = std::move(work)] { velto_glib::guarded("VeltoAdapter", work); };
  if (queue.isCurrent()) return run();
  queue.post(std::move(run));
}

}  // namespace velto_test
