// The toolkit's platform as the ground that ads stand on.
#include "velto-ground-private.h"

namespace velto_glib {
namespace {

class ToolkitGround final : public Ground {
 public:
  std::optional<std::string> missing() const override {
    if (gtk_is_initialized()) return std::nullopt;
    return "GTK is not initialized: call gtk_init() before, or start in a handler of GApplication::startup";
  }
  void install(const velto::gtk::Options& options) override { velto::gtk::install(options); }
  void uninstall() override { velto::gtk::uninstall(); }
  void setCalendarAccess(velto::gtk::Access access) override { velto::gtk::setCalendarAccess(access); }
  void setPicturesAccess(velto::gtk::Access access) override { velto::gtk::setPicturesAccess(access); }
  void setInForeground(std::optional<bool> inForeground) override {
    velto::gtk::setInForeground(inForeground);
  }

  GtkWidget* makeSlot() override { return velto::gtk::adSlot(); }
  void setSlotRoom(GtkWidget* slot, std::optional<velto::CGSize> room) override {
    velto::gtk::setSlotRoom(slot, room);
  }
  std::shared_ptr<velto::UIViewController> slotController(GtkWidget* slot) override {
    return velto::gtk::hostViewController(slot);
  }
  std::shared_ptr<velto::UIViewController> windowController(GObject*, GtkWidget* parent,
                                                            const char*& why) override {
    auto* window = parent ? gtk_widget_get_root(parent) : nullptr;
    if (GTK_IS_WINDOW(window)) return velto::gtk::hostViewController(GTK_WINDOW(window));
    why = parent ? "the widget to present over is in no window" : "there is no widget to present over";
    return nullptr;
  }
  std::shared_ptr<velto::UIView> hostView(GObject*, GtkWidget* widget, const char*& why) override {
    auto* window = widget ? gtk_widget_get_root(widget) : nullptr;
    why = widget ? "the widget to play in is in no window" : "there is no widget to play in";
    if (!GTK_IS_WINDOW(window)) return nullptr;
    why = "the widget to play in is not on the screen";
    velto::gtk::hostViewController(GTK_WINDOW(window));
    return velto::gtk::hostView(widget);
  }
  std::shared_ptr<velto::UIView> adView(GtkWidget* widget) override { return velto::gtk::widgetView(widget); }

  void onMainThread(std::function<void()> work) override {
    const auto run = [](gpointer data) -> gboolean {
      guarded("VeltoAdapter", *static_cast<std::function<void()>*>(data));
      return G_SOURCE_REMOVE;
    };
    const auto forget = [](gpointer data) { delete static_cast<std::function<void()>*>(data); };
    g_main_context_invoke_full(nullptr, G_PRIORITY_DEFAULT, run, new std::function(std::move(work)), forget);
  }
};

// Not for the process's exit handlers to destroy: what stands on it may be gone by then.
std::unique_ptr<Ground>& current() {
  static auto* ground = new std::unique_ptr<Ground>(std::make_unique<ToolkitGround>());
  return *ground;
}

}  // namespace

Ground::~Ground() = default;

Ground& ground() {
  return *current();
}

void setGround(std::unique_ptr<Ground> ground) {
  current() = std::move(ground);
}

}  // namespace velto_glib
