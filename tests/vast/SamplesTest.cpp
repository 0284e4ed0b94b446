// What is read of the samples: all that an ad says, in one line. What is not said is not written.
#include "velto/platform/foundation/Text.h"
#include "velto/vast/VASTResolver.h"
#include "velto/vast/VMAPDocument.h"

#include <gtest/gtest.h>

#include "Samples.h"

namespace velto {
namespace {

class SampleLine {
 public:
  explicit SampleLine(const VASTAd& ad) {
    say("Ad", ad.id);
    say("number", ad.sequence);
    say("is", ad.adType == "video" ? "" : ad.adType);
    say("title", ad.adTitle);
    say("system", ad.adSystem + (ad.adSystemVersion.empty() ? "" : " " + ad.adSystemVersion));
    if (ad.pricing) out_ << ", " << ad.pricing->model << " " << ad.pricing->value << ad.pricing->currency;
    if (ad.wrapper) wrapper(*ad.wrapper);
    list("of", ad.categories, [](const auto& one) { return one.authority + "=" + one.code; });
    out_ << ", tells " << ad.impressions.size() << "+" << ad.errors.size();
    list("seen", ad.viewableImpression.viewable, [](const auto& url) { return url; });
    for (const auto& one : ad.verifications) {
      out_ << ", verified by '" << one.vendor << "' " << (one.hasExecutable ? "program " : "")
           << one.notExecuted.size();
      if (const auto* script = one.openMeasurementScript()) out_ << " " << last(script->url);
      say("with", one.parameters);
    }
    list("extensions", ad.extensions, [](const auto& one) { return one.type; });
    if (ad.linear) linear(*ad.linear);
    for (const auto& one : ad.companions) {
      out_ << ", companion " << one.width << "x" << one.height;
      say("in", one.adSlotId);
      surface(one);
      list("events", one.trackings, [](const auto& tracking) { return tracking.event; });
    }
    if (ad.hasNonLinear) out_ << ", overlays";
    if (const auto fault = ad.wrapper ? std::nullopt : VASTResolver::faultOf(ad))
      out_ << ", fails with " << static_cast<int>(*fault);
  }
  std::string text() const { return out_.str(); }

 private:
  static std::string last(const std::string& url) { return url.substr(url.rfind('/') + 1); }
  void say(const char* what, const std::string& value) {
    if (!value.empty()) out_ << ", " << what << " '" << value << "'";
  }
  template <class Value>
  void say(const char* what, const std::optional<Value>& value) {
    if (value) out_ << ", " << what << " " << *value;
  }
  template <class Value, class Name>
  void list(const char* what, const std::vector<Value>& values, const Name& name) {
    if (!values.empty()) out_ << ", " << what;
    for (const auto& value : values) out_ << " " << name(value);
  }
  void wrapper(const VASTWrapper& one) {
    say("leads to", one.tag);
    out_ << (one.followAdditionalWrappers ? "" : " at once") << (one.allowMultipleAds ? " several" : "");
    say("fallback", one.fallbackOnNoAd);
    list("blocks", one.blockedCategories, [](const auto& no) { return no.authority + "=" + no.code; });
  }
  void linear(const VASTLinear& one) {
    out_ << ", film " << one.creativeId << "/" << one.adId;
    say("seconds", one.duration);
    if (one.skipOffset) say("skip", one.skipOffset->secondsOf(one.duration));
    list("known as", one.universalAdIds, [](const auto& id) { return id.registry + "=" + id.value; });
    for (const auto& file : one.mediaFiles) {
      out_ << ", file " << last(file.url) << " " << file.width << "x" << file.height << " " << file.type;
      say("codec", file.codec);
      say("bitrate", file.bitrate);
    }
    list("beside it", one.interactiveFiles, [](const auto& file) { return file.apiFramework; });
    list("captions", one.captions, [](const auto& file) { return file.type + "/" + file.language; });
    say("parameters", one.adParameters);
    list("events", one.trackings, [](const auto& tracking) {
      const auto at = tracking.offset.value_or(VASTOffset{});
      return tracking.event + (at.value > 0 ? "@" + numberText(at.value) : "") + (at.isPercent ? "%" : "");
    });
    say("click", one.clickThrough);
    out_ << " told " << one.clickTrackings.size() << "+" << one.customClicks.size();
    for (const auto& icon : one.icons) {
      out_ << ", icon " << icon.program << " " << icon.width << "x" << icon.height << " " << icon.xPosition
           << " " << icon.yPosition << " seen " << icon.viewTrackings.size();
      say("from", icon.offset);
      say("for", icon.duration);
      surface(icon);
    }
  }
  template <class Surface>
  void surface(const Surface& one) {
    for (const auto& shown : one.resources) out_ << " " << shown.creativeType << ":" << last(shown.content);
    say("click", one.clickThrough);
    out_ << " told " << one.clickTrackings.size();
  }

  std::ostringstream out_;
};

std::string lineOf(const VASTDocument& document) {
  std::string line = document.version;
  for (const auto& url : document.errors) line += " " + url;
  for (const auto& ad : document.ads) line += SampleLine(ad).text();
  return line + (document.error ? " unreadable" : "");
}

std::string lineOf(const VMAPDocument& document) {
  std::ostringstream out;
  out << document.version << (document.error ? " unreadable" : "");
  for (const auto& one : document.breaks) {
    out << ", Break '" << one.id << "' kind " << int(one.offset.kind) << " at " << one.offset.value;
    for (const auto& type : one.types) out << " " << type;
    if (one.repeatAfter) out << " again " << *one.repeatAfter;
    for (const auto* urls : {&one.starts, &one.ends, &one.errors})
      for (const auto& url : *urls) out << " " << url;
    if (const auto& source = one.source)
      out << ", source '" << source->id << (source->allowMultipleAds ? "' several" : "'")
          << (source->followRedirects ? " anywhere " : " ") << source->templateType << "|" << source->adTag
          << (source->document ? lineOf(*source->document) : "");
    if (const auto fault = one.fault()) out << ", fails with " << int(*fault);
  }
  return out.str();
}

TEST(VASTSamplesTest, AreReadAsTheyWereMeant) {
  const auto expected = test::expectedOfSamples();
  size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(VAST_SAMPLES)) {
    const auto name = entry.path().stem().string();
    if (entry.path().extension() != ".xml") continue;
    ASSERT_TRUE(expected.contains(name)) << name;
    const auto text = test::textOf(entry.path());
    EXPECT_EQ(name[1] == 'm' ? lineOf(VMAPDocument::read(text)) : lineOf(VASTDocument::read(text)),
              expected.at(name).at("read"))
        << name;
    ++count;
  }
  EXPECT_EQ(count, expected.size());
}

}  // namespace
}  // namespace velto
