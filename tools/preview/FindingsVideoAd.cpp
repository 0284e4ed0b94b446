// What the document of a video ad says wrongly. The places are found as it is read (vast/DocumentReading.h).
#include <algorithm>
#include <array>

#include "preview/Findings.h"

namespace velto::preview {
namespace {

template <size_t length>
struct RuleName {
  constexpr RuleName(const char (&name)[length]) { std::copy_n(name, length, text); }
  char text[length];
};

// What is said of a wrapper's answer names it.
template <RuleName name>
Evidence placesOf(const Story& story) {
  const auto* outermost = story.of("document").empty() ? nullptr : story.of("document").front();
  JSON::Array places;
  for (const auto* fault : story.of("fault")) {
    if (textIn(*fault, "id") != name.text) continue;
    JSON::Object place{{"text", textIn(*fault, "text")}};
    if (fault->contains("line")) place["line"] = numberIn(*fault, "line");
    if (const auto document = textIn(*fault, "document"); outermost && document != textIn(*outermost, "url"))
      place["document"] = story.shortAddress(document);
    places.emplace_back(std::move(place));
  }
  if (places.empty()) return std::nullopt;
  return JSON::Object{{"places", std::move(places)}};
}

template <RuleName name>
constexpr Rule ruleOf(Severity severity, const char* text, const char* why, const char* mend,
                      const char* fine) {
  return {name.text, severity, text, why, mend, fine, placesOf<name>};
}

constexpr std::array videoAdTable{
    ruleOf<"vast-not-xml">(
        Severity::Error, "The document cannot be read as XML.", "No player plays it: error 100.",
        "Look at the line that is named: a tag that is not closed, a document that is cut off.",
        "Names in another case, and ampersands that nobody escaped, which have findings of their own."),
    ruleOf<"vast-not-vast">(Severity::Error, "The document is XML, but no VAST.",
                            "No player plays it: error 101.", "Its root is <VAST version=\"…\">.",
                            "A root in another case, or with a prefix."),
    ruleOf<"vast-version">(Severity::Error, "The document is of a version that players do not read.",
                           "No player plays it: error 102.", "Write VAST 3.0 or 4.2.", "VAST 2.0 to 4.x."),
    ruleOf<"vast-version-missing">(Severity::Warning, "The document does not say its version.",
                                   "Players have to guess what it may hold, and some refuse it.",
                                   "Write <VAST version=\"4.2\">, or whichever it is.",
                                   "A version with blanks around it."),
    ruleOf<"vast-no-ad">(Severity::Warning, "The document holds no ad.", "Nothing is shown: error 303.",
                         "Ask the ad server why. It may have none for this place, device or country.",
                         "An ad whose film cannot be played, which has findings of its own."),
    ruleOf<"vast-missing-node">(Severity::Error, "Something lacks that no ad can do without.",
                                "Players refuse the ad, or nobody is told that it was shown.",
                                "Add what is named; an impression that nobody counts is about:blank.",
                                "A wrapper without creatives."),
    ruleOf<"vast-missing-detail">(
        Severity::Warning, "Something lacks that the stated version asks for.",
        "Buyers and reports tell ads apart by it, and strict players refuse the ad.",
        "Add what is named, or state the version that the document keeps to.",
        "What only later versions ask for."),
    ruleOf<"vast-time">(Severity::Warning, "A time is not written as HH:MM:SS or HH:MM:SS.mmm.",
                        "Players read it differently, or not at all.",
                        "Write 00:00:15, or 00:00:15.500; offsets may be 25%.",
                        "Milliseconds, and shares in offsets."),
    ruleOf<"vast-offset-after-end">(Severity::Warning, "Something is to happen after the film's end.",
                                    "It never does: nobody can skip, or nobody is told.",
                                    "Compare it with <Duration>.", "An offset at the very end."),
    ruleOf<"vast-unknown-event">(Severity::Warning, "A tracking is of no event that there is.",
                                 "It is never told.", "Look at its spelling; \"progress\" needs an offset.",
                                 "Events of other versions, and in another case."),
    ruleOf<"vast-duplicate">(Severity::Warning, "The same address is told of the same thing more than once.",
                             "Its server counts twice.", "Take one of them out.",
                             "One address for several events, and two offsets of progress."),
    ruleOf<"vast-no-error-address">(Severity::Notice, "Nobody is told when the ad fails.",
                                    "What goes wrong on people's devices stays unknown.",
                                    "Add <Error> with an address that holds [ERRORCODE].",
                                    "One for all of an ad."),
    ruleOf<"vast-click-nowhere">(Severity::Warning, "A click is counted that leads nowhere.",
                                 "A press on the ad does nothing, and so is not counted either.",
                                 "Add <ClickThrough>, or take <ClickTracking> out.",
                                 "A film without clicks; a wrapper's <ClickTracking>."),
    ruleOf<"vast-http">(Severity::Warning, "Something is fetched or told by plain http.",
                        "Anybody on the way can read and change it, and many players refuse it.",
                        "Use https addresses.", "Where a click leads to; addresses of this machine."),
    ruleOf<"vast-bad-address">(Severity::Error, "What should be an address is none.",
                               "It is neither fetched nor told.",
                               "Write it whole, with https:// and its server.",
                               "A click that leads to a telephone or an application; an empty node."),
    ruleOf<"vast-unknown-macro">(
        Severity::Warning, "An address holds a macro that no player knows.",
        "It reaches its server as it stands.",
        "Look at its spelling, and whether the ad server should have put something in its place.",
        "Macros of VAST 4.2 in brackets; an IPv6 address."),
    ruleOf<"vast-no-playable-file">(
        Severity::Error, "None of the ad's files plays on this machine.", "Nothing is shown: error 403.",
        "Offer H.264 as MP4, or WebM. H.264 plays here once gstreamer1.0-libav is installed.",
        "One file among others that plays."),
    ruleOf<"vast-mezzanine-only">(Severity::Error, "The ad has only a mezzanine file.",
                                  "That is the master for those who make files, and not played.",
                                  "Add <MediaFile> in sizes that players take.",
                                  "A mezzanine file beside others."),
    ruleOf<"vast-uncommon-files">(Severity::Warning,
                                  "None of the ad's files is of a kind that nearly all players play.",
                                  "On other devices nothing is shown.", "Add H.264 as MP4.",
                                  "H.264 as MP4, or WebM; ads that are sound."),
    ruleOf<"vast-media-attributes">(Severity::Warning, "A file does not say all that players choose by.",
                                    "A player may pass it over, or take one that is too large.",
                                    "Write delivery, type, width and height.",
                                    "A file of sound without a size."),
    ruleOf<"vast-program">(
        Severity::Warning, "The ad holds a program (VPAID, SIMID), and no film that plays here.",
        "This library and most players run no programs: nothing is shown.",
        "Offer the film itself as a file.", "Open Measurement scripts; a program beside a film."),
    ruleOf<"vast-program-beside">(Severity::Notice, "The ad holds a program (VPAID, SIMID) beside its film.",
                                  "This library and most players do not run it, and play the film alone.",
                                  "See to it that the film tells enough by itself.",
                                  "Open Measurement scripts."),
    ruleOf<"vast-non-linear">(Severity::Notice, "The ad has overlays (non-linear ads).",
                              "This library does not draw them.", "See to it that there is a film.",
                              "Icons and companions."),
    ruleOf<"vast-companion">(Severity::Warning, "A companion cannot be shown as it should be.",
                             "Its place beside the film stays empty.",
                             "Give it a resource, its kind, and a size of at most 1,920 points.",
                             "A companion without a click."),
    ruleOf<"vast-icon">(Severity::Warning, "An icon cannot be shown as it should be.",
                        "It is missing, made smaller or moved, and may be what the law wants to be seen.",
                        "Give it a resource, at most 100 points a side, and a place within the film.",
                        "An icon at the film's edge."),
    ruleOf<"vast-verification">(Severity::Warning, "A verification cannot be run.",
                                "Nobody measures the ad for it, and its server is told so, if at all.",
                                "Name the vendor, and a JavaScriptResource with apiFramework=\"omid\".",
                                "A verification without parameters, or with a program beside its script."),
    ruleOf<"vast-wrapper-loop">(Severity::Error, "Wrappers lead back to themselves, or are too many.",
                                "Players give up: error 302.", "Leave some of them out.",
                                "Five, one inside another."),
    ruleOf<"vast-many-wrappers">(Severity::Notice, "More than three wrappers stand around the ad.",
                                 "Each takes its time, in which the person waits.", "Leave some of them out.",
                                 "Three."),
    ruleOf<"vast-too-large">(Severity::Warning, "The document is larger than 100 KiB.",
                             "It is loaded before anything can be seen.",
                             "Look for markup in companions and extensions that could be fetched later.",
                             "100 KiB."),
    ruleOf<"vast-ampersand">(Severity::Warning, "An ampersand stands by itself.",
                             "XML does not allow it: strict players refuse all of the document.",
                             "Put addresses into CDATA, or write &amp;.", "&amp; without CDATA."),
    ruleOf<"vast-case">(Severity::Notice, "A node's name is written in another case.",
                        "Strict players do not find it.", "Write it as it is named here.",
                        "Nodes of extensions, which are their makers' own."),
};

}  // namespace

std::span<const Rule> videoAdRules() {
  return videoAdTable;
}

}  // namespace velto::preview
