// What each name of a request means, beside the requests themselves.
#include "Facts.h"

#include "velto/core/VeltoConstants.h"
#include "velto/network/VeltoDevice.h"
#include "velto/network/VeltoTaskRequest.h"
#include "velto/platform/Clock.h"
#include "velto/platform/EKEventStore.h"
#include "velto/platform/PHPhotoLibrary.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"
#include "velto/platform/foundation/NSURL.h"
#include "velto/platform/foundation/Text.h"
#include "velto/tracking/VeltoTrackText.h"
#include "velto/video/VeltoVASTURL.h"

#include <array>
#include <map>

namespace velto::info {
namespace {

struct Note {
  const char* meaning;
  const char* source;
  const char* gate = "";
};

constexpr char always[] = "always the same";
constexpr char application[] = "the application";
constexpr char store[] = "the application's store";
constexpr char firmware[] = "firmware tables, device tree or processor";
constexpr char host[] = "machine-info or host name";
constexpr char chassis[] = "machine-info, firmware tables or device tree";
constexpr char release[] = "os-release";
constexpr char monitor[] = "first monitor (GDK)";
constexpr char language[] = "the process's locale";
constexpr char modem[] = "ModemManager";
constexpr char geoClue[] = "GeoClue, the application's own client";
constexpr char userAllows[] = "the user: velto-adid";
constexpr char placeAllowed[] = "the user, whom the application asked for the place";
constexpr char applicationSays[] = "the application, which asked the user";

const std::map<std::string, Note>& adNotes() {
  static const std::map<std::string, Note> notes{
      {"ts", {"time of the request", "clock"}},
      {"k", {"publisher key", store}},
      {"test", {"test mode", store}},
      {"at", {"kind of ad", application}},
      {"fsz", {"size of the banner", application}},
      {"sdkt", {"platform of the application", store}},
      {"sdkv", {"version of the library", always}},
      {"mraid", {"rich-media version", always}},
      {"omsdk", {"measurement version", always}},
      {"gadapt", {"whether another network's adapter is there", application}},
      {"aid", {"advertising identifier", "the user's configuration", userAllows}},
      {"aida", {"fingerprint of the device", "name, machine, system, carrier and screen"}},
      {"aidl", {"whether tracking is limited", "the user's configuration"}},
      {"dmn", {"maker", always}},
      {"dmo", {"machine", firmware}},
      {"dmp", {"kind of case", chassis}},
      {"dos", {"system", always}},
      {"dov", {"version of the system", release}},
      {"dsw", {"width of the screen, points", monitor}},
      {"dsh", {"height of the screen, points", monitor}},
      {"dsd", {"pixels a point", monitor}},
      {"dua", {"user agent", "the web engine, else made of the device"}},
      {"dln", {"language", language}},
      {"dct", {"connection", always}},
      {"dctd", {"generation of the connection", "NetworkManager and ModemManager"}},
      {"soc", {"carrier's network code", modem}},
      {"noc", {"carrier's network code", modem}},
      {"son", {"carrier's name", modem}},
      {"non", {"carrier's name", modem}},
      {"ncc", {"carrier's country code", modem}},
      {"scc", {"carrier's country code", modem}},
      {"aln", {"language of the application", application}},
      {"ab", {"identifier of the application", application}},
      {"an", {"name of the application", application}},
      {"geo", {"place", geoClue, placeAllowed}},
      {"ga", {"accuracy of the place, metres", geoClue, placeAllowed}},
      {"gf", {"time of the place", geoClue, placeAllowed}},
      {"gz", {"time zone", "the system's time zone"}},
      {"mediator", {"mediating network", application}},
      {"okw", {"keywords", application}},
      {"oyob", {"year of birth", application}},
      {"oage", {"age", application}},
      {"ogender", {"gender", application}},
      {"omarital", {"marital status", application}},
      {"gdpr_opt", {"whether personal data may be used", store}},
      {"gdpr_consent", {"consent text", store}},
      {"gdpr_dc", {"whether personal data may be used", store}},
      {"us_privacy", {"privacy text", store}},
  };
  return notes;
}

const std::map<std::string, Note>& videoNotes() {
  static const std::map<std::string, Note> notes{
      {"key", {"publisher key", application}},
      {"os", {"system", always}},
      {"ov", {"version of the system", release}},
      {"ip", {"address in the local network", "network interfaces"}},
      {"source", {"kind of traffic", always}},
      {"ab", {"identifier of the application", application}},
      {"vpos", {"position of the video", application}},
      {"vw", {"width of the player", application}},
      {"vh", {"height of the player", application}},
      {"vmin", {"shortest video", application}},
      {"vmax", {"longest video", application}},
      {"vfmt", {"video formats", application}},
      {"an", {"name of the application", application}},
      {"url", {"page of the application", application}},
      {"aid", {"advertising identifier", "the user's configuration", userAllows}},
      {"cb", {"random digits", "chance"}},
      {"gdpr_optin", {"whether personal data may be used", application}},
      {"gdpr_consent", {"consent text", application}},
      {"us_privacy", {"privacy text", application}},
      {"aidl", {"whether tracking is limited", "the user's configuration"}},
      {"ua", {"user agent", "the web engine, else made of the device"}},
      {"lat", {"place, degrees north", geoClue, placeAllowed}},
      {"lon", {"place, degrees east", geoClue, placeAllowed}},
      {"vvers", {"video ad versions", application}},
      {"acat", {"category of the application", application}},
      {"vpaid", {"interactive video", application}},
      {"vapi", {"interactive video versions", application}},
      {"vplay", {"how playback starts", application}},
      {"secure", {"only secure addresses", always}},
      {"omsdk", {"whether the player measures", application}},
      {"omidpn", {"who measures", application}},
      {"omidpv", {"version of who measures", application}},
      {"coppa", {"whether children are addressed", application}},
      {"mn", {"maker", always}},
      {"mo", {"machine", firmware}},
      {"dw", {"width of the screen, points", monitor}},
      {"dh", {"height of the screen, points", monitor}},
      {"dd", {"pixels a point", monitor}},
      {"ln", {"language", language}},
      {"ct", {"connection", always}},
      {"cc", {"locale", language}},
      {"son", {"carrier's name", modem}},
      {"non", {"carrier's name", modem}},
      {"soc", {"carrier's country and network code", modem}},
      {"noc", {"carrier's country and network code", modem}},
      {"scc", {"carrier's country code", modem}},
      {"ncc", {"carrier's country code", modem}},
      {"test", {"test mode", application}},
  };
  return notes;
}

using Values = std::vector<std::pair<std::string, std::optional<std::string>>>;

// The values with their notes, then the notes for which there is no value now.
void add(std::vector<Fact>& facts, const char* request, const Values& values,
         const std::map<std::string, Note>& notes) {
  std::map<std::string, Note> missing = notes;
  const auto addOne = [&](const std::string& name, const std::optional<std::string>& value,
                          const Note& note) {
    facts.push_back({request, name, value, note.meaning, note.source, note.gate});
  };
  for (const auto& [name, value] : values) {
    const auto note = notes.find(name);
    addOne(name, value, note == notes.end() ? Note{"", ""} : note->second);
    missing.erase(name);
  }
  for (const auto& [name, note] : missing) addOne(name, std::nullopt, note);
}

Values adValues() {
  Values values;
  for (const auto& item : VeltoTaskRequest::queryParameterItemsFor(VeltoAdTypeBanner, VeltoBannerSize320x50))
    values.emplace_back(item.name, item.value);
  for (const auto& [name, value] : VeltoTaskRequest::_postParametersForSettings(std::nullopt)) {
    const auto* text = value.string();
    values.emplace_back(name, text ? *text : writeJSON(value, false));
  }
  return values;
}

// What the application says itself stays out.
Values videoValues() {
  Values values;
  const auto url = VeltoVASTURL::VASTURLforHost("video.invalid", "", 0, 0, 0, "", "");
  for (const auto& item : url.value()._queryParameterItems()) {
    const auto note = videoNotes().find(item.name);
    if (note == videoNotes().end() || note->second.source != application)
      values.emplace_back(item.name, item.value);
  }
  return values;
}

void addTrack(std::vector<Fact>& facts) {
  static constexpr std::array<std::pair<const char*, Note>, 10> fields{{
      {"name", {"name of the device", host}},
      {"os", {"system", always}},
      {"version", {"version of the system", release}},
      {"family", {"kind of case", chassis}},
      {"machine", {"machine", firmware}},
      {"locale", {"locale", language}},
      {"language", {"language", language}},
      {"carrier", {"carrier's name", modem}},
      {"boot", {"when the system was started", "the kernel"}},
      {"time", {"time of the event", "clock"}},
  }};
  const auto texts =
      split(VeltoTrackText::_deviceIdentifier(Platform::current().clock().secondsSince1970()), "|");
  for (size_t i = 0; i < fields.size() && i < texts.size(); ++i) {
    const auto& [name, note] = fields[i];
    facts.push_back({"track", name, texts[i].empty() ? std::nullopt : std::optional(texts[i]), note.meaning,
                     note.source, note.gate});
  }
}

void addPage(std::vector<Fact>& facts) {
  auto& platform = Platform::current();
  const auto word = [](bool flag) { return std::string(flag ? "true" : "false"); };
  const auto opens = [&](const char* url) {
    return word(platform.application().canOpenURL(*NSURL::URLWithString(url)));
  };
  const auto isAuthorized = [](AuthorizationStatus status) {
    return status == AuthorizationStatusAuthorized;
  };
  const auto size = VeltoDevice::screenSize();
  const auto latitude = VeltoDevice::locationLatitude(), longitude = VeltoDevice::locationLongitude();
  const auto place = latitude && longitude
                         ? std::optional(fixedDecimals(*latitude, 6) + "," + fixedDecimals(*longitude, 6))
                         : std::nullopt;
  const bool calendar =
      isAuthorized(platform.eventStore().authorizationStatusForEntityType(EKEntityType::Event));
  const bool pictures = isAuthorized(platform.photoLibrary().authorizationStatus());
  // Pages have always been told of one under the other's name.
  for (auto& fact : std::vector<Fact>{
           {"page", "screen", fixedDecimals(size.width, 2) + "x" + fixedDecimals(size.height, 2),
            "size of the screen, points", monitor, ""},
           {"page", "location", place, "place", geoClue, placeAllowed},
           {"page", "sms", opens("tel://1"), "whether calls can be made", "applications for the scheme", ""},
           {"page", "tel", opens("sms://1"), "whether messages can be sent", "applications for the scheme",
            ""},
           {"page", "calendar", word(calendar), "whether events can be added", application, applicationSays},
           {"page", "storePicture", word(pictures), "whether pictures can be stored", application,
            applicationSays}})
    facts.push_back(std::move(fact));
}

}  // namespace

std::vector<Fact> facts() {
  std::vector<Fact> all;
  add(all, "ad", adValues(), adNotes());
  add(all, "video", videoValues(), videoNotes());
  addTrack(all);
  addPage(all);
  return all;
}

}  // namespace velto::info
