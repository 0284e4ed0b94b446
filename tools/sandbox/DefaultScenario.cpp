// The built-in scenario: a small page of the size asked for, and keys that ask for everything else. It
// doubles as an example of the scenario format (velto-sandbox --print-scenario).
#include "sandbox/Server.h"
#include "sandbox/VideoCodes.h"

namespace velto::sandbox {
namespace {

// In two halves: the rules of video ads that fail come between them, since the first rule that matches answers.
constexpr char firstHalf[] = R"json({
  "name": "default",
  "rules": [
    {"name": "no fill", "when": {"kind": "ad", "key": "nofill"}, "answer": 204},
    {"name": "no-fill page", "when": {"kind": "ad", "key": "nofill-page"}, "answer": {
      "headers": {"Content-Type": "text/html", "x-content": "html",
                  "x-width": "{{width}}", "x-height": "{{height}}"},
      "expand": true,
      "body": "<html><body><a href=\"velto://noFillAd\">velto://noFillAd</a></body></html>"}},
    {"name": "server error", "when": {"kind": "ad", "key": "error"},
     "answer": {"status": 500, "body": "server error"}},
    {"name": "not found", "when": {"kind": "ad", "key": "notfound"},
     "answer": {"status": 404, "body": "not found"}},
    {"name": "cut connection", "when": {"kind": "ad", "key": "cut"}, "answer": {"fault": {"cut": "headers"}}},
    {"name": "page without size", "when": {"kind": "ad", "key": "nosize"}, "answer": {
      "headers": {"Content-Type": "text/html", "x-content": "html"},
      "body": "<html><body>No size</body></html>"}},
    {"name": "rich media", "when": {"kind": "ad", "key": "mraid"}, "answer": {
      "headers": {"Content-Type": "text/html", "x-content": "html",
                  "x-width": "{{width}}", "x-height": "{{height}}", "x-ttl": 3600},
      "expand": true,
      "body": [
        "<!DOCTYPE html>",
        "<html><head><meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">",
        "<script src=\"mraid.js\"></script>",
        "<style>body { margin: 0; background: #204080; font: 14px sans-serif; text-align: center }",
        "button { margin: 8px }</style></head>",
        "<body>",
        "<button onclick=\"mraid.open('https://{{host}}/landing')\">open</button>",
        "<button onclick=\"mraid.expand()\">expand</button>",
        "<button onclick=\"mraid.close()\">close</button>",
        "<script>window.onload = function () { location.href = 'velto://loadFinished'; };</script>",
        "</body></html>"]}},
    {"name": "mediation, banner", "when": {"kind": "ad", "key": "mediation", "type": "banner"}, "answer": {
      "headers": {"Content-Type": "application/json", "x-content": "mediation",
                  "x-width": "{{width}}", "x-height": "{{height}}"},
      "expand": true,
      "body": {"json": {"conn_id": "sandbox-{{count}}", "timeout": 5000, "mediation": [
        {"cn": "VeltoUnknownBannerAdapter", "t": "unknown", "n": "passed over", "e": {}},
        {"cn": "VeltoMonetizeBannerAdapter", "t": "monetize", "n": "Sandbox",
         "e": {"adunit": "banner", "timeout": 5000, "data": "eyJpdGVtIjoiYmFubmVyIn0="}}]}}}},
    {"name": "mediation, interstitial", "when": {"kind": "ad", "key": "mediation"}, "answer": {
      "headers": {"Content-Type": "application/json", "x-content": "mediation",
                  "x-width": "{{width}}", "x-height": "{{height}}"},
      "expand": true,
      "body": {"json": {"conn_id": "sandbox-{{count}}", "timeout": 5000, "mediation": [
        {"cn": "VeltoMonetizeInterstitialAdapter", "t": "monetize", "n": "Sandbox",
         "e": {"adunit": "interstitial", "timeout": 5000, "data": "eyJpdGVtIjoiaW50ZXJzdGl0aWFsIn0="}}]}}}},
    {"name": "slow ad", "when": {"kind": "ad", "key": "slow"}, "answer": {
      "delayMs": 3000,
      "headers": {"Content-Type": "text/html", "x-content": "html",
                  "x-width": "{{width}}", "x-height": "{{height}}"},
      "expand": true,
      "body": [
        "<!DOCTYPE html>",
        "<html><body style=\"margin: 0; background: #a0a0a0\">Slow",
        "<script>window.onload = function () { location.href = 'velto://loadFinished'; };</script>",
        "</body></html>"]}},
    {"name": "ad", "when": {"kind": "ad"}, "answer": {
      "headers": {"Content-Type": "text/html", "x-content": "html",
                  "x-width": "{{width}}", "x-height": "{{height}}",
                  "x-fst": 3000, "x-ttl": 3600},
      "expand": true,
      "body": [
        "<!DOCTYPE html>",
        "<html><head><meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">",
        "<style>html, body { margin: 0; height: 100% }",
        "a { display: flex; height: 100%; align-items: center; justify-content: center; background: #206040;",
        "color: white; font: 14px sans-serif; text-decoration: none }</style></head>",
        "<body><a href=\"https://{{host}}/landing?r=ord%3D{{count}}%26veltos%3Dsandbox%26veltop%3D{{key}}\">",
        "Sandbox {{type}} {{width}}&times;{{height}}, ad {{count}}</a>",
        "<script>window.onload = function () { location.href = 'velto://loadFinished'; };</script>",
        "</body></html>"]}},
    {"name": "mediation item", "when": {"kind": "mediation"}, "answer": {
      "headers": {"Content-Type": "text/html", "x-content": "html",
                  "x-width": "{{width}}", "x-height": "{{height}}"},
      "expand": true,
      "body": [
        "<!DOCTYPE html>",
        "<html><body style=\"margin: 0; background: #604020; color: white\">Mediated ad {{count}}",
        "<script>window.onload = function () { location.href = 'velto://loadFinished'; };</script>",
        "</body></html>"]}},
    {"name": "no video ad", "when": {"kind": "vast", "key": "nofill"}, "answer": {
      "headers": {"Content-Type": "application/xml"}, "body": "<VAST version=\"2.0\"/>"}},
    {"name": "video ad behind a wrapper", "when": {"kind": "vast", "key": "wrapper"}, "answer": {
      "headers": {"Content-Type": "application/xml"},
      "expand": true,
      "body": [
        "<VAST version=\"4.2\">",
        "<Ad id=\"wrapper\"><Wrapper><VASTAdTagURI>https://{{host}}/vast/inside</VASTAdTagURI>",
        "<Error>https://{{host}}/landing?error=[ERRORCODE]</Error><Impression>https://{{host}}/landing?impression=wrapper</Impression>",
        "</Wrapper></Ad>",
        "</VAST>"]}},
    {"name": "video ad inside a wrapper", "when": {"kind": "download", "path": "/vast/inside"}, "answer": {
      "headers": {"Content-Type": "application/xml"},
      "expand": true,
      "body": [
        "<VAST version=\"4.2\">",
        "<Ad id=\"inside\"><InLine><AdSystem>velto-sandbox</AdSystem><AdTitle>inside</AdTitle>",
        "<Impression>https://{{host}}/landing?impression=inside</Impression>",
        "<Creatives><Creative><Linear><Duration>00:00:05</Duration><MediaFiles>",
        "<MediaFile type=\"video/mp4\" width=\"640\" height=\"360\">https://{{host}}/video.mp4</MediaFile>",
        "</MediaFiles></Linear></Creative></Creatives></InLine></Ad>",
        "</VAST>"]}},
    {"name": "wrappers without end", "when": {"kind": "vast", "key": "endless"}, "answer": {
      "headers": {"Content-Type": "application/xml"},
      "expand": true,
      "body": [
        "<VAST version=\"4.2\">",
        "<Ad id=\"endless\"><Wrapper><VASTAdTagURI>https://{{host}}/vast/endless</VASTAdTagURI>",
        "<Error>https://{{host}}/landing?error=[ERRORCODE]</Error><Impression>https://{{host}}/landing?impression=endless</Impression>",
        "</Wrapper></Ad>",
        "</VAST>"]}},
    {"name": "one of them", "when": {"kind": "download", "path": "/vast/endless"}, "answer": {
      "headers": {"Content-Type": "application/xml"},
      "expand": true,
      "body": [
        "<VAST version=\"4.2\">",
        "<Ad id=\"endless-{{count}}\"><Wrapper><VASTAdTagURI>https://{{host}}/vast/endless</VASTAdTagURI>",
        "<Error>https://{{host}}/landing?error=[ERRORCODE]</Error><Impression>https://{{host}}/landing?impression=endless-{{count}}</Impression>",
        "</Wrapper></Ad>",
        "</VAST>"]}},
    {"name": "pod of video ads", "when": {"kind": "vast", "key": "pod"}, "answer": {
      "headers": {"Content-Type": "application/xml"},
      "expand": true,
      "body": [
        "<VAST version=\"4.2\">",
        "<Ad id=\"first\" sequence=\"1\"><InLine><AdSystem>velto-sandbox</AdSystem><AdTitle>first</AdTitle>",
        "<Impression>https://{{host}}/landing?impression=first</Impression>",
        "<Creatives><Creative><Linear><Duration>00:00:05</Duration><MediaFiles>",
        "<MediaFile type=\"video/mp4\" width=\"{{width}}\" height=\"{{height}}\">https://{{host}}/video.mp4</MediaFile>",
        "</MediaFiles></Linear></Creative></Creatives></InLine></Ad>",
        "<Ad id=\"second\" sequence=\"2\"><InLine><AdSystem>velto-sandbox</AdSystem><AdTitle>second</AdTitle>",
        "<Impression>https://{{host}}/landing?impression=second</Impression>",
        "<Creatives><Creative><Linear><Duration>00:00:05</Duration><MediaFiles>",
        "<MediaFile type=\"video/mp4\" width=\"{{width}}\" height=\"{{height}}\">https://{{host}}/video.mp4</MediaFile>",
        "</MediaFiles></Linear></Creative></Creatives></InLine></Ad>",
        "<Ad id=\"spare\"><InLine><AdSystem>velto-sandbox</AdSystem><AdTitle>spare</AdTitle>",
        "<Impression>https://{{host}}/landing?impression=spare</Impression>",
        "<Creatives><Creative><Linear><Duration>00:00:05</Duration><MediaFiles>",
        "<MediaFile type=\"video/mp4\" width=\"{{width}}\" height=\"{{height}}\">https://{{host}}/video.mp4</MediaFile>",
        "</MediaFiles></Linear></Creative></Creatives></InLine></Ad>",
        "</VAST>"]}},
    {"name": "video ad that is a program", "when": {"kind": "vast", "key": "vpaid"}, "answer": {
      "headers": {"Content-Type": "application/xml"},
      "expand": true,
      "body": [
        "<VAST version=\"4.2\">",
        "<Ad id=\"vpaid\"><InLine><AdSystem>velto-sandbox</AdSystem><AdTitle>A program</AdTitle>",
        "<Error>https://{{host}}/landing?error=[ERRORCODE]</Error><Creatives><Creative><Linear><Duration>00:00:05</Duration>",
        "<MediaFiles><MediaFile type=\"application/javascript\" apiFramework=\"VPAID\">https://{{host}}/vpaid.js</MediaFile></MediaFiles>",
        "</Linear></Creative></Creatives></InLine></Ad>",
        "</VAST>"]}},
    {"name": "video ad that is cut off", "when": {"kind": "vast", "key": "broken"}, "answer": {
      "headers": {"Content-Type": "application/xml"},
      "expand": true,
      "body": [
        "<VAST version=\"4.2\"><Ad id=\"broken\"><InLine>"]}},
)json";

constexpr char secondHalf[] = R"json(,
    {"name": "video ad", "when": {"kind": "vast"}, "answer": {
      "headers": {"Content-Type": "application/xml"},
      "expand": true,
      "body": [
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>",
        "<VAST version=\"2.0\"><Ad id=\"sandbox-{{count}}\"><InLine>",
        "<AdSystem>velto-sandbox</AdSystem><AdTitle>Sandbox video for {{key}}</AdTitle>",
        "<Impression><![CDATA[https://{{host}}/landing?impression={{count}}]]></Impression>",
        "<Creatives><Creative><Linear><Duration>00:00:15</Duration>",
        "<VideoClicks><ClickThrough><![CDATA[https://{{host}}/landing]]></ClickThrough></VideoClicks>",
        "<MediaFiles><MediaFile delivery=\"progressive\" type=\"video/mp4\" width=\"{{width}}\" height=\"{{height}}\">",
        "<![CDATA[https://{{host}}/video.mp4]]></MediaFile></MediaFiles></Linear></Creative></Creatives>",
        "</InLine></Ad></VAST>"]}},
    {"name": "landing page", "when": {"kind": "download", "path": "/landing"}, "answer": {
      "headers": {"Content-Type": "text/html"},
      "body": "<html><body>Landing page of the sandbox</body></html>"}}
  ]
})json";

}  // namespace

const char* defaultScenario() {
  static const std::string all = firstHalf + videoCodeRules() + secondHalf;
  return all.c_str();
}

}  // namespace velto::sandbox
