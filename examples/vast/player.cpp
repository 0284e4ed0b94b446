// A small player with ads before, in and after its film: the application plays that itself, and leaves the stage to
// VeltoVideoAd whenever a break is due.
//
//   vast-player --schedule https://ads.example/vmap.xml https://films.example/film.webm
//
// takes the breaks from a schedule (VMAP). Without one they are given by hand:
//
//   vast-player https://films.example/film.webm https://ads.example/vast 60 300
//
// asks that address for ads before the film, at one and at five minutes, and behind it. Several addresses, with commas between
// them, are for one break after the other.
#include <velto/gtk/VeltoGtk.h>
#include <velto/platform/AVPlayer.h>
#include <velto/platform/ui/UIView.h>
#include <velto/velto.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Schedule.h"

namespace {

using player::Due;
using velto::VeltoVideoAd;
using Position = velto::VeltoVideoAdPosition;

constexpr double loadsAhead = 10;  // seconds: ads are asked for shortly before their turn

struct Player final : velto::VeltoVideoAdDelegate, std::enable_shared_from_this<Player> {
  std::string film, scheduleAddress;
  velto::VMAPDocument schedule;
  std::vector<double> opportunities;
  bool leavesAtEnd = false, hasFailed = false;
  velto::gtk::Options options{.applicationIdentifier = "org.example.player"};

  GtkWindow* window = nullptr;
  GtkWidget* stage = nullptr;  // where film and ads are seen
  GtkWidget* words = nullptr;
  GtkWidget* beside = nullptr;  // for a companion
  std::shared_ptr<velto::AVPlayer> content;
  std::shared_ptr<velto::UIView> picture;
  std::shared_ptr<VeltoVideoAd> ad;

  void start() {
    velto::gtk::install(options);
    velto::VeltoFramework::addVeltoKey("your-publisher-key");
    velto::gtk::hostViewController(window);
    const auto url = velto::NSURL::URLWithString(film);
    const auto asset = url ? velto::AVAsset::assetWithURL(*url) : nullptr;
    if (!asset) return fail("This is no address of a film.");
    content = velto::AVPlayer::playerWithPlayerItem(velto::AVPlayerItem::playerItemWithAsset(asset));
    content->setEventHandler([this](velto::AVPlayerEvent event) { heard(event); });
    picture = velto::UIView::makeWithPeer(content->makePicture());
    const auto host = velto::gtk::hostView(stage);
    picture->setBackgroundColor(velto::UIColor::blackColor());
    picture->setFrame(host->bounds());
    picture->setAutoresizingMask(velto::UIViewAutoresizingFlexibleWidth |
                                 velto::UIViewAutoresizingFlexibleHeight);
    host->addSubview(picture);
    if (scheduleAddress.empty()) return begin();
    fetching_ = player::fetchSchedule(scheduleAddress, [this](velto::VMAPDocument document) {
      if (document.error) g_printerr("no schedule: error %d\n", static_cast<int>(*document.error));
      schedule = std::move(document);
      scheduleAddress.clear();
      begin();
    });
  }

  void say(const std::string& text) const { gtk_label_set_text(GTK_LABEL(words), text.c_str()); }
  double now() const { return velto::CMTimeGetSeconds(content->currentTime()); }

  // There is no film, or no more of it: what plays of the ads is the last.
  void fail(const std::string& why) {
    g_printerr("vast-player: %s\n", why.c_str());
    say(why);
    hasFailed = hasBegun_ = isOver_ = true;
    due_.resize(adsPlay() ? 1 : 0);
    if (adsPlay()) return;
    leave();
    breakIsOver();
  }

  bool adsPlay() const { return ad && ad->state() == VeltoVideoAd::State::Playing; }

  void heard(velto::AVPlayerEvent event) {
    if (event == velto::AVPlayerEvent::FailedToPlay) return fail("The film cannot be played.");
    if (event == velto::AVPlayerEvent::ReadyToPlay) begin();
    if (event != velto::AVPlayerEvent::DidPlayToEnd) return;
    isOver_ = true;
    if (goesOn_ || adsPlay()) return;  // their break was at the film's last moment
    if (due_.empty() || !due_.front().isAtEnd()) return breakIsOver();  // it is too late for that one
    isDue_ = true;
    ad ? playBreak() : load();
  }

  // Where breaks are hangs on the film's length.
  void begin() {
    const auto& asset = content->asset();
    if (!asset->isLoaded() || !scheduleAddress.empty() || std::exchange(hasBegun_, true)) return;
    const auto length = asset->duration();
    due_ = player::breaksOf(schedule,
                            length.timescale ? std::optional(velto::CMTimeGetSeconds(length)) : std::nullopt,
                            opportunities);
    next();
  }

