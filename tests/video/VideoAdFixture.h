// What the tests of video ads share: a delegate that writes down what it hears, documents, and a fixture with a window, a view for
// the ads and servers that are told of them.
#pragma once

#include "velto/video/VeltoVideoAd.h"
#include "velto/video/VideoAdControls.h"
#include "velto/video/VideoAdScreen.h"

#include <regex>

#include "../ui/UITest.h"

namespace velto::test {

using namespace std::chrono_literals;
using headless::VideoScript;
using Lines = std::vector<std::string>;

class Told final : public VeltoVideoAdDelegate {
 public:
  Lines heard;
  std::function<void(const std::string& what, VeltoVideoAd& ad)> during;
  std::optional<VeltoVideoAdInfo> started;

  void veltoVideoAdDidLoad(VeltoVideoAd& ad) override { add("loaded", ad); }
  void veltoVideoAdDidFail(VeltoVideoAd& ad, const VeltoVideoAdError& error) override {
    EXPECT_NE(error.explanation, "");
    add("failed " + std::to_string(error.code), ad);
  }
  void veltoVideoAdDidRequestContentPause(VeltoVideoAd& ad) override { add("content pause", ad); }
  void veltoVideoAdDidStart(VeltoVideoAd& ad, const VeltoVideoAdInfo& info) override {
    started = info;
    add("start", ad);
  }
  void veltoVideoAdDidPass(VeltoVideoAd& ad, VeltoVideoAdQuartile quartile) override {
    add(std::to_string(static_cast<int>(quartile) + 1) + "/4", ad);
  }
  void veltoVideoAdDidPause(VeltoVideoAd& ad) override { add("pause", ad); }
  void veltoVideoAdDidResume(VeltoVideoAd& ad) override { add("resume", ad); }
  void veltoVideoAdDidChangeMuted(VeltoVideoAd& ad, bool muted) override {
    EXPECT_EQ(ad.isMuted(), muted);
    add(muted ? "muted" : "heard", ad);
  }
  void veltoVideoAdDidPress(VeltoVideoAd& ad) override { add("press", ad); }
  void veltoVideoAdDidSkip(VeltoVideoAd& ad) override { add("skip", ad); }
  void veltoVideoAdDidComplete(VeltoVideoAd& ad) override { add("complete", ad); }
  void veltoVideoAdDidRequestContentResume(VeltoVideoAd& ad) override { add("content resume", ad); }
  void veltoVideoAdDidEndAll(VeltoVideoAd& ad) override { add("end", ad); }

 private:
  void add(const std::string& what, VeltoVideoAd& ad) {
    heard.push_back(what);
    if (during) during(what, ad);
  }
};

inline std::string file(const std::string& name,
                        const std::string& more = R"(type="video/webm" width="640" height="360")") {
  return "<MediaFile delivery=\"progressive\" " + more + ">https://v/" + name + "</MediaFile>";
}

// An ad with everything, whose servers' addresses begin with its identifier.
struct AdText {
  std::string id = "a";
  std::string files = file("a.webm");
  std::string attributes = {};  // of Ad
  std::string more = {};        // in InLine
  std::string skip = {};        // such as skipoffset="00:00:05"
  std::string linear = {};

