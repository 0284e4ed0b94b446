// The table that documents, errors and tools share.
#include "velto/timeline/VeltoAdEndReason.h"

#include <iterator>

namespace velto {
namespace {

using Why = VeltoAdEndReason;
constexpr int64_t noFill = 0, server = 1, developer = 2, noConnection = 4;
constexpr std::nullopt_t noError = std::nullopt;

constexpr VeltoAdEndReasonWords table[] = {
    {Why::NoServerAddress, developer, "no-server-address",
     "The endpoint makes no address to send the request to.",
     "Pass setEndpoint() the bare name of your endpoint, or none."},
    {Why::BadRequestValue, developer, "bad-request-value",
     "A size, type or setting is outside its enumeration, or a value that must be sent is missing.",
     "Use the named constants for size, gender and marital status."},

    {Why::Offline, noConnection, "offline", "The device has no network.",
     "Load again when the network is back; a refreshing banner does so by itself."},
    {Why::NameNotFound, noConnection, "name-not-found", "The server's name has no address.",
     "Check the endpoint, the device's name server, and host mappings meant for tests."},
    {Why::NotConnected, noConnection, "not-connected", "Nobody accepted the connection.",
     "Check firewalls and proxies; in tests, that the sandbox listens on that port."},
    {Why::Untrusted, noConnection, "untrusted", "The server's certificate is not trusted.",
     "Check the device's clock and certificates; in tests, that caFile names the sandbox's authority."},
    {Why::SecureConnectionFailed, noConnection, "secure-connection-failed", "The TLS handshake failed.",
     "Look for a proxy that speaks no TLS 1.2 or later."},
    {Why::TimedOut, noConnection, "timed-out", "Nothing came within the request's time.",
     "Usually a slow network: load again later. Options::requestTimeout is how long is waited."},
    {Why::ConnectionLost, noConnection, "connection-lost",
     "The connection ended before all of the answer was there.",
     "Load again; if it stays so, look at proxies on the way."},
    {Why::AnswerTooLarge, noConnection, "answer-too-large", "The answer was longer than allowed.",
     "Tell your account manager which ad it was: no ad is that long."},
    {Why::RedirectRefused, noConnection, "redirect-refused",
     "The server sent the request on to a place that is not followed: too often, or out of https.",
     "Check the endpoint and captive portals."},
    {Why::TransportFailed, noConnection, "transport-failed", "The exchange failed in another way.",
     "The error underneath says which."},

    {Why::StatusNoFill, noFill, "status-no-fill", "The server had no ad (status 204).",
     "Normal. If it never has one, check key, size and consent, or try test mode."},
    {Why::StatusServerError, server, "status-server-error", "The server failed (status 500).",
     "Load again later; report it if it lasts."},
    {Why::StatusUnexpected, developer, "status-unexpected",
     "The server answered with a status that no ad comes with.",
     "Check key and endpoint: a wrong one mostly gives 400, 403 or 404."},
    {Why::AnswerWithoutData, server, "answer-without-data", "The answer carried no data at all.",
     "Load again later; report it if it lasts."},
    {Why::AnswerNotHTTP, server, "answer-not-http", "The answer was none of HTTP.", "Check the endpoint."},
    {Why::KindMissing, server, "kind-missing",
     "The answer says neither by x-content nor by its content type what it is.",
     "Of a server of your own: send x-content, or exactly text/html as content type."},
    {Why::KindUnknown, server, "kind-unknown",
     "The answer's x-content is a word that the library does not know.",
     "Of a server of your own: html, mediation or no_fill."},
    {Why::SizeMissing, server, "size-missing",
     "The answer lacks x-width or x-height, or they are no numbers.",
     "Of a server of your own: send both, with every answer."},
    {Why::HeaderNoFill, noFill, "header-no-fill", "The server had no ad (x-content: no_fill).",
     "Normal. If it never has one, check key, size and consent, or try test mode."},
    {Why::VideoAnswer, noFill, "video-answer",
     "The server answered with a video document, which is not shown here.",
     "Ask for video ads by VeltoVASTURL, and have them taken out of this placement."},
    {Why::BodyNotText, noFill, "body-not-text", "The answer's body is not UTF-8 text.",
     "Of a server of your own: send UTF-8, and compress only as Content-Encoding says."},
    {Why::MarkupNoFill, noFill, "markup-no-fill", "The page says itself that it holds no ad.",
     "Normal, as for a server without an ad."},

    {Why::InstructionsUnreadable, server, "instructions-unreadable",
     "The mediation instructions are no JSON object.", "Report it, with the time of the load."},
    {Why::InstructionsEmpty, server, "instructions-empty", "The mediation instructions name no network.",
     "Add a network to this placement's waterfall."},
    {Why::NobodyFilled, noFill, "nobody-filled", "No network of the mediation instructions had an ad.",
     "The timeline tells for each why it was passed over."},
    {Why::ItemNotInList, developer, "item-not-in-list", "The walk along the networks lost its place.",
     "Report it, with the timeline."},
    {Why::AdapterUnknown, developer, "adapter-unknown", "No adapter is registered for the network.",
     "Register its adapter before the load, or take the network out of the waterfall."},
    {Why::ItemWithoutData, developer, "item-without-data",
     "The network's item lacks the data that its adapter needs.",
     "Check how the network is set up for this placement."},
    {Why::AdapterNeverAnswered, noError, "adapter-never-answered",
     "An adapter let go of its question without an answer.",
     "Mend the adapter: it has to call its completion once, also when it has nothing."},
    {Why::AdapterTakesNoController, developer, "adapter-takes-no-controller",
     "The adapter of the ad takes no root view controller, so its ad cannot be shown.",
     "Have the adapter return itself as rootViewControllerUser()."},
    {Why::AdapterWithoutView, developer, "adapter-without-view",
     "The adapter brought a banner without a view.", "Have the adapter answer once its view is there."},
    {Why::AdapterOfOtherKind, developer, "adapter-of-other-kind",
     "The adapter's ad is a banner for an interstitial, or the other way round.",
     "Check the adapter names of this placement's waterfall."},
    {Why::AdapterFailed, server, "adapter-failed", "The adapter said that its ad has failed.",
     "Ask the network; the library only passes it on."},
    {Why::AdapterShowedNothing, noError, "adapter-showed-nothing",
     "The adapter had its turn and presented nothing for ten seconds.",
     "Have the adapter present from the controller that it is given."},

    {Why::HostGone, developer, "host-gone", "The delegate has no view controller to show the ad in.",
     "Keep delegate and host view controller alive, and answer presentViewController()."},
    {Why::ContainerGone, developer, "container-gone", "The view that the banner was to stand in has gone.",
     "Keep the view as long as the banner, or make a new banner with the new view."},
    {Why::ContainerElsewhere, developer, "container-elsewhere",
     "The view that the banner was to stand in is not inside the host's view controller.",
     "Give a view of the same window and controller as presentViewController()."},
    {Why::PresentationRefused, developer, "presentation-refused",
     "The screen was not taken: its window is hidden, or shows another screen.",
     "Show interstitials while their window is on the screen, one at a time."},
    {Why::NothingReady, developer, "nothing-ready", "No interstitial is ready.",
     "Wait for DidFinishLoad, or ask isReady()."},
    {Why::AdEmpty, developer, "ad-empty", "The ad that is ready has no markup.", "Load another."},
    {Why::PresentedAlready, developer, "presented-already", "The interstitial is on the screen already.",
     "Wait until it was dismissed."},
    {Why::WindowNotOnScreen, developer, "window-not-on-screen",
     "The window to show it over is not on the screen.", "Present the window first."},
    {Why::WindowBusy, developer, "window-busy", "The window shows another screen.",
     "Wait until that one has gone."},

    {Why::EngineUnavailable, server, "engine-unavailable",
     "The web engine cannot start its processes here, so no page can be shown.",
     "Install bubblewrap and xdg-dbus-proxy, and allow user namespaces."},
    {Why::PageFailed, server, "page-failed", "The ad's page could not be loaded.",
     "The error underneath is the engine's. Try the markup in velto-preview."},
    {Why::PageUntrusted, server, "page-untrusted",
     "The ad's page led to a server whose certificate is not trusted.", "Report the ad."},
    {Why::PageProcessCrashed, server, "page-process-crashed", "The web process of the ad crashed.",
     "Report the ad, and check that the web engine is up to date."},
    {Why::PageProcessOutOfMemory, server, "page-process-out-of-memory",
     "The web process of the ad took too much memory.", "Report the ad."},
    {Why::PageProcessEnded, server, "page-process-ended", "The web process of the ad was ended.",
     "Look for what ends processes on the device, such as a memory guard."},
    {Why::PageProcessHung, server, "page-process-hung",
     "The web process of the ad gave no answer for 5 seconds, and was ended.",
     "Report the ad: its scripts have an endless loop, or work that takes too long."},
    {Why::PageGaveUp, noError, "page-gave-up", "The page said that it has failed (velto://failLoad).",
     "Normal for ads that find out late that they have nothing to show."},
    {Why::PageNeverLoaded, noError, "page-never-loaded",
     "The page never said velto://loadFinished, and another load took its place.",
     "Of markup of your own: navigate to velto://loadFinished. Else report the ad."},
    {Why::PageLeft, noError, "page-left", "The page asked to be closed.", "Normal for rich media."},
    {Why::PageTooHeavy, noError, "page-too-heavy",
     "The page cost the device too much, and heavy ads are to be replaced.",
     "Report the ad: the entry heavy in its timeline tells the limit that it crossed."},

    {Why::VideoWithoutAd, noError, "video-without-ad", "The server had no video ad.", "Normal."},
    {Why::VideoDocumentFailed, noError, "video-document-failed",
     "The document of the video ads, or one that it led to, cannot be used.",
     "The entries document-answered and video-failed in its timeline have the code. Try it in "
     "velto-preview."},
    {Why::VideoFileFailed, noError, "video-file-failed", "None of the video ads could be played.",
     "The entries file-tried and video-failed in its timeline have types and codes; see what this machine "
     "decodes."},
    {Why::VideoOver, noError, "video-over", "The video ads were played, or skipped by a person.", "Normal."},

    {Why::Refreshed, noError, "refreshed", "A refresh brought the next ad.", "Normal."},
    {Why::RefreshWithoutAd, noError, "refresh-without-ad",
     "Its time was over, and the refresh brought no ad.",
     "Normal. The timeline of the refresh tells why there was none."},
    {Why::LoadedAnew, noError, "loaded-anew", "The application loaded another ad.", "Normal."},
    {Why::NeverShown, noError, "never-shown", "The ad was ready, and the next one came before it was shown.",
     "Load the next ad after this one was shown."},
    {Why::Removed, noError, "removed", "The application took the ad off the screen.", "Normal."},
    {Why::ClosedByPerson, noError, "closed-by-person", "A person closed the ad.", "Normal."},
    {Why::ClosedByAdapter, noError, "closed-by-adapter", "The adapter said that its ad was closed.",
     "Normal."},
    {Why::ControllerGone, noError, "controller-gone", "The application let go of the ad's object.",
     "Normal. If ads never come, hold it in a member as long as ads are to be shown."},
    {Why::PlatformGone, noError, "platform-gone", "The platform was uninstalled.",
     "Normal at an application's end."},
    {Why::Unexplained, noError, "unexplained", "An adapter failed, and its error says no more than its code.",
     "Ask the network."},
};

constexpr bool isInOrder() {
  for (size_t i = 0; i < std::size(table); ++i)
    if (table[i].reason != static_cast<Why>(i)) return false;
  return std::size(table) == static_cast<size_t>(Why::Unexplained) + 1;
}
static_assert(isInOrder());

}  // namespace

std::span<const VeltoAdEndReasonWords> veltoAdEndReasons() {
  return table;
}

const VeltoAdEndReasonWords& wordsOf(VeltoAdEndReason reason) {
  return table[static_cast<size_t>(reason)];
}

}  // namespace velto
