// Ad breaks.
#include "velto/vast/VMAPDocument.h"

#include <gtest/gtest.h>

namespace velto {
namespace {

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
  EXPECT_EQ(mid.extensions, std::vector<std::string>{"<a/>"});
  EXPECT_FALSE(mid.fault());
  EXPECT_EQ(document.breaks[2].fault(), VMAPError::TemplateNotSupported);
  EXPECT_EQ(document.breaks[3].fault(), VMAPError::BreakTypeNotSupported);
  EXPECT_EQ(document.breaks[4].fault(), VMAPError::AdDocumentUnreadable);
}

TEST(VMAPDocumentTest, WhatIsNoneHasTheStandardsNumber) {
  EXPECT_EQ(VMAPDocument::read("<VMAP").error, VMAPError::NotXML);
  EXPECT_EQ(VMAPDocument::read("<VAST/>").error, VMAPError::NotVMAP);
  EXPECT_EQ(VMAPDocument::read("<VMAP version='2.0'/>").error, VMAPError::VersionNotSupported);
  EXPECT_FALSE(VMAPDocument::read("<VMAP/>").error);
}

}  // namespace
}  // namespace velto
