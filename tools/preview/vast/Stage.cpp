// A widget for the film, one for each companion, and a delegate.
#include "preview/vast/Stage.h"

#include <velto/platform/ui/UIView.h>

#include <algorithm>
#include <array>
#include <utility>

namespace velto::preview {
namespace {

constexpr size_t mostCompanions = 3;
constexpr int companionGap = 12;  // points

GPtr<GtkWidget> placeOf(CGSize size) {
  GtkWidget* place = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_widget_set_size_request(place, static_cast<int>(size.width), static_cast<int>(size.height));
  gtk_widget_set_halign(place, GTK_ALIGN_CENTER);
  return GPtr<GtkWidget>::sink(place);
}

}  // namespace

class VideoAdStage::Ears final : public VeltoVideoAdDelegate {
 public:
  explicit Ears(VideoAdStage& stage) : stage_(stage) {}

 private:
  void veltoVideoAdDidLoad(VeltoVideoAd&) override { stage_.loaded(); }
  void veltoVideoAdDidFail(VeltoVideoAd&, const VeltoVideoAdError& error) override { stage_.failed(error); }
  void veltoVideoAdDidRequestContentPause(VeltoVideoAd&) override { stage_.tell("DidRequestContentPause"); }
  void veltoVideoAdDidStart(VeltoVideoAd&, const VeltoVideoAdInfo& info) override { stage_.started(info); }
  void veltoVideoAdDidPass(VeltoVideoAd&, VeltoVideoAdQuartile quartile) override {
    constexpr std::array names{"firstQuartile", "midpoint", "thirdQuartile"};
    stage_.tell("DidPass", {{"quartile", names.at(static_cast<size_t>(quartile))}});
  }
  void veltoVideoAdDidPause(VeltoVideoAd&) override { stage_.tell("DidPause"); }
  void veltoVideoAdDidResume(VeltoVideoAd&) override { stage_.tell("DidResume"); }
  void veltoVideoAdDidPress(VeltoVideoAd&) override { stage_.tell("DidPress"); }
  void veltoVideoAdDidSkip(VeltoVideoAd&) override { stage_.tell("DidSkip"); }
  void veltoVideoAdDidComplete(VeltoVideoAd&) override { stage_.tell("DidComplete"); }
  void veltoVideoAdDidRequestContentResume(VeltoVideoAd&) override { stage_.tell("DidRequestContentResume"); }
  void veltoVideoAdDidEndAll(VeltoVideoAd&) override { stage_.ended(); }

  VideoAdStage& stage_;
};

VideoAdStage::VideoAdStage(const Arguments& arguments, Journal& journal, GtkBox* content,
                           std::shared_ptr<UIViewController> host)
    : arguments_(arguments),
      journal_(journal),
      content_(GPtr<GtkWidget>::retain(GTK_WIDGET(content))),
      stage_(placeOf(arguments.size)),
      host_(std::move(host)),
      ears_(std::make_shared<Ears>(*this)) {
  gtk_widget_set_valign(GTK_WIDGET(content), GTK_ALIGN_CENTER);
  gtk_box_set_spacing(content, companionGap);
  gtk_box_append(content, stage_.get());
}

VideoAdStage::~VideoAdStage() {
  ad_.reset();
}

void VideoAdStage::load(const std::string& document) {
  ad_.reset();
  removeCompanions();
  hasStarted_ = hasFailed_ = hasEnded_ = false;
  ad_ = VeltoVideoAd::make(ears_);
  VeltoVideoAdSettings settings;
  settings.startsMuted = isMuted_;
  if (arguments_.hasTimeout)
    settings.answerTimeout = settings.loadTimeout = settings.fileTimeout = arguments_.timeout;
  ad_->setSettings(settings);
  ad_->setPlacement("preview");
  ad_->loadDocument(document);
}

void VideoAdStage::tell(const char* name, JSON::Object details) {
  details["name"] = name;
  journal_.add("callback", std::move(details));
}

void VideoAdStage::loaded() {
  tell("DidLoad");
  const bool plays =
      arguments_.interstitial ? ad_->playOver(host_) : ad_->playIn(gtk::hostView(stage_.get()));
  if (plays) return;
  journal_.add("failure", {{"text", "the screen has no place for the ad"}});
  hasFailed_ = hasEnded_ = true;
}

void VideoAdStage::started(const VeltoVideoAdInfo& info) {
  hasStarted_ = true;
  JSON::Object details{{"title", info.title},
                       {"number", static_cast<int64_t>(info.number)},
                       {"count", static_cast<int64_t>(info.count)},
                       {"duration", info.duration}};
  if (info.skippableAfter) details["skippableAfter"] = *info.skippableAfter;
  tell("DidStart", std::move(details));
  removeCompanions();
  showCompanions();
}

void VideoAdStage::failed(const VeltoVideoAdError& error) {
  tell("DidFail", {{"code", error.code}, {"description", error.explanation}});
  if (ad_->state() != VeltoVideoAd::State::Empty) return;  // another may follow
  hasFailed_ = !hasStarted_;
  hasEnded_ = true;
}

void VideoAdStage::ended() {
  tell("DidEndAll");
  hasFailed_ = !hasStarted_;
  hasEnded_ = true;
  removeCompanions();
}

// As many as there is room for.
void VideoAdStage::showCompanions() {
  const auto all = ad_->companions();
  double left = arguments_.screen.height - arguments_.size.height;
  for (size_t i = 0; i < all.size() && companions_.size() < mostCompanions; ++i) {
    const auto& one = all[i];
    if (one.width <= 0 || one.height <= 0 || one.width > arguments_.screen.width ||
        one.height + companionGap > left)
      continue;
    const auto view = ad_->companionView(i);
    if (!view) continue;
    left -= one.height + companionGap;
    const auto& place = companions_.emplace_back(placeOf({one.width, one.height}));
    gtk_box_append(GTK_BOX(content_.get()), place.get());
    gtk::hostView(place.get())->addSubview(view);
    tell("Companion", {{"width", one.width}, {"height", one.height}});
  }
}

void VideoAdStage::removeCompanions() {
  for (const auto& place : std::exchange(companions_, {}))
    if (gtk_widget_get_parent(place.get()) == content_.get())
      gtk_box_remove(GTK_BOX(content_.get()), place.get());
}

void VideoAdStage::setMuted(bool muted) {
  isMuted_ = muted;
  if (ad_) ad_->setMuted(muted);
}

bool VideoAdStage::skip() {
  return ad_ && ad_->skip();
}

}  // namespace velto::preview
