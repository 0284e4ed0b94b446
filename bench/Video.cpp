// Video ads on a real display with the library: each load takes a document from the server and plays its file over a widget of the
// window. Compared with bare/Video.cpp, which fetches the same document and plays the same file by itself.
#include "velto/gtk/VeltoGtk.h"
#include "velto/velto.h"
#include "velto/video/VeltoVideoAd.h"

#include "LoadProgram.h"
#include "VideoProgram.h"

namespace {

using namespace velto;

class VideoLoader : public bench::Loader {
 public:
  VideoLoader(const bench::Server& server, GtkWindow* window)
      : window_(window), delegate_(std::make_shared<Delegate>(*this)) {
    gtk::install({.applicationIdentifier = "org.example.bench",
                  .caFile = server.caFile,
                  .hostMap = {{"ads.velto.example", "127.0.0.1:" + server.port}}});
    controller_ = gtk::hostViewController(window);
    ad_ = VeltoVideoAd::make(delegate_);
    url_ = bench::videoDocumentURL(server.key);
  }

  ~VideoLoader() override {
    ad_.reset();
    controller_.reset();
    gtk::uninstall();
  }

  void load(std::function<void()> loaded) override {
    loaded_ = std::move(loaded);
    if (!isFirst_) ad_->stop();  // the next begins once that has ended
    isFirst_ = false;
    ad_->load(url_);
  }

  double requestMilliseconds() const override {
    const auto story = ad_->veltoAdTimeline().back();
    return 1000 * (story.first(VeltoTimelineKind::DocumentAnswered)->seconds - story.entries.front().seconds);
  }

 private:
  struct Delegate : VeltoVideoAdDelegate {
    explicit Delegate(VideoLoader& loader) : owner(loader) {}
    void veltoVideoAdDidLoad(VeltoVideoAd& ad) override {
      if (!ad.playIn(gtk::hostView(gtk_window_get_child(owner.window_))))
        bench::giveUp("no place for the ad");
    }
    void veltoVideoAdDidStart(VeltoVideoAd&, const VeltoVideoAdInfo&) override {
      bench::afterNextPaint(owner.window_, owner.loaded_);
    }
    void veltoVideoAdDidFail(VeltoVideoAd&, const VeltoVideoAdError& error) override {
      bench::giveUp("no ad: " + error.explanation);
    }
    VideoLoader& owner;
  };

  GtkWindow* const window_;
  std::shared_ptr<UIViewController> controller_;
  std::function<void()> loaded_;
  std::shared_ptr<Delegate> delegate_;
  std::shared_ptr<VeltoVideoAd> ad_;
  std::string url_;
  bool isFirst_ = true;
};

}  // namespace

int main(int count, char** words) {
  return bench::runLoads(count, words, [](const bench::Server& server, GtkWindow* window) {
    return std::make_unique<VideoLoader>(server, window);
  });
}
