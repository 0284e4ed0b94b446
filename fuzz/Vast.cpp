// Documents of video ads: whatever a server sends is read without harm and within bounds, and what is read can be resolved,
// played through and asked for, with requests and answers that end.
//
// The input is read in two ways: as the document itself, and as a row of words that make one.
#include "velto/headless/VeltoHeadless.h"
#include "velto/platform/foundation/Text.h"
#include "velto/vast/VASTMediaChoice.h"
#include "velto/vast/VASTResolver.h"
#include "velto/vast/VASTTracker.h"
#include "velto/vast/VMAPDocument.h"

#include "Check.h"

namespace {

using namespace velto;

void play(const VASTAd& ad) {
  VASTTracker tracker(ad);
  tracker.started();
  for (const double seconds : {1.0, 30.0, 10.0}) tracker.playhead(seconds);
  (void)tracker.clicked(VASTClickPosition{1, 2});
  tracker.completed();
  require(tracker.hasEnded());
  const auto& files = tracker.ad().linear->mediaFiles;
  require(chooseVASTMedia(files, {.width = 640, .height = 360, .bandwidth = 1000}).size() <= files.size());
}

void read(const std::string& text) {
  const auto document = VASTDocument::read(text);
  require(!document.error || document.ads.empty());
  require(document.ads.size() <= VASTDocument::mostAds);
  for (const auto& ad : document.ads)
    for (const auto& url : ad.impressions) require(lowercased(url).starts_with("http"));
  (void)VMAPDocument::read(text).inOrder(600);

  // Every wrapper leads to the same document again.
  static const auto platform = headless::Platform::install();
  platform->urlSession().clearRules();
  platform->urlSession().forgetAnswered();
  platform->urlSession().respond("", {.body = text});
  int answers = 0;
  const auto handle = VASTResolver::resolve(document, {.mostRequests = 8}, [&](const VASTResolution& found) {
    ++answers;
    require(found.pod.empty() == found.error.has_value());
    for (const auto& ad : found.pod) {
      require(!ad.wrapper && !VASTResolver::faultOf(ad));
      play(ad);
    }
  });
  platform->advance(std::chrono::seconds(60));
  require(answers == 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::map<char, std::string_view> words{
      {'A', "<Ad>"},
      {'B', "<Ad sequence='1'>"},
      {'a', "</Ad>"},
      {'I', "<InLine>"},
      {'i', "</InLine>"},
      {'W', "<Wrapper allowMultipleAds='1'>"},
      {'w', "</Wrapper>"},
      {'T', "<VASTAdTagURI>https://a/[CACHEBUSTING]&</VASTAdTagURI>"},
      {'C', "<Creatives><Creative><Linear skipoffset='1%'><Duration>00:00:09</Duration>"},
      {'c', "</Linear></Creative></Creatives>"},
      {'M', "<MediaFiles><MediaFile>https://f/"},
      {'m', "</MediaFile></MediaFiles>"},
      {'P', "https://p/[ERRORCODE]"},
      {'E', "<Error>"},
      {'e', "</Error>"},
      {'N', "<Impression>"},
      {'n', "</Impression>"},
      {'D', "<![CDATA["},
      {'d', "]]>"},
      {'R', "<TrackingEvents><Tracking event='progress' offset='"},
      {'r', "'>https://t</Tracking></TrackingEvents>"}};
  read(std::string(asText(data, size)));
  read("<VAST version='4.2'>" + spelled(asText(data, size), words) + "</VAST>");
  return 0;
}