  std::string text() const {
    std::string events;
    for (const char* event : {"loaded", "start", "firstQuartile", "midpoint", "thirdQuartile", "complete",
                              "mute", "unmute", "pause", "resume", "skip", "close", "fullscreen"})
      events +=
          "<Tracking event=\"" + std::string(event) + "\">https://t/" + id + "-" + event + "</Tracking>";
    return "<Ad id=\"" + id + "\" " + attributes + "><InLine><AdSystem>S</AdSystem><AdTitle>T</AdTitle>" +
           "<Impression>https://t/" + id + "-impression</Impression><Error>https://t/" + id +
           "-error[ERRORCODE]</Error><ViewableImpression><Viewable>https://t/" + id +
           "-viewable</Viewable><NotViewable>" + "https://t/" + id +
           "-notViewable</NotViewable></ViewableImpression>" + more + "<Creatives><Creative><Linear " + skip +
           "><Duration>00:00:10</Duration><TrackingEvents>" + events +
           "</TrackingEvents><VideoClicks><ClickThrough>" + "https://shop/" + id +
           "</ClickThrough><ClickTracking>https://t/" + id + "-click[CLICKPOS]</ClickTracking>" +
           "</VideoClicks><MediaFiles>" + files + "</MediaFiles>" + linear +
           "</Linear></Creative></Creatives></InLine></Ad>";
  }
};

inline std::string document(const std::vector<AdText>& ads) {
  std::string text = "<VAST version=\"4.2\">";
  for (const auto& ad : ads) text += ad.text();
  return text + "</VAST>";
}

class VideoAdTest : public UITest {
 protected:
  VideoAdTest() {
    platform->urlSession().respond("https://t/", {});
    host->setFrame({{0, 100}, {390, 220}});
    window->view().addSubview(host);
    platform->runUntilIdle();
    restingTimers = platform->mainQueue().timers();
    platform->urlSession().forgetAnswered();
  }
  ~VideoAdTest() override { ad.reset(); }

  void load(const std::vector<AdText>& ads) {
    ad->loadDocument(document(ads));
    platform->runUntilIdle();
  }
  void play(const std::vector<AdText>& ads) {
    load(ads);
    ASSERT_TRUE(ad->playIn(host));
    platform->runUntilIdle();
  }
  // What servers were told since the last time.
  std::string sent() {
    platform->runUntilIdle();
    std::string all;
    for (const auto& request : platform->urlSession().requests())
      if (request.url.host() == "t") all += request.url.path() + " ";
    const auto since = all.substr(seen_);
    seen_ = all.size();
    return std::regex_replace(since, std::regex("/"), "");
  }
  Lines heard() { return std::exchange(told->heard, {}); }
  VideoAdControls& controls() { return controlsIn(*host); }
  static VideoAdControls& controlsIn(const UIView& view) {
    if (auto* found = dynamic_cast<VideoAdControls*>(const_cast<UIView*>(&view))) return *found;
    for (const auto& subview : view.subviews())
      if (auto* found = find(*subview)) return *found;
    throw std::logic_error("no controls");
  }
  static VideoAdControls* find(const UIView& view) {
    if (auto* found = dynamic_cast<VideoAdControls*>(const_cast<UIView*>(&view))) return found;
    for (const auto& subview : view.subviews())
      if (auto* found = find(*subview)) return found;
    return nullptr;
  }
  void tap(const UIView& view) {
    platform->runUntilIdle();  // layout
    const auto frame = frameInWindow(view);
    window->tap({frame.midX(), frame.midY()});
    platform->runUntilIdle();
  }
  // Nothing of the ads is left anywhere.
  void expectClean() {
    platform->runUntilIdle();
    EXPECT_EQ(host->subviews().size(), 0U);
    EXPECT_EQ(window->controller()->presentedViewController(), nullptr);
    for (const auto* player : platform->media().players()) EXPECT_TRUE(player->isReleased());
    EXPECT_EQ(platform->mainQueue().timers(), restingTimers);
  }

  size_t restingTimers = 0;  // of what registration began
  std::shared_ptr<UIView> host = UIView::make();
  std::shared_ptr<Told> told = std::make_shared<Told>();
  std::shared_ptr<VeltoVideoAd> ad = VeltoVideoAd::make(told);

 private:
  size_t seen_ = 0;
};

inline const Lines wholeAd{"start", "1/4", "2/4", "3/4", "complete"};

inline Lines between(const Lines& first, const Lines& last) {
  Lines all{"loaded", "content pause"};
  all.insert(all.end(), first.begin(), first.end());
  all.insert(all.end(), last.begin(), last.end());
  all.insert(all.end(), {"content resume", "end"});
  return all;
}

}  // namespace velto::test
