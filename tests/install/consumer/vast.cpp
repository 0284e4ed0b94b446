// Reads a document of a video ad. Run by the install test, which wants exit code 0.
#include <velto/vast/VASTMediaChoice.h>
#include <velto/vast/VASTResolver.h>
#include <velto/vast/VASTTracker.h>

#include <cstdio>

int main() {
  const auto document = velto::VASTDocument::read(
      "<VAST "
      "version='4.2'><Ad><InLine><Creatives><Creative><Linear><MediaFiles><MediaFile>https://f.example/a&b</"
      "MediaFile>"
      "</MediaFiles></Linear></Creative></Creatives></InLine></Ad></VAST>");
  if (document.ads.size() != 1 || velto::VASTResolver::faultOf(document.ads[0])) return 1;
  const velto::VASTTracker tracker(document.ads[0]);
  const auto files = velto::chooseVASTMedia(tracker.ad().linear->mediaFiles, {});
  std::printf("VAST: %s\n", files.at(0).url.c_str());
  return 0;
}
