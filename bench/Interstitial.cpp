// Interstitials on a real display with the library: fetched, left waiting for a while, shown, closed, again
// and again. Compared with bare/Interstitial.cpp. The library lets an interstitial come in within 0.9 s, in
// which its page loads; a program without one has its page to wait for and nothing else. So what is told of a
// show is the time to the page and, without those 0.9 s, to DidAppear.
#include "velto/gtk/VeltoGtk.h"
#include "velto/ui/VeltoInterstitialViewControllerPrivate.h"
#include "velto/velto.h"

#include "InterstitialProgram.h"

namespace {

using namespace velto;

constexpr double transition = 900;  // milliseconds, by design

class LibraryInterstitial : public bench::Interstitial {
 public:
  LibraryInterstitial(const bench::Server& server, GtkWindow* window)
      : delegate_(std::make_shared<Delegate>()) {
    const auto names = VeltoURL::serverNames();
    const std::string address = "127.0.0.1:" + server.port;
    gtk::install({.applicationIdentifier = "org.example.bench",
                  .caFile = server.caFile,
                  .hostMap = {{names.adServer, address}, {names.tracking, address}}});
    VeltoFramework::addVeltoKey(server.key);
    delegate_->host = gtk::hostViewController(window);
    interstitial_ = VeltoInterstitialViewController::initWithDelegate(delegate_);
  }

  ~LibraryInterstitial() override {
    interstitial_.reset();
    delegate_.reset();
    gtk::uninstall();
  }

  void load(std::function<void()> done) override {
    delegate_->done = std::move(done);
    interstitial_->load();
  }
  void show(std::function<void()> done) override {
    delegate_->done = std::move(done);
    interstitial_->show();
  }
  void close(std::function<void()> done) override {
    delegate_->done = std::move(done);
    interstitial_->vc()->dismissInterstitialViewController(true);
  }
  double uncountedOfShow() const override { return transition; }

 private:
  struct Delegate : VeltoInterstitialViewControllerDelegate {
    using Controller = VeltoInterstitialViewControllerPrivate;
    std::shared_ptr<UIViewController> presentViewController() override { return host; }
    void veltoInterstitialViewControllerDidFinishLoad(Controller&) override { done(); }
    void veltoInterstitialViewControllerDidAppear(Controller&) override { done(); }
    void onVeltoInterstitialDismissed(Controller&) override { done(); }
    void veltoInterstitialViewControllerDidFail(Controller&, const VeltoErrorAd& error) override {
      bench::giveUp("no ad: " + error.descriptionError().value_or("unknown error"));
    }

    std::shared_ptr<UIViewController> host;
    std::function<void()> done;
  };

  std::shared_ptr<Delegate> delegate_;
  std::shared_ptr<VeltoInterstitialViewController> interstitial_;
};

}  // namespace

int main(int count, char** words) {
  return bench::runInterstitials(count, words, [](const bench::Server& server, GtkWindow* window) {
    return std::make_unique<LibraryInterstitial>(server, window);
  });
}
