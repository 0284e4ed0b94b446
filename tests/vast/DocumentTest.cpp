// Documents of video ads as servers write them, well and badly.
#include "velto/vast/VASTDocument.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <sstream>

namespace velto {
namespace {

using Texts = std::vector<std::string>;

VASTAd only(const std::string& text) {
  const auto document = VASTDocument::read(text);
  EXPECT_FALSE(document.error) << static_cast<int>(document.error.value());
  return document.ads.size() == 1 ? document.ads.front() : VASTAd{};
}

std::string linearAd(const std::string& inside, const std::string& beside = "") {
  return "<VAST version='4.2'><Ad><InLine>" + beside + "<Creatives><Creative><Linear>" + inside +
         "</Linear></Creative></Creatives></InLine></Ad></VAST>";
}

constexpr char everything[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<VAST version="4.2" xmlns="http://www.iab.com/VAST"><Error><![CDATA[https://e.example/none]]></Error>
<Ad id="a1" sequence="2" adType="Video"><InLine>
 <AdSystem version="3">Serving</AdSystem><AdTitle>Title</AdTitle><AdServingId>serving-1</AdServingId>
 <Category authority="iabtechlab.com">232</Category><Category>7, 8</Category>
 <Description>d</Description><Advertiser>who</Advertiser>
 <Pricing model="CPM" currency="EUR"><![CDATA[ 25.5 ]]></Pricing><Survey>https://s.example</Survey><Expires>60</Expires>
 <Impression id="i"><![CDATA[https://i.example/1]]></Impression><Impression>https://i.example/2</Impression>
 <Error>https://e.example/ad?c=[ERRORCODE]</Error>
 <ViewableImpression id="v"><Viewable>https://v.example/y</Viewable><NotViewable>https://v.example/n</NotViewable>
  <ViewUndetermined>https://v.example/u</ViewUndetermined></ViewableImpression>
 <AdVerifications><Verification vendor="one.example-omid">
  <JavaScriptResource apiFramework="OMID" browserOptional="true"><![CDATA[https://m.example/1.js]]></JavaScriptResource>
  <ExecutableResource apiFramework="x" type="y">https://m.example/x</ExecutableResource>
  <TrackingEvents><Tracking event="verificationNotExecuted">https://m.example/not?r=[REASON]</Tracking></TrackingEvents>
  <VerificationParameters><![CDATA[{"k":1}]]></VerificationParameters></Verification></AdVerifications>
 <Creatives>
  <Creative sequence="2"><Linear><Duration>00:00:01</Duration></Linear></Creative>
  <Creative id="c" adId="c-ad" sequence="1"><UniversalAdId idRegistry="ad-id.org">CNPA0484000H</UniversalAdId>
   <CreativeExtensions><CreativeExtension type="t"><a b="1"/></CreativeExtension></CreativeExtensions>
   <Linear skipoffset="00:00:05"><Duration>00:00:15.250</Duration><AdParameters>p</AdParameters>
    <MediaFiles><Mezzanine delivery="progressive" type="video/mp4" width="9" height="9">https://f.example/mezz</Mezzanine>
     <MediaFile id="m" delivery="progressive" type="Video/MP4" codec="avc1.4d401f" width="640" height="360" bitrate="500" minBitrate="300"
       maxBitrate="700" scalable="0" maintainAspectRatio="false" fileSize="1000"><![CDATA[https://f.example/1.mp4]]></MediaFile>
     <InteractiveCreativeFile type="text/html" apiFramework="SIMID">https://f.example/simid</InteractiveCreativeFile>
     <ClosedCaptionFiles><ClosedCaptionFile type="text/vtt" language="de">https://f.example/de.vtt</ClosedCaptionFile></ClosedCaptionFiles>
    </MediaFiles>
    <TrackingEvents><Tracking event="start">https://t.example/s</Tracking>
     <Tracking event="progress" offset="10%">https://t.example/p</Tracking></TrackingEvents>
    <VideoClicks><ClickThrough>https://c.example</ClickThrough><ClickTracking>https://c.example/t</ClickTracking>
     <CustomClick>https://c.example/x</CustomClick></VideoClicks>
    <Icons><Icon program="AdChoices" width="20" height="21" xPosition="right" yPosition="top" duration="00:00:10" offset="00:00:02" pxratio="2">
     <StaticResource creativeType="image/png">https://n.example/i.png</StaticResource>
     <IconClicks><IconClickThrough>https://n.example</IconClickThrough><IconClickTracking>https://n.example/t</IconClickTracking></IconClicks>
     <IconViewTracking>https://n.example/v</IconViewTracking></Icon></Icons></Linear></Creative>
  <Creative><CompanionAds required="any"><Companion id="k" width="300" height="99999" adSlotID="slot" renderingMode="end-card" apiFramework="f" pxratio="3">
   <AdParameters>kp</AdParameters>
   <HTMLResource><![CDATA[<b>&amp;</b>]]></HTMLResource><IFrameResource>https://k.example</IFrameResource><AltText>alt</AltText>
   <CompanionClickThrough>https://k.example/c</CompanionClickThrough><CompanionClickTracking>https://k.example/t</CompanionClickTracking>
   <TrackingEvents><Tracking event="creativeView">https://k.example/v</Tracking></TrackingEvents></Companion></CompanionAds></Creative>
  <Creative><NonLinearAds><NonLinear/></NonLinearAds></Creative>
 </Creatives>
 <Extensions><Extension type="own"><x:y xmlns:x="urn:x">1</x:y></Extension></Extensions>
</InLine></Ad></VAST>)";

TEST(VASTDocumentTest, EverythingOfAnAdIsRead) {
  const auto ad = only(everything);
  EXPECT_EQ(VASTDocument::read(everything).errors, Texts{"https://e.example/none"});
  EXPECT_EQ(ad.id + ad.adType + ad.adSystem + ad.adSystemVersion + ad.adTitle + ad.adServingId +
                ad.description + ad.advertiser,
            "a1videoServing3Titleserving-1dwho");
  EXPECT_EQ(ad.sequence, 2);
  ASSERT_EQ(ad.categories.size(), 3U);
  EXPECT_EQ(ad.categories[0].authority + ad.categories[0].code + ad.categories[2].code, "iabtechlab.com2328");
  EXPECT_EQ(ad.pricing.value().model + ad.pricing->currency, "cpmEUR");
  EXPECT_EQ(ad.pricing->value, 25.5);
  EXPECT_EQ(ad.expires, 60);
  EXPECT_EQ(ad.impressions, (Texts{"https://i.example/1", "https://i.example/2"}));
  EXPECT_EQ(ad.errors, Texts{"https://e.example/ad?c=[ERRORCODE]"});
  EXPECT_EQ(ad.viewableImpression.viewable.at(0) + ad.viewableImpression.undetermined.at(0),
            "https://v.example/yhttps://v.example/u");
  const auto& verification = ad.verifications.at(0);
  EXPECT_EQ(verification.vendor + verification.parameters, "one.example-omid{\"k\":1}");
  ASSERT_TRUE(verification.openMeasurementScript());
  EXPECT_EQ(verification.openMeasurementScript()->url, "https://m.example/1.js");
  EXPECT_TRUE(verification.hasExecutable && verification.scripts[0].browserOptional);
  EXPECT_EQ(verification.notExecuted, Texts{"https://m.example/not?r=[REASON]"});
  EXPECT_EQ(ad.extensions.at(0).type + ad.extensions[0].markup, R"(own<x:y xmlns:x="urn:x">1</x:y>)");
  EXPECT_TRUE(ad.hasNonLinear);
}

TEST(VASTDocumentTest, EverythingOfItsCreativesIsRead) {
  const auto ad = only(everything);
  const auto& linear = ad.linear.value();
  EXPECT_EQ(linear.creativeId + linear.adId + linear.adParameters, "cc-adp") << "the first by sequence";
  EXPECT_EQ(linear.universalAdIds.at(0).registry + linear.universalAdIds[0].value, "ad-id.orgCNPA0484000H");
  EXPECT_EQ(linear.extensions.at(0).type + linear.extensions[0].markup, R"(t<a b="1"/>)");
  EXPECT_EQ(linear.duration, 15.25);
  EXPECT_EQ(linear.skipOffset, (VASTOffset{5, false}));
  ASSERT_EQ(linear.mediaFiles.size(), 1U) << "a mezzanine is no file to play";
  const auto& file = linear.mediaFiles[0];
  EXPECT_EQ(file.url + file.type + file.codec + file.id, "https://f.example/1.mp4video/mp4avc1.4d401fm");
  EXPECT_EQ(file.delivery, VASTMediaFile::Delivery::Progressive);
  EXPECT_EQ((std::vector{file.width, file.height, *file.bitrate, *file.minBitrate, *file.maxBitrate,
                         *file.fileSize}),
            (std::vector<double>{640, 360, 500, 300, 700, 1000}));
  EXPECT_FALSE(file.scalable || file.maintainAspectRatio);
  const auto& interactive = linear.interactiveFiles.at(0);
  EXPECT_EQ(interactive.url + interactive.type + interactive.apiFramework,
            "https://f.example/simidtext/htmlSIMID");
  const auto& caption = linear.captions.at(0);
  EXPECT_EQ(caption.url + caption.type + caption.language, "https://f.example/de.vtttext/vttde");
  EXPECT_EQ(linear.trackings.at(1).event, "progress");
  EXPECT_EQ(linear.trackings[1].offset, (VASTOffset{10, true}));
  EXPECT_EQ(linear.clickThrough + linear.clickTrackings.at(0) + linear.customClicks.at(0),
            "https://c.examplehttps://c.example/thttps://c.example/x");
  const auto& icon = linear.icons.at(0);
  EXPECT_EQ(icon.program + icon.xPosition + icon.yPosition + icon.resources.at(0).creativeType,
            "AdChoicesrighttopimage/png");
  EXPECT_EQ((std::vector{icon.width, icon.height, *icon.offset, *icon.duration, icon.pxratio}),
            (std::vector<double>{20, 21, 2, 10, 2}));
  EXPECT_EQ(icon.clickThrough + icon.clickTrackings.at(0) + icon.viewTrackings.at(0),
            "https://n.examplehttps://n.example/thttps://n.example/v");
  const auto& companion = ad.companions.at(0);
  EXPECT_EQ(ad.companionsRequired, VASTCompanionsRequired::Any);
  EXPECT_EQ(companion.id + companion.adSlotId + companion.renderingMode + companion.altText +
                companion.apiFramework + companion.adParameters + companion.clickThrough,
            "kslotend-cardaltfkphttps://k.example/c");
  EXPECT_EQ((std::vector{companion.width, companion.height, companion.pxratio}),
            (std::vector<double>{300, 4096, 3}))
      << "as large as anything is shown";
  ASSERT_EQ(companion.resources.size(), 2U);
  EXPECT_EQ(companion.resources[0].content, "https://k.example");
  EXPECT_EQ(companion.resources[1].content, "<b>&amp;</b>");
  EXPECT_EQ(companion.clickTrackings.at(0) + companion.trackings.at(0).url,
            "https://k.example/thttps://k.example/v");
}

TEST(VASTDocumentTest, WhatIsWrongInTheSmallIsReadAsItWasMeant) {
  const auto ad = only(
      "\xEF\xBB\xBF\n <?xml version='1.0' encoding='utf-16'?><vast VERSION='3.0'><AD><inline><unknown/>"
      "<impression>\n  http://i.example/a?b=1&c=2&copy=3&amp;d=%20x y\n/z </impression>"
      "<Impression></Impression><Impression>javascript:alert(1)</Impression><error>//e.example/&nbsp;</error>"
      "<x:Extensions><Extension type='adverifications'><AdVerifications><Verification><JavaScriptResource>"
      "https://m.example</JavaScriptResource></Verification></AdVerifications></Extension></x:Extensions>"
      "<Creatives><Creative><LINEAR SkipOffset=' 25% '><duration>00:00:30</duration><MediaFiles>"
      "<mediafile TYPE='video/mp4' width='many' bitrate='-1'> <![CDATA[ https://f.example/]]>x </mediafile>"
      "</MediaFiles><TrackingEvents><Tracking Event='FIRSTQUARTILE'>https://t.example</Tracking>"
      "<Tracking event='own'>https://t.example</Tracking><Tracking event='mute'/></TrackingEvents>"
      "</LINEAR></Creative></Creatives></inline></AD></vast>");
  EXPECT_EQ(ad.impressions, Texts{"http://i.example/a?b=1&c=2&copy=3&d=%20x y/z"});
  EXPECT_EQ(ad.errors, Texts{"https://e.example/&nbsp;"});
  EXPECT_EQ(ad.verifications.at(0).scripts.size(), 1U);
  EXPECT_FALSE(ad.verifications[0].openMeasurementScript());
  EXPECT_TRUE(ad.extensions.empty());
  ASSERT_TRUE(ad.linear);
  EXPECT_EQ(ad.linear->duration, 30);
  EXPECT_EQ(ad.linear->skipOffset, (VASTOffset{25, true}));
  const auto& file = ad.linear->mediaFiles.at(0);
  EXPECT_EQ(file.url, "https://f.example/x");
  EXPECT_EQ(file.delivery, VASTMediaFile::Delivery::Unknown);
  EXPECT_TRUE(file.width == 0 && !file.bitrate);
  ASSERT_EQ(ad.linear->trackings.size(), 2U);
  EXPECT_EQ(ad.linear->trackings[0].event, "firstQuartile");
  EXPECT_EQ(only(linearAd("", "<AdTitle>caf\xE9</AdTitle>")).adTitle, "caf\xC3\xA9");
}

TEST(VASTDocumentTest, EventsAreKnownInAnyCase) {
  std::istringstream events(
      "acceptInvitation acceptInvitationLinear adCollapse adExpand close closeLinear collapse complete "
      "creativeView exitFullscreen expand firstQuartile fullscreen interactiveStart loaded midpoint "
      "minimize mute notUsed otherAdInteraction overlayViewDuration pause playerCollapse playerExpand "
      "progress resume rewind skip start thirdQuartile timeSpentViewing unmute verificationNotExecuted");
  for (std::string event; events >> event;) {
    std::string loud = event;
    std::transform(loud.begin(), loud.end(), loud.begin(), [](unsigned char c) { return std::toupper(c); });
    const auto ad = only(linearAd("<TrackingEvents><Tracking event='" + loud +
                                  "'>https://t.example</Tracking></TrackingEvents>"));
    EXPECT_EQ(ad.linear.value().trackings.at(0).event, event);
  }
}

TEST(VASTDocumentTest, Times) {
  const std::pair<const char*, std::optional<double>> times[] = {
      {"00:00:15", 15},   {"01:02:03.500", 3723.5}, {" 00:30 ", 30}, {"7", 7},          {"", {}},
      {"00:00:-1", {}},   {"1:2:3:4", {}},          {"a", {}},       {"00:00:1e9", {}}, {"nan", {}},
      {"99999:00:00", {}}};
  for (const auto& [text, seconds] : times) EXPECT_EQ(readVASTTime(text), seconds) << text;
  EXPECT_EQ(vastTime(3723.5), "01:02:03.500");
  EXPECT_EQ(vastTime(-1), "00:00:00.000");
  EXPECT_FALSE(VASTOffset::read("101%") || VASTOffset::read("%") || VASTOffset::read("-5%"));
}

TEST(VASTDocumentTest, WhatIsWrongInTheLargeHasTheStandardsNumber) {
  const std::string entities = "<!DOCTYPE x [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;&a;&a;'>]>";
  std::string deep, manyAttributes;
  for (int i = 0; i < 100; ++i) deep += "<a>";
  for (int i = 0; i < 100'000; ++i) manyAttributes += " a" + std::to_string(i) + "=''";
  std::string manyTags;
  for (int i = 0; i < 300'000; ++i) manyTags += "<a/>";
  const std::pair<std::string, VASTError> documents[] = {
      {"", VASTError::NotXML},
      {"no XML", VASTError::NotXML},
      {std::string("\0\xFF\xFE", 3), VASTError::NotXML},
      {"<VAST version='4.0'><Ad>", VASTError::NotXML},
      {"<VAST version='4.0'><Ad></VAST>", VASTError::NotXML},
      {"<VAST version='4.0'><Ad id='", VASTError::NotXML},
      {entities + "<VAST version='4.0'>&b;</VAST>", VASTError::NotXML},
      {"<!DOCTYPE x SYSTEM 'file:///etc/passwd' [<!ENTITY % a SYSTEM 'file:///etc/passwd'>%a;]><VAST/>",
       VASTError::NotXML},
      {"<VAST version='4.0'>" + deep + "</VAST>", VASTError::NotXML},
      {"<VAST version='4.0'" + manyAttributes + "/>", VASTError::NotXML},
      {"<VAST version='4.0'>" + manyTags + "</VAST>", VASTError::NotXML},
      {"<VAST version='4.0'>" + std::string(VASTDocument::mostBytes, ' ') + "</VAST>", VASTError::NotXML},
      {"<html/>", VASTError::NotVAST},
      {"<VAST version='4.0'><Ad/></VAST>", VASTError::NotVAST},
      {"<VideoAdServingTemplate/>", VASTError::VersionNotSupported},
      {"<VAST version='1.0'><Ad/></VAST>", VASTError::VersionNotSupported},
      {"<VAST version='5.0'/>", VASTError::VersionNotSupported}};
  for (const auto& [text, error] : documents)
    EXPECT_EQ(VASTDocument::read(text).error, error) << text.substr(0, 200);
  std::string asManyAsMayBe;
  for (int i = 0; i < 256; ++i) asManyAsMayBe += " a" + std::to_string(i) + "=''";
  asManyAsMayBe = "<VAST><a" + asManyAsMayBe + "/><b" + asManyAsMayBe + "/></VAST>";
  for (const auto& text :
       {std::string("<VAST/>"), std::string("<VAST version='2.0.1'/>"), asManyAsMayBe,
        std::string("<VAST version='4.9'></VAST> <!-- behind -->"), std::string("<VAST version='?'/>")})
    EXPECT_FALSE(VASTDocument::read(text).error) << text;
  std::string manyAds;
  for (int i = 0; i < 500; ++i) manyAds += "<Ad><Wrapper/></Ad>";
  EXPECT_EQ(VASTDocument::read("<VAST>" + manyAds + "</VAST>").ads.size(), VASTDocument::mostAds);
}

}  // namespace
}  // namespace velto
