// The samples of tests/vast, played to their end with a press on all that leads somewhere: every address is told when it should be,
// and once.
#include "velto/vast/VMAPDocument.h"

#include "../vast/Samples.h"
#include "VideoAdFixture.h"

namespace velto::test {
namespace {

class VideoAdSamplesTest : public VideoAdTest {
 protected:
  VideoAdSamplesTest() {
    platform->veltoBundle().files["omsdk-v1.js"] = "service()";
    platform->setPagesFinishByThemselves(true);
    for (const auto& entry : std::filesystem::directory_iterator(VAST_SAMPLES)) {
      const auto body = textOf(entry.path());
      platform->urlSession().respond("/" + entry.path().filename().string(), {.body = body});
      // Films are as long as their documents say.
      for (const auto& one : VASTDocument::read(body).ads)
        for (const auto& film : one.linear ? one.linear->mediaFiles : std::vector<VASTMediaFile>())
          platform->media().setVideo(film.url,
                                     {.duration = {static_cast<int64_t>(one.linear->duration.value()), 1}});
    }
    platform->urlSession().respond("example.com/track/", {});
  }
  // What servers of the sample were told since the last time.
  std::string told() {
    platform->runUntilIdle();
    std::string all;
    for (const auto& request : platform->urlSession().requests("//example.com/track/"))
      all += request.url.absoluteString().substr(request.url.absoluteString().find("/track/") + 7) + " ";
    platform->urlSession().forgetAnswered();
    return all;
  }
  // What a person presses in a page that shows such a link.
  void pressLinks() {
    for (auto* page : platform->webViews()) {
      std::smatch link;
      const auto html = page->html();
      if (std::regex_search(html, link, std::regex("<a href=\"([^\"]+)\"")))
        window->tapLink(*page, link[1].str());
    }
    platform->runUntilIdle();
  }
};

TEST_F(VideoAdSamplesTest, ArePlayedToTheirEnd) {
  for (const auto& [name, expected] : expectedOfSamples()) {
    SCOPED_TRACE(name);
    platform->application().opened.clear();
    const auto text = sampleText(name + ".xml");
    if (name.starts_with("vmap"))
      ad->load(VMAPDocument::read(text).breaks.at(0).source.value());
    else
      ad->loadDocument(text);
    platform->runUntilIdle();
    std::string all = told();
    if (ad->playIn(host)) {
      platform->advance(1s);
      for (size_t place = 0; place < ad->companions().size(); ++place)
        if (const auto view = ad->companionView(place)) window->view().addSubview(view);
      platform->advance(1s);
      pressLinks();
      if (!controls().moreButton().isHidden()) tap(controls().moreButton());
      ad->resume();
      platform->advance(2min);
    }
    all += told() + heard().back();
    EXPECT_EQ(all, expected.at("told"));
    std::string led;
    for (const auto& one : platform->application().opened) led += " " + one.url.absoluteString();
    EXPECT_EQ(led, expected.contains("led") ? " " + expected.at("led") : "");
  }
}

}  // namespace
}  // namespace velto::test
