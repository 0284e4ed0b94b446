// Wrappers and pods, over a scripted network and virtual time.
#include "velto/vast/VASTResolver.h"

#include "../support/HeadlessTest.h"

namespace velto {
namespace {

using Texts = std::vector<std::string>;

std::string vast(const std::string& ads) {
  return "<VAST version='4.2'>" + ads + "</VAST>";
}

// An ad whose addresses all bear its name.
std::string inlineAd(const std::string& name, const std::string& attributes = "",
                     const std::string& more = "") {
  return "<Ad id='" + name + "' " + attributes + "><InLine><Error>https://e.example/" + name +
         "-[ERRORCODE]</Error>" + more + "<Impression>https://i.example/" + name +
         "</Impression><Creatives><Creative><Linear><Duration>00:00:10</Duration>" +
         "<MediaFiles><MediaFile type='video/mp4'>https://f.example/" + name +
         "</MediaFile></MediaFiles></Linear></Creative>" + "</Creatives></InLine></Ad>";
}

std::string wrapper(const std::string& name, const std::string& attributes = "", const std::string& more = "",
                    const std::string& place = "") {
  return "<Ad id='" + name + "' " + place + "><Wrapper " + attributes +
         "><VASTAdTagURI>https://ads.example/" + name + "</VASTAdTagURI><Error>https://e.example/" + name +
         "-[ERRORCODE]</Error><Impression>https://i.example/" + name + "</Impression>" + more +
         "</Wrapper></Ad>";
}

class VASTResolverTest : public test::HeadlessTest {
 protected:
  void serve(const std::string& path, const std::string& body, std::chrono::nanoseconds delay = {}) {
    platform->urlSession().respond("ads.example/" + path, {.body = body, .delay = delay});
  }
  VASTResolution resolve(const std::string& ads, VASTSettings settings = {}) {
    std::optional<VASTResolution> found;
    const auto handle = VASTResolver::resolve(VASTDocument::read(vast(ads)), std::move(settings),
                                              [&](VASTResolution resolution) {
                                                EXPECT_FALSE(found) << "answered twice";
                                                EXPECT_TRUE(platform->mainQueue().isCurrent());
                                                found = std::move(resolution);
                                              });
    platform->urlSession().respond("", {});
    platform->advance(std::chrono::minutes(2));
    EXPECT_TRUE(found) << "never answered";
    return found.value_or(VASTResolution{});
  }
  static std::string names(const std::vector<VASTAd>& ads) {
    std::string all;
    for (const auto& ad : ads) all += ad.id;
    return all;
  }
  Texts told(const std::string& host = "e.example") {
    Texts paths;
    for (const auto& request : platform->urlSession().requests(host))
      paths.push_back(request.url.path().substr(1));
    return paths;
  }
};

TEST_F(VASTResolverTest, WhatWrappersAskToBeToldIsInTheAd) {
  const auto around = [](const std::string& name) {
    return "<AdVerifications><Verification vendor='" + name +
           "'/></AdVerifications><ViewableImpression><Viewable>https://v.example/" + name +
           "</Viewable></ViewableImpression><Creatives><Creative><Linear><TrackingEvents><Tracking "
           "event='start'>https://t.example/" +
           name +
           "</Tracking></TrackingEvents></Linear></"
           "Creative><Creative><Linear><VideoClicks><ClickTracking>https://c.example/" +
           name + "</ClickTracking></VideoClicks><Icons><Icon program='p'/><Icon program='" + name +
           "'/></Icons></Linear></Creative><Creative><CompanionAds><Companion id='" + name +
           "'/></CompanionAds></Creative></Creatives>";
  };
  serve("A", vast(wrapper("B", "", around("B"))));
  serve("B", vast(inlineAd("C", "sequence='9'")));
  const auto found = resolve(wrapper("A", "", around("A"), "sequence='3'"));
  ASSERT_EQ(names(found.pod), "C");
  const auto& ad = found.pod[0];
  EXPECT_EQ(ad.sequence, 3) << "its place in the pod that is played";
  EXPECT_EQ(ad.impressions, (Texts{"https://i.example/C", "https://i.example/B", "https://i.example/A"}));
  EXPECT_EQ(ad.errors.size(), 3U);
  EXPECT_EQ(ad.viewableImpression.viewable, (Texts{"https://v.example/B", "https://v.example/A"}));
  EXPECT_EQ(ad.verifications.at(0).vendor + ad.verifications.at(1).vendor, "BA");
  EXPECT_EQ(ad.linear->trackings.at(1).url + ad.linear->clickTrackings.at(1),
            "https://t.example/Ahttps://c.example/A");
  ASSERT_EQ(ad.linear->icons.size(), 3U) << "of a programme the icon nearest to the ad";
  EXPECT_EQ(ad.companions.at(0).id + std::to_string(ad.companions.size()), "B1")
      << "the companions nearest to the ad";
  EXPECT_EQ(told(), Texts{});
}

TEST_F(VASTResolverTest, AFailureIsToldToAllAroundIt) {
  const std::string blocks = "<BlockedAdCategories authority='l'>1,2</BlockedAdCategories>";
  const std::string programs =
      "<Ad><InLine><Error>https://e.example/C-[ERRORCODE]</Error><Creatives><Creative><Linear><MediaFiles>"
      "<MediaFile "
      "apiFramework='VPAID'>https://f.example</MediaFile></MediaFiles></Linear></Creative></Creatives></"
      "InLine></Ad>";
  struct Case {
    std::string answer;
    int code;
    bool isToldInside;
  };
  const Case cases[] = {
      {"<VAST", 100, false},
      {"<html/>", 101, false},
      {"<VAST version='9'/>", 102, false},
      {vast("<Error>https://e.example/C-[ERRORCODE]</Error>"), 303, true},
      {"", 303, false},
      {vast("<Ad><InLine><Error>https://e.example/C-[ERRORCODE]</Error></InLine></Ad>"), 101, true},
      {vast("<Ad><InLine><Error>https://e.example/C-[ERRORCODE]</Error><Creatives><Creative><NonLinearAds/></"
            "Creative></Creatives></InLine></Ad>"),
       201, true},
      {vast(programs), 403, true},
      {vast(inlineAd("C")), 204, true},
      {vast(inlineAd("C", "", "<Category authority='l'>2</Category>")), 205, true},
      {vast(wrapper("C")), 300, true},
  };
  for (const auto& [answer, code, isToldInside] : cases) {
    platform = headless::Platform::install();
    serve("A", vast(wrapper("B", "followAdditionalWrappers='false'")));
    serve("B", answer);
    const auto found = resolve(wrapper("A", "", blocks));
    EXPECT_EQ(names(found.pod), "") << answer;
    EXPECT_EQ(static_cast<int>(found.error.value_or(VASTError{})), code) << answer;
    const auto end = "-" + std::to_string(code);
    Texts expected{"B" + end, "A" + end};
    if (isToldInside) expected.insert(expected.begin(), "C" + end);
    EXPECT_EQ(told(), expected) << answer;
  }
}

TEST_F(VASTResolverTest, WhoIsNotThereInTimeIsLeft) {
  for (const auto& answer :
       {headless::Answer{.body = vast(inlineAd("C")), .delay = std::chrono::seconds(6)},
        headless::Answer{.status = 404}, headless::Answer::offline(), headless::Answer::silence()}) {
    platform = headless::Platform::install();
    platform->urlSession().respond("ads.example/A", answer);
    const auto found = resolve(wrapper("A"));
    EXPECT_EQ(found.error, VASTError::WrapperTimeout);
    EXPECT_EQ(told(), Texts{"A-301"});
  }
  // One after another, but not for ever.
  platform = headless::Platform::install();
  platform->urlSession().respond("ads.example", headless::Answer::silence());
  std::string row;
  for (const auto* name : {"A", "B", "C", "D", "E", "F", "G"}) row += wrapper(name);
  EXPECT_EQ(names(resolve(row + inlineAd("s")).pod), "s");
  EXPECT_EQ(platform->urlSession().requests("ads.example").size(), 4U);
  EXPECT_EQ(told().size(), 7U);
  platform = headless::Platform::install();
  serve("A", std::string(50'000'000, 'x'));
  EXPECT_EQ(resolve(wrapper("A")).error, VASTError::NotXML);
}

TEST_F(VASTResolverTest, WrappersWithoutEndEnd) {
  int served = 0;
  platform->urlSession().respond(
      [](const auto& request) { return request.url.host() == "ads.example"; },
      [&](const auto&) { return headless::Answer{.body = vast(wrapper("W" + std::to_string(++served)))}; });
  EXPECT_EQ(resolve(wrapper("A")).error, VASTError::WrapperLimit);
  EXPECT_EQ(served, 5);
  EXPECT_EQ(told().size(), 6U);

  platform = headless::Platform::install();
  serve("A", vast(wrapper("B")));
  serve("B", vast(wrapper("A")));
  EXPECT_EQ(resolve(wrapper("A")).error, VASTError::WrapperLimit);
  EXPECT_EQ(platform->urlSession().requests("ads.example").size(), 2U);

  // Many beside one another, each of which leads to as many.
  platform = headless::Platform::install();
  std::string many;
  for (int i = 1; i <= 1000; ++i)
    many += wrapper("W" + std::to_string(i), "allowMultipleAds='true'", "",
                    "sequence='" + std::to_string(i) + "'");
  serve("", vast(many));
  EXPECT_EQ(resolve(many).pod.size(), 0U);
  EXPECT_EQ(platform->urlSession().requests("ads.example").size(), VASTSettings{}.mostRequests);
}

TEST_F(VASTResolverTest, PodsAndWhatStandsInForTheirAds) {
  // In the order of their places, whatever that of their answers.
  serve("A", vast(inlineAd("a")), std::chrono::seconds(2));
  serve("B", vast(inlineAd("b", "sequence='2'") + inlineAd("c", "sequence='1'") + inlineAd("d")));
  serve("C", vast(""));
  const auto pod = [](const std::string& more) {
    return inlineAd("3", "sequence='3'") + wrapper("A", "", "", "sequence='1'") + more;
  };
  EXPECT_EQ(names(resolve(pod(wrapper("B", "", "", "sequence='2'"))).pod), "ad3")
      << "one ad, and one that stands alone";
  EXPECT_EQ(names(resolve(pod(wrapper("B", "allowMultipleAds='true'", "", "sequence='2'"))).pod), "acb3");
  const auto spares = inlineAd("s") + inlineAd("t") + wrapper("C");
  auto found = resolve(pod(wrapper("C", "", "", "sequence='2'") + spares));
  EXPECT_EQ(names(found.pod) + "|" + names(found.spare), "a3|st") << "nothing stands in unasked";
  found = resolve(pod(wrapper("C", "fallbackOnNoAd='true'", "", "sequence='2'") + spares));
  EXPECT_EQ(names(found.pod) + "|" + names(found.spare), "as3|t");
  // Ads that stand alone: the first that there is.
  found = resolve(wrapper("C") + inlineAd("long") + inlineAd("s") + wrapper("A"), {});
  EXPECT_EQ(names(found.pod) + "|" + names(found.spare), "long|s");
  EXPECT_EQ(names(resolve(wrapper("C", "fallbackOnNoAd='false'") + inlineAd("s")).pod), "");
  EXPECT_EQ(names(resolve(pod(inlineAd("s")), {.allowMultipleAds = false}).pod), "s");
  EXPECT_EQ(resolve(wrapper("A"), {.followWrappers = false}).error, VASTError::Wrapper);
  EXPECT_EQ(resolve(inlineAd("s"), {.longest = 9}).error, VASTError::WrongDuration);
}

TEST_F(VASTResolverTest, AFloodOfAdsAndOfAddressesIsCutOff) {
  const auto addresses = [](int count, size_t length) {
    std::string all;
    for (int i = 0; i < count; ++i)
      all += "<Impression>https://i/" + std::string(length, 'x') + "</Impression>";
    return all;
  };
  std::string pod, spares;
  for (int i = 0; i < 60; ++i) {
    pod += inlineAd("p", "sequence='1'");
    spares += inlineAd("s");
  }
  serve("A", vast(inlineAd("a") + spares));
  serve("B", vast(inlineAd("b")), std::chrono::seconds(1));
  serve("C", vast(wrapper("D", "", addresses(900, 1))));
  serve("D", vast(inlineAd("d")));
  EXPECT_EQ(names(resolve(pod + spares).pod), std::string(20, 'p'));
  EXPECT_EQ(names(resolve(spares).pod) + "|" + names(resolve(spares).spare), "s|" + std::string(19, 's'));
  const auto found = resolve(wrapper("A", "", "", "sequence='1'") + wrapper("B", "", "", "sequence='2'"));
  EXPECT_EQ(names(found.pod), "ab") << "who answers first takes no place of another";
  // Nor does an ad get more of its wrappers than can be kept for each of many.
  const auto many = resolve(wrapper("C", "", addresses(900, 1)));
  ASSERT_EQ(names(many.pod), "d");
  EXPECT_EQ(many.pod[0].impressions.size(), VASTDocument::mostOfAKind);
  const auto large = resolve(wrapper("D", "", addresses(200, 20'000)));
  ASSERT_EQ(names(large.pod), "d");
  EXPECT_NEAR(static_cast<double>(large.pod[0].impressions.size()), 52, 5);
}

TEST_F(VASTResolverTest, AddressesAreFilledInAndALetGoHandleIsSilent) {
  auto document =
      VASTDocument::read(vast("<Ad><Wrapper><BlockedAdCategories "
                              "authority='l'>7</BlockedAdCategories><VASTAdTagURI>https://ads.example/"
                              "?b=[BLOCKEDADCATEGORIES]&amp;c=[GDPRCONSENT]&amp;x=[OWN] "
                              "y</VASTAdTagURI></Wrapper></Ad>"));
  VASTSettings settings;
  settings.macros.set(VASTMacro::GDPRConsent, "C O");
  platform->urlSession().respond("", {.body = vast(wrapper("B")), .delay = std::chrono::seconds(1)});
  auto handle =
      VASTResolver::resolve(document, settings, [](auto) { FAIL() << "called after its handle went"; });
  platform->runUntilIdle();
  EXPECT_EQ(platform->urlSession().requests("ads.example").at(0).url.absoluteString(),
            "https://ads.example/?b=%5Bl%5D7&c=C%20O&x=[OWN]%20y");
  handle.cancel();
  platform->advance(std::chrono::minutes(1));
  EXPECT_EQ(platform->urlSession().requests().size(), 1U) << "nobody waits for the rest";

  // A limit of the whole is told to the wrapper that was open, but not where nobody waits any more.
  platform->urlSession().clearRules();
  platform->urlSession().respond("ads.example", headless::Answer::silence());
  platform->urlSession().respond("", {});
  for (const bool stays : {true, false}) {
    auto waits = VASTResolver::resolve(VASTDocument::read(vast(wrapper("A"))),
                                       {.wholeTimeout = std::chrono::seconds(2)}, [](auto) {});
    platform->advance(std::chrono::seconds(1));
    if (!stays) waits.cancel();
    platform->advance(std::chrono::minutes(1));
    EXPECT_EQ(told(), Texts{"A-301"}) << "once";
  }
}

}  // namespace
}  // namespace velto