  // --- breaks: one after the other

  void next() {
    leave();
    if (isOver_) std::erase_if(due_, [](const Due& one) { return !one.isAtEnd(); });
    if (due_.empty()) return play();
    const Due& one = due_.front();
    isDue_ = isOver_ || one.at <= now();
    if (isDue_) return load();
    play();
    const double seconds = one.at;
    if (std::isinf(seconds)) return;  // at the end, whenever that is
    if (!one.isAtEnd())
      at(seconds, [this] {
        isDue_ = true;
        playBreak();
      });
    if (seconds - loadsAhead <= now())
      load();
    else
      at(seconds - loadsAhead, [this] { load(); });
  }

  void load() {
    const Due& one = due_.front();
    const auto fault = one.plan->fault();
    if (!fault && !one.plan->source) return playBreak();
    if (fault) return hasNoAds(*fault);
    velto::VeltoVideoAdSettings settings;
    settings.position = one.isAtEnd()     ? Position::Postroll
                        : one.isAtStart() ? Position::Preroll
                                          : Position::Midroll;
    settings.contentURL = film;
    ad = VeltoVideoAd::make(shared_from_this());
    ad->setSettings(settings);
    ad->load(*one.plan->source);
  }

  // Now, if it is due and its ads are there.
  void playBreak() {
    if (!isDue_) return;
    const auto& plan = *due_.front().plan;
    if (plan.source && ad && ad->state() == VeltoVideoAd::State::Ready) {
      if (!ad->playIn(velto::gtk::hostView(stage))) breakIsOver();
    } else if (!plan.source) {  // somebody only wants to know of it
      player::tell(plan.starts, now());
      player::tell(plan.ends, now());
      breakIsOver();
    }
  }

  void hasNoAds(velto::VMAPError why) {
    player::tell(due_.front().plan->errors, now(), why);
    breakIsOver();
  }

  void breakIsOver() {
    if (std::exchange(goesOn_, true)) return;
    // Not in the ad's own call: it goes.
    g_idle_add_once(
        [](void* data) {
          auto* self = static_cast<Player*>(data);
          self->goesOn_ = false;
          if (!self->due_.empty()) self->due_.pop_front();
          self->next();
        },
        this);
  }

  void play() {
    if (isOver_) {
      if (!hasFailed) say("The end");
      if (leavesAtEnd) gtk_window_destroy(window);
      return;
    }
    say("The film plays");
    content->play();
  }

  void at(double seconds, std::function<void()> what) {
    const auto whole = static_cast<int64_t>(seconds * 1000);  // milliseconds
    moments_.push_back(content->addBoundaryTimeObserverForTimes({{whole, 1000}}, std::move(what)));
  }

  void leave() {
    ad.reset();
    isDue_ = false;
    for (const auto& moment : std::exchange(moments_, {})) content->removeTimeObserver(moment);
  }

  // --- what the ads tell

  void veltoVideoAdDidLoad(VeltoVideoAd&) override { playBreak(); }
  void veltoVideoAdDidFail(VeltoVideoAd& failed, const velto::VeltoVideoAdError& error) override {
    g_printerr("no ad: %d, %s\n", error.code, error.explanation.c_str());
    if (failed.state() == VeltoVideoAd::State::Empty)
      hasNoAds(velto::vmapErrorFor(static_cast<velto::VASTError>(error.code)));
  }
  void veltoVideoAdDidRequestContentPause(VeltoVideoAd&) override {
    content->pause();
    player::tell(due_.front().plan->starts, now());
  }
  void veltoVideoAdDidStart(VeltoVideoAd& shown, const velto::VeltoVideoAdInfo& info) override {
    say("Ad: " + info.title);
    removeCompanion();
    // A companion has a slot beside the player.
    const auto companions = shown.companions();
    const auto view = companions.empty() ? nullptr : shown.companionView(0);
    if (!view) return;
    gtk_widget_set_size_request(beside, static_cast<int>(companions[0].width),
                                static_cast<int>(companions[0].height));
    companion_ = view;
    velto::gtk::hostView(beside)->addSubview(view);
  }
  void veltoVideoAdDidEndAll(VeltoVideoAd&) override {
    removeCompanion();
    player::tell(due_.front().plan->ends, now());
    breakIsOver();
  }

