// A small player with ads before, in and after its video: the application plays its own film, and leaves the stage to
// VeltoVideoAd whenever a break is due.
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
#include <cstdlib>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using velto::VeltoVideoAd;
using Position = velto::VeltoVideoAdPosition;

struct Break {
  double at;  // seconds of the film
  Position position;
  std::string address;
};

struct Player final : velto::VeltoVideoAdDelegate, std::enable_shared_from_this<Player> {
  std::string film;
  std::deque<Break> breaks;  // still to come
  velto::gtk::Options options{.applicationIdentifier = "org.example.player"};

  GtkWindow* window = nullptr;
  GtkWidget* stage = nullptr;  // where film and ads are seen
  GtkWidget* words = nullptr;
  GtkWidget* beside = nullptr;  // for a companion
  std::shared_ptr<velto::AVPlayer> content;
  std::shared_ptr<velto::UIView> picture;
  std::shared_ptr<VeltoVideoAd> ad;
  bool isOver = false, isDue = false;

  void start() {
    velto::gtk::install(options);
    velto::VeltoFramework::addVeltoKey("your-publisher-key");
    velto::gtk::hostViewController(window);
    const auto url = velto::NSURL::URLWithString(film);
    const auto asset = url ? velto::AVAsset::assetWithURL(*url) : nullptr;
    if (!asset) return say("This is no address of a film.");
    content = velto::AVPlayer::playerWithPlayerItem(velto::AVPlayerItem::playerItemWithAsset(asset));
    content->setEventHandler([this](velto::AVPlayerEvent event) { heard(event); });
    picture = velto::UIView::makeWithPeer(content->makePicture());
    const auto host = velto::gtk::hostView(stage);
    picture->setBackgroundColor(velto::UIColor::blackColor());
    picture->setFrame(host->bounds());
    picture->setAutoresizingMask(velto::UIViewAutoresizingFlexibleWidth |
                                 velto::UIViewAutoresizingFlexibleHeight);
    host->addSubview(picture);
    loadNext();
  }

  void say(const std::string& text) const { gtk_label_set_text(GTK_LABEL(words), text.c_str()); }

  void heard(velto::AVPlayerEvent event) {
    if (event == velto::AVPlayerEvent::FailedToPlay) return say("The film cannot be played.");
    if (event != velto::AVPlayerEvent::DidPlayToEnd) return;
    isOver = isDue = true;
    // Breaks that the film was too short for are not played behind it.
    const auto isMidroll = [](const Break& one) { return one.position == Position::Midroll; };
    if (breaks.empty() || !isMidroll(breaks.front())) return playBreak();
    breaks.erase(std::remove_if(breaks.begin() + 1, breaks.end(), isMidroll), breaks.end());
    breakIsOver();
  }

  // --- breaks: each is loaded as soon as the one before it is over, and played when its time has come

  void loadNext() {
    ad.reset();
    if (breaks.empty()) return play();
    ad = VeltoVideoAd::make(shared_from_this());
    velto::VeltoVideoAdSettings settings;
    settings.position = breaks.front().position;
    settings.contentURL = film;
    ad->setSettings(settings);
    ad->load(breaks.front().address);
    if (breaks.front().position == Position::Preroll) {
      isDue = true;
      return;
    }
    play();
    if (breaks.front().position != Position::Midroll) return;
    // Whole milliseconds.
    const auto at = static_cast<int64_t>(breaks.front().at * 1000);
    midroll_ = content->addBoundaryTimeObserverForTimes({{at, 1000}}, [this] {
      isDue = true;
      playBreak();
    });
  }

  void playBreak() {
    if (isDue && ad && ad->state() == VeltoVideoAd::State::Ready) ad->playIn(velto::gtk::hostView(stage));
  }

  void play() {
    if (isOver) return say("The end");
    say("The film plays");
    content->play();
  }

  void breakIsOver() {
    if (std::exchange(goesOn_, true)) return;
    // Not in the ad's own call: it goes.
    g_idle_add_once([](void* self) { static_cast<Player*>(self)->nextBreak(); }, this);
  }
  void nextBreak() {
    goesOn_ = false;
    isDue = isOver;
    if (midroll_) content->removeTimeObserver(midroll_);
    midroll_.reset();
    if (!breaks.empty()) breaks.pop_front();
    loadNext();
  }

  // --- what the ads tell

  void veltoVideoAdDidLoad(VeltoVideoAd&) override { playBreak(); }
  void veltoVideoAdDidFail(VeltoVideoAd& failed, const velto::VeltoVideoAdError& error) override {
    g_printerr("no ad: %d, %s\n", error.code, error.explanation.c_str());
    if (failed.state() == VeltoVideoAd::State::Empty) breakIsOver();
  }
  void veltoVideoAdDidRequestContentPause(VeltoVideoAd&) override { content->pause(); }
  void veltoVideoAdDidStart(VeltoVideoAd& shown, const velto::VeltoVideoAdInfo& info) override {
    say("Ad: " + info.title);
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
    if (companion_) companion_->removeFromSuperview();
    companion_.reset();
    gtk_widget_set_size_request(beside, -1, -1);
    breakIsOver();
  }

 private:
  bool goesOn_ = false;  // to the next break, in the next turn
  velto::AVPlayer::Token midroll_;
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

int complain(const char* what) {
  g_printerr(
      "vast-player: %s\nusage: vast-player [--server ADDRESS --ca FILE] FILM AD-ADDRESS[,…] [SECONDS]...\n",
      what);
  return 2;
}

}  // namespace

int main(int count, char** words) {
  auto player = std::make_shared<Player>();
  std::vector<std::string> rest;
  for (int i = 1; i < count; ++i) {
    const std::string word = words[i];
    if (!word.starts_with("--")) {
      rest.push_back(word);
      continue;
    }
    if (i + 1 == count) return complain("an option lacks its value");
    if (word == "--server")
      player->options.hostMap = {{"*.velto.example", words[++i]}};
    else if (word == "--ca")
      player->options.caFile = words[++i];
    else if (word == "--data")
      player->options.dataFolder = words[++i];
    else
      return complain("an option that is not known");
  }
  if (rest.size() < 2) return complain("a film and the address of its ads are needed");
  player->film = rest[0];
  const auto addresses = listOf(rest[1]);
  const auto add = [&](double at, Position position) {
    player->breaks.push_back(
        {at, position, addresses[std::min(player->breaks.size(), addresses.size() - 1)]});
  };
  add(0, Position::Preroll);
  std::vector<double> times;
  for (size_t i = 2; i < rest.size(); ++i) {
    char* end = nullptr;
    times.push_back(std::strtod(rest[i].c_str(), &end));
    if (*end || !(times.back() > 0 && times.back() < 1e6))
      return complain("breaks are at seconds of the film");
  }
  std::sort(times.begin(), times.end());
  for (const double at : times) add(at, Position::Midroll);
  add(0, Position::Postroll);

  GtkApplication* application = gtk_application_new("org.example.player", G_APPLICATION_NON_UNIQUE);
  g_signal_connect(application, "activate", G_CALLBACK(open), player.get());
  const int code = g_application_run(G_APPLICATION(application), 0, nullptr);
  player->ad.reset();
  g_object_unref(application);
  return code;
}
