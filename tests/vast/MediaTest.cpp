// Which file is tried first, and which next.
#include "velto/vast/VASTMediaChoice.h"

#include <gtest/gtest.h>

namespace velto {
namespace {

VASTMediaFile file(const std::string& url, double width, double height,
                   std::optional<double> bitrate = std::nullopt, const std::string& type = "video/mp4",
                   const std::string& framework = "") {
  VASTMediaFile made;
  made.url = url;
  made.width = width;
  made.height = height;
  made.bitrate = bitrate;
  made.type = type;
  made.apiFramework = framework;
  return made;
}

std::string order(const std::vector<VASTMediaFile>& files, const VASTSurroundings& around) {
  std::string urls;
  for (const auto& one : chooseVASTMedia(files, around)) urls += one.url.substr(one.url.find("//") + 2);
  return urls;
}

TEST(VASTMediaTest, FilesAreOrderedByWhatTheSurroundingsCanTake) {
  const std::vector files{file("https://S", 320, 180, 300), file("https://L", 1920, 1080, 4000),
                          file("https://M", 640, 360, 800), file("https://W", 640, 360, 900, "video/webm"),
                          file("https://P", 640, 360, 100, "application/javascript", "VPAID")};
  EXPECT_EQ(order(files, {}), "LWMS") << "with nothing known the best";
  EXPECT_EQ(order(files, {.width = 640, .height = 360}), "WMLS") << "better made smaller than larger";
  EXPECT_EQ(order(files, {.width = 640, .height = 360, .bandwidth = 1050}), "MSWL")
      << "in time before fitting";
  EXPECT_EQ(order(files, {.width = 4000, .height = 3000, .bandwidth = 100}), "SMWL")
      << "all late: the soonest";
  EXPECT_EQ(order(files, {.canPlay = [](const auto& one) { return one.type == "video/mp4"; }}), "LMS");
  EXPECT_EQ(order({file("http://A", 1, 1), file("HTTPS://B", 1, 1), file("https://C", 1, 1)}, {}), "BCA");
  EXPECT_EQ(order({file("http://A", 1, 1)}, {.onlySecure = true}), "");
  EXPECT_EQ(order(files, {.surelyPlays = [](const auto& one) { return one.type != "video/mp4"; }}), "WLMS");
  auto adaptive = file("https://V", 0, 0);
  adaptive.delivery = VASTMediaFile::Delivery::Streaming;
  adaptive.minBitrate = 200;
  adaptive.maxBitrate = 8000;
  EXPECT_EQ(order({files[0], files[1], adaptive}, {.width = 1920, .height = 1080, .bandwidth = 500}), "VSL")
      << "a rate that varies comes in time when its lowest does";
}

}  // namespace
}  // namespace velto
