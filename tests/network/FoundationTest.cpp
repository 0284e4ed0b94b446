// JSON, numbers, URLs, links, dates and colours: the small tools under everything, mostly against hostile
// input.
#include "velto/network/FoundationSDKVelto.h"
#include "velto/network/JSONSDKVelto.h"
#include "velto/platform/NSURLSession.h"

#include <gtest/gtest.h>

namespace velto {
namespace {

using namespace JSONSDKVelto;

std::string repeated(std::string_view piece, size_t times) {
  std::string text;
  while (times-- > 0) text += piece;
  return text;
}

TEST(JSONTest, GettersTakeAWrongTypeAsAbsent) {
  const auto o =
      *readJSON(R"({"s":"320","n":2.5,"t":true,"f":false,"one":1,"zero":0,"word":"abc","quoted":"true",
                            "a":[1],"o":{"x":1},"null":null,"dup":1,"dup":2})")
           ->object();
  EXPECT_EQ(stringValue(o, "s"), "320");
  for (const auto* key : {"n", "none"}) EXPECT_EQ(stringValue(o, key), std::nullopt);
  for (const auto& [key, number] : {std::pair("s", 320.0), {"n", 2.5}, {"t", 1}, {"dup", 2}})
    EXPECT_EQ(numberValue(o, key), number);
  for (const auto* key : {"word", "a", "o", "null", "none"})
    EXPECT_EQ(numberValue(o, key), std::nullopt) << key;
  for (const auto* key : {"t", "one", "n"}) EXPECT_TRUE(boolValue(o, key)) << key;
  for (const auto* key : {"f", "zero", "quoted", "s", "a", "null", "none"})
    EXPECT_FALSE(boolValue(o, key)) << key;
  EXPECT_EQ(arrayValue(o, "a")->size(), 1U);
  EXPECT_EQ(dictionaryValue(o, "o")->size(), 1U);
  EXPECT_FALSE(arrayValue(o, "o") || dictionaryValue(o, "a"));
}

TEST(JSONTest, ReadsAnyTopLevelValueAndRejectsTheRest) {
  EXPECT_EQ(JSONDictionary("[1,2]")->array()->size(), 2U);
  EXPECT_EQ(*JSONDictionary(" \"x\" ")->string(), "x");
  EXPECT_TRUE(JSONDictionary("null")->isNull());
  for (const auto* bad : {"", "{", "[1,]", "{\"a\":1} x", "nul", "'a'", "\"\xff\"", "{a:1}", "01"})
    EXPECT_EQ(JSONDictionary(bad), std::nullopt) << bad;
  EXPECT_TRUE(JSONDictionary(std::string(512, '[') + std::string(512, ']')));
  EXPECT_EQ(JSONDictionary(repeated("[", 100'000) + repeated("]", 100'000)), std::nullopt);
  EXPECT_EQ(JSONDictionary(repeated("{\"a\":", 100'000)), std::nullopt);
}

TEST(JSONTest, WritingKeepsTheKindOfNumbers) {
  const JSON::Object o{{"f", 3.0F}, {"g", 0.1F}, {"d", 2.0}, {"e", 0.25}, {"i", int64_t{9007199254740993}},
                       {"b", true}};
  EXPECT_EQ(writeJSON(o, false), R"({"b":true,"d":2,"e":0.25,"f":3,"g":0.1,"i":9007199254740993})");
  EXPECT_EQ(JSONString({JSON(1), JSON("a")}), "[\n  1,\n  \"a\"\n]");
  for (const auto& none : {JSON("\xff"), JSON(std::nan(""))}) EXPECT_EQ(writeJSON(none, true), std::nullopt);
  EXPECT_EQ(readJSON("12345678901234567890")->number(), 12345678901234567890.0);
  EXPECT_EQ(readJSON(std::string_view("{}\0 more", 8)), std::nullopt);
  EXPECT_EQ(readJSON(R"("\ud83d")"), std::nullopt) << "half a character is no text, but pages have such";
  EXPECT_EQ(readJSONOfPage(R"("\ud83d\ude00\uDE00a\uD83D\\ud83d")"),
            JSON("\xf0\x9f\x98\x80\xef\xbf\xbd\x61\xef\xbf\xbd\\ud83d"));
}

TEST(TextTest, NumbersInText) {
  EXPECT_EQ(parseNumber("-2.5e1"), -25);
  for (const auto* bad : {"", "abc", "320px", " 320", "1,5", "0x10", "nan", "inf", "-", ".", "1e999"})
    EXPECT_EQ(parseNumber(bad), std::nullopt) << bad;
  const std::pair<const char*, double> leading[] = {
      {"  5000ms", 5000}, {"+1.5", 1.5}, {"x", 0},
      {"1e", 1},          {"1e-999", 0}, {"1e999", std::numeric_limits<double>::infinity()}};
  for (const auto& [text, number] : leading) EXPECT_EQ(leadingNumber(text), number) << text;
  EXPECT_EQ(leadingInteger("99999999999999999999"), INT64_MAX);
  EXPECT_EQ(fixedDecimals(1704067200.4, 0), "1704067200");
}

TEST(TextTest, DigestsAndBase64) {
  EXPECT_EQ(MD5SDKVelto::md5Velto(""), "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(MD5SDKVelto::md5Velto("abc"), "900150983cd24fb0d6963f7d28e17f72");
  EXPECT_EQ(base64Encode(std::string("\0a", 2)), "AGE=");
  EXPECT_EQ(base64Decode("Z m\r\nF*v"), "fao");
  EXPECT_EQ(base64Decode("Zg=="), "f");
  for (const auto* bad : {"Zg", "Zg=", "Zg==Zg==", "Z"}) EXPECT_EQ(base64Decode(bad), std::nullopt) << bad;
  EXPECT_TRUE(isValidUTF8({"a\0\xc3\xa9", 4})) << "a zero byte is text like any other";
  EXPECT_FALSE(isValidUTF8({"a\0\xff", 3}));
  EXPECT_NE(uuidString(), uuidString());
}

TEST(DateTest, CalendarDatesWithZone) {
  const auto seconds = [](const std::string& text) {
    const auto date = DateFormatterSDKVelto::parseMRAIDDate(text);
    return date ? std::optional(date->time_since_epoch().count()) : std::nullopt;
  };
  EXPECT_EQ(seconds("2024-05-01T10:30+02:00"), 1714552200);
  EXPECT_EQ(seconds("2024-05-01T10:30:15Z"), 1714559415);
  for (const auto* bad :
       {"2024-05-01", "2024-05-01T10:30", "2024-13-01T10:30Z", "2024-05-01 10:30Z", "", "2024-05-01T10:30Zx",
        "\xff", "2024-05-01T24:00Z", "2024-05-01T10:30+24:00", "2024-05-01T10:30:60Z"})
    EXPECT_EQ(seconds(bad), std::nullopt) << bad;
}

TEST(URLTest, QueryItemsAreEscapedAsQueriesAreAndNoMore) {
  const auto url = *NSURL::URLWithString("https://h.example/p?old=1#f");
  EXPECT_EQ(url.URLByReplacingQueryItems({{"a b", "x&y=z+1"}, {"p", "/?:@!$'()*,;~"}, {"u", "\xc3\xa9#%"}})
                .absoluteString(),
            "https://h.example/p?a%20b=x%26y%3Dz+1&p=/?:@!$'()*,;~&u=%C3%A9%23%25#f");
  const auto joined = [](const char* base, const char* component) {
    return NSURL::URLWithString(base)->URLByAppendingPathComponent(component).absoluteString();
  };
  EXPECT_EQ(joined("https://h.example", "sdk/"), "https://h.example/sdk/");
  EXPECT_EQ(joined("https://h.example/a/?q", "/b"), "https://h.example/a/b?q");
}

TEST(URLTest, ComponentsAndRefusals) {
  const auto url = *NSURL::URLWithString("Velto://User@Host:8443/a%20b?q=1#f");
  EXPECT_EQ(*url.scheme() + " " + *url.host() + url.path() + *url.query(), "Velto Host/a%20bq=1");
  EXPECT_EQ(url.port(), 8443);
  EXPECT_EQ(NSURL::URLWithString("www.example.org/x")->scheme(), std::nullopt);
  EXPECT_EQ(NSURL::URLWithString("https://h.example/\xc3\xa9")->absoluteString(), "https://h.example/%C3%A9");
  for (const auto* bad :
       {"", "https://a b", "https://h:99999/", "%zz", "http://[::1", "a\nb", "https://h/<x>"})
    EXPECT_EQ(NSURL::URLWithString(bad), std::nullopt) << bad;
  const std::string longPath(1 << 20, 'a');
  EXPECT_EQ(NSURL::URLWithString("https://h.example/" + longPath)->path().size(), longPath.size() + 1);
}

TEST(HeaderFieldsTest, NamesMatchWithoutRegardToCase) {
  HeaderFields fields;
  for (const auto* name : {"X-Content", "x-content"}) fields.add(name, name);
  EXPECT_EQ(fields.value("X-CONTENT"), "X-Content, x-content");
  fields.set("x-CONTENT", "c");
  EXPECT_EQ(fields.fields(), (std::vector<HeaderFields::Field>{{"X-Content", "c"}}));
}

TEST(LinkTest, OnlyARealLinkCounts) {
  const std::string part = "velto://noFillAd";
  for (const auto* text :
       {"velto://noFillAd", "<a href=\"velto://noFillAd\">", "see velto://noFillAd, please",
        "x\n(velto://noFillAd)", "https://h/?u=velto://noFillAd", "\xff velto://noFillAd \xfe",
        "\xef\xbb\xbfvelto://noFillAd", "\xc2\xa0velto://noFillAd",
        "\xe2\x80\x9cvelto://noFillAd\xe2\x80\x9d"})
    EXPECT_TRUE(containsLinkWith(text, part)) << text;
  for (const auto* text : {"", "velto:noFillAd", "Velto://nofillad", "my_velto://noFillAd",
                           "velto:// noFillAd", "\xc3\xa9velto://noFillAd"})
    EXPECT_FALSE(containsLinkWith(text, part)) << text;
}

TEST(LinkTest, HostileTextsStayLinear) {
  // Each of these takes minutes where the search looks back or ahead over and over.
  const size_t size = 5 << 20;
  for (const auto& text : {repeated("://", size / 3), repeated("_a://x", size / 6),
                           std::string(size, 'a') + "://", "x" + std::string(size, '.')})
    EXPECT_FALSE(containsLinkWith(text + " _velto://noFillAd", "velto://noFillAd"));
}

}  // namespace
}  // namespace velto
