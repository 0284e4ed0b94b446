// Ad breaks.
#include "velto/vast/VMAPDocument.h"

#include "../support/HeadlessTest.h"

namespace velto {
namespace {

using VMAPSourceTest = test::HeadlessTest;

TEST(VMAPDocumentTest, BreaksAreReadAndOrdered) {
  const auto document = VMAPDocument::read(
      R"(<?xml version="1.0"?><vmap:VMAP xmlns:vmap="http://www.iab.net/videosuite/vmap" version="1.0">
    <vmap:AdBreak timeOffset="end" breakType="linear" breakId="post"><vmap:AdSource id="s" allowMultipleAds="false" followRedirects="false">
      <vmap:VASTAdData><VAST version="3.0"><Ad><Wrapper/></Ad></VAST></vmap:VASTAdData></vmap:AdSource></vmap:AdBreak>
    <vmap:AdBreak timeOffset="00:10:00.000" breakType="linear,display" breakId="mid" repeatAfter="00:05:00"><vmap:AdSource>
      <vmap:AdTagURI templateType="vast3"><![CDATA[ https://ads.example/?p=[BREAKPOSITION]&x ]]></vmap:AdTagURI></vmap:AdSource>
      <vmap:TrackingEvents><vmap:Tracking event="breakStart">https://t.example/s</vmap:Tracking><vmap:Tracking event="breakend">https://t.example/e</vmap:Tracking>
      <vmap:Tracking event="error">https://t.example/x?[ERRORCODE]</vmap:Tracking><vmap:Tracking event="other">https://t.example/o</vmap:Tracking></vmap:TrackingEvents>
      <vmap:Extensions><vmap:Extension type="e"><a/></vmap:Extension></vmap:Extensions></vmap:AdBreak>
    <vmap:AdBreak timeOffset="25%" breakId="quarter"><vmap:AdSource><vmap:CustomAdData templateType="own">x</vmap:CustomAdData></vmap:AdSource></vmap:AdBreak>
    <vmap:AdBreak timeOffset="#2" breakType="nonlinear" breakId="second"/><vmap:AdBreak timeOffset="soon"/><vmap:AdBreak/>
    <vmap:AdBreak timeOffset="start" breakId="pre"><vmap:AdSource><vmap:VASTData><![CDATA[<html/>]]></vmap:VASTData></vmap:AdSource></vmap:AdBreak>
    </vmap:VMAP>)");
  ASSERT_FALSE(document.error);
  const auto order = [&](std::optional<double> duration) {
    std::string ids;
    for (const auto* one : document.inOrder(duration)) ids += one->id + " ";
    return ids;
  };
  EXPECT_EQ(order(1200), "pre quarter mid post ");
  EXPECT_EQ(order(std::nullopt), "pre mid post ");
  EXPECT_EQ(document.breaks.at(3).offset, (VMAPOffset{VMAPOffset::Kind::Position, 2}));
  EXPECT_EQ(document.breaks[1].offset.secondsOf(300), 300) << "behind the end is at the end";

  const auto& post = document.breaks[0];
  EXPECT_FALSE(post.source->allowMultipleAds || post.source->followRedirects || post.fault());
  EXPECT_EQ(post.source->document.value().ads.size(), 1U);
  const auto& mid = document.breaks[1];
  EXPECT_EQ(mid.source->adTag, "https://ads.example/?p=[BREAKPOSITION]&x");
  EXPECT_EQ(mid.types, (std::vector<std::string>{"linear", "display"}));
  EXPECT_EQ(mid.repeatAfter, 300);
  EXPECT_EQ(mid.starts.at(0) + mid.ends.at(0) + mid.errors.at(0),
            "https://t.example/shttps://t.example/ehttps://t.example/x?[ERRORCODE]");
  EXPECT_EQ(mid.errors.size(), 1U);
  EXPECT_EQ(mid.extensions.at(0).type + mid.extensions[0].markup, "e<a/>");
  EXPECT_FALSE(mid.fault());
  EXPECT_EQ(document.breaks[2].fault(), VMAPError::TemplateNotSupported);
  EXPECT_EQ(document.breaks[3].fault(), VMAPError::BreakTypeNotSupported);
  EXPECT_EQ(document.breaks[4].fault(), VMAPError::AdDocumentUnreadable);
}

TEST_F(VMAPSourceTest, AreResolvedByTheirOwnRules) {
  const auto resolved = [&](const VMAPAdSource& source) {
    std::optional<VASTResolution> found;
    const auto handle =
        resolveVMAPSource(source, {}, [&](auto resolution) { found = std::move(resolution); });
    platform->advance(std::chrono::minutes(1));
    return found.value().pod.empty()
               ? "none for " + std::to_string(static_cast<int>(vmapErrorFor(*found->error)))
               : found->pod.front().id + std::to_string(found->pod.size());
  };
  const std::string ad =
      "<InLine><Creatives><Creative><Linear><MediaFiles><MediaFile>https://f</MediaFile></MediaFiles>"
      "</Linear></Creative></Creatives></InLine></Ad>";
  const std::string pod = "<VAST><Ad id='a' sequence='1'>" + ad + "<Ad id='b' sequence='2'>" + ad + "</VAST>";
  platform->urlSession().respond("pod", {.body = pod});
  platform->urlSession().respond(
      "wrapper",
      {.body = "<VAST><Ad><Wrapper><VASTAdTagURI>https://pod</VASTAdTagURI></Wrapper></Ad></VAST>"});
  platform->urlSession().respond("bad", {.body = "<VAST"});
  platform->urlSession().respond("silent", headless::Answer::silence());
  VMAPAdSource source;
  EXPECT_EQ(resolved(source), "none for 1005");
  for (const auto& [tag, result] : {std::pair("https://pod", "a2"),
                                    {"https://wrapper", "a1"},
                                    {"https://bad", "none for 1007"},
                                    {"https://silent", "none for 1008"}}) {
    source.adTag = tag;
    EXPECT_EQ(resolved(source), result);
  }
  source.followRedirects = source.allowMultipleAds = false;
  source.adTag = "https://wrapper";
  EXPECT_EQ(resolved(source), "none for 1005");
  source.document = VASTDocument::read(pod);
  EXPECT_EQ(resolved(source), "a1");
}

TEST(VMAPDocumentTest, WhatIsNoneHasTheStandardsNumber) {
  const std::pair<const char*, int> table[] = {
      {"<VMAP", 1003}, {"<VAST/>", 1001}, {"<VMAP version='2.0'/>", 1002}};
  for (const auto& [text, number] : table)
    EXPECT_EQ(static_cast<int>(VMAPDocument::read(text).error.value()), number) << text;
  EXPECT_FALSE(VMAPDocument::read("<VMAP/>").error);
}

}  // namespace
}  // namespace velto
