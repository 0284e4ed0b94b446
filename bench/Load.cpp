// Ads on a real display with the library: a banner whose load() is called again whenever its ad has loaded.
// Compared with bare/Load.cpp, which does the same by hand. What a host application does once, at start
// (installing the platform, registering the key), comes before the clock runs, as making the window does in
// both programs; everything that the library starts on its first load (transport, engine, web process) comes
// after.
#include "velto/gtk/VeltoGtk.h"
#include "velto/velto.h"

#include "LoadProgram.h"

namespace {

using namespace velto;

class BannerLoader : public bench::Loader {
 public:
  BannerLoader(const bench::Server& server, GtkWindow* window) : delegate_(std::make_shared<Delegate>()) {
    const auto names = VeltoURL::serverNames();
    const std::string address = "127.0.0.1:" + server.port;
    gtk::install({.applicationIdentifier = "org.example.bench",
                  .caFile = server.caFile,
                  .hostMap = {{names.adServer, address}, {names.tracking, address}}});
    VeltoFramework::addVeltoKey(server.key);
#ifdef IN_A_SLOT  // as the widget of the GObject library does (GlibLoad.cpp)
    auto* slot = gtk::adSlot();
    gtk_overlay_add_overlay(GTK_OVERLAY(gtk_window_get_child(window)), slot);
    bench::runMainLoopFor(bench::windowSettles);
    delegate_->host = gtk::hostViewController(slot);
#else
    delegate_->host = gtk::hostViewController(window);
#endif
    banner_ = VeltoBannerViewController::initWithDelegate(delegate_, VeltoBannerSize320x50,
                                                          VeltoBannerPositionBottom);
  }

  ~BannerLoader() override {
    banner_.reset();
    delegate_.reset();
    gtk::uninstall();
  }

  void load(std::function<void()> loaded) override {
    delegate_->loaded = std::move(loaded);
    banner_->load();
  }

  double requestMilliseconds() const override {
    const auto story = banner_->veltoAdTimeline().back();
    return 1000 * (story.first(VeltoTimelineKind::Answered)->seconds - story.entries.front().seconds);
  }

 private:
  struct Delegate : VeltoBannerViewControllerDelegate {
    std::shared_ptr<UIViewController> presentViewController() override { return host; }
    void veltoBannerViewControllerDidFinishLoad(VeltoBannerViewControllerPrivate&) override { loaded(); }
    void veltoBannerViewControllerDidFail(VeltoBannerViewControllerPrivate&,
                                          const VeltoErrorAd& error) override {
      bench::giveUp("no ad: " + error.descriptionError().value_or("unknown error"));
    }

    std::shared_ptr<UIViewController> host;
    std::function<void()> loaded;
  };

  std::shared_ptr<Delegate> delegate_;
  std::shared_ptr<VeltoBannerViewController> banner_;
};

}  // namespace

int main(int count, char** words) {
  return bench::runLoads(count, words, [](const bench::Server& server, GtkWindow* window) {
    return std::make_unique<BannerLoader>(server, window);
  });
}