 private:
  void removeCompanion() {
    if (companion_) companion_->removeFromSuperview();
    companion_.reset();
    gtk_widget_set_size_request(beside, -1, -1);
  }

  bool hasBegun_ = false, isOver_ = false;
  bool isDue_ = false;   // the first of the breaks to come
  bool goesOn_ = false;  // to the next break, in the next turn
  std::deque<Due> due_;  // still to come, or there
  std::vector<velto::AVPlayer::Token> moments_;
  velto::Handle fetching_;
  std::shared_ptr<velto::UIView> companion_;
};

void open(GtkApplication* application, Player* player) {
  if (player->window) return gtk_window_present(player->window);
  player->window = GTK_WINDOW(gtk_application_window_new(application));
  gtk_window_set_title(player->window, "Player");
  gtk_window_set_default_size(player->window, 720, 520);
  auto* page = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  player->stage = gtk_drawing_area_new();
  gtk_widget_set_vexpand(player->stage, TRUE);
  player->beside = gtk_drawing_area_new();
  gtk_widget_set_halign(player->beside, GTK_ALIGN_CENTER);
  player->words = gtk_label_new("Loading");
  for (auto* part : {player->stage, player->words, player->beside}) gtk_box_append(GTK_BOX(page), part);
  gtk_window_set_child(player->window, page);
  gtk_window_present(player->window);
  player->start();
}

// What stands between commas.
std::vector<std::string> listOf(const std::string& text) {
  std::vector<std::string> parts{""};
  for (const char c : text)
    if (c == ',')
      parts.emplace_back();
    else
      parts.back() += c;
  return parts;
}

// Seconds of the film, in order. False: one of them is none.
bool readTimes(const std::vector<std::string>& texts, std::vector<double>& times) {
  for (const auto& text : texts) {
    char* end = nullptr;
    times.push_back(std::strtod(text.c_str(), &end));
    if (text.empty() || *end || !(times.back() > 0 && times.back() < 1e6)) return false;
  }
  std::sort(times.begin(), times.end());
  return true;
}

int complain(const char* what) {
  g_printerr(
      "vast-player: %s\nusage: vast-player [--server ADDRESS --ca FILE --data FOLDER --leave] FILM "
      "AD-ADDRESS[,…] "
      "[SECONDS]...\n       vast-player … --schedule ADDRESS [--opportunities SECONDS[,…]] FILM\n",
      what);
  return 2;
}

}  // namespace

int main(int count, char** words) {
  auto player = std::make_shared<Player>();
  std::vector<std::string> rest;
  for (int i = 1; i < count; ++i) {
    const std::string word = words[i];
    if (word == "--leave") {
      player->leavesAtEnd = true;
      continue;
    }
    if (!word.starts_with("--")) {
      rest.push_back(word);
      continue;
    }
    if (i + 1 == count) return complain("an option lacks its value");
    const std::string value = words[++i];
    if (word == "--server")
      player->options.hostMap = {{"*.velto.example", value}};
    else if (word == "--ca")
      player->options.caFile = value;
    else if (word == "--data")
      player->options.dataFolder = value;
    else if (word == "--schedule")
      player->scheduleAddress = value;
    else if (word != "--opportunities")
      return complain("an option that is not known");
    else if (!readTimes(listOf(value), player->opportunities))
      return complain("opportunities are at seconds of the film");
  }
  const bool isByHand = player->scheduleAddress.empty();
  if (isByHand ? rest.size() < 2 : rest.size() != 1)
    return complain("a film and a schedule, or the address of its ads, are needed");
  player->film = rest[0];
  if (isByHand) {
    using Kind = velto::VMAPOffset::Kind;
    std::vector<double> times;
    if (!readTimes({rest.begin() + 2, rest.end()}, times))
      return complain("breaks are at seconds of the film");
    const auto addresses = listOf(rest[1]);
    auto& breaks = player->schedule.breaks;
    const auto add = [&](velto::VMAPOffset offset) {
      breaks.push_back(player::breakAt(offset, addresses[std::min(breaks.size(), addresses.size() - 1)]));
    };
    add({Kind::Start, 0});
    for (const double at : times) add({Kind::Time, at});
    add({Kind::End, 0});
  }

  GtkApplication* application = gtk_application_new("org.example.player", G_APPLICATION_NON_UNIQUE);
  g_signal_connect(application, "activate", G_CALLBACK(open), player.get());
  const int code = g_application_run(G_APPLICATION(application), 0, nullptr);
  player->ad.reset();
  g_object_unref(application);
  return code == 0 && player->hasFailed ? 1 : code;
}
