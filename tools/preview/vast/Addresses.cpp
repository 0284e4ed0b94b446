// The addresses of a document: what they are for, and what is wrong with them.
#include <velto/platform/foundation/NSURL.h>
#include <velto/platform/foundation/Text.h>
#include <velto/vast/VASTCreatives.h>
#include <velto/vast/VASTMacros.h>
#include <velto/vast/VASTNode.h>

#include <algorithm>
#include <array>
#include <optional>
#include <regex>
#include <set>
#include <utility>

#include "preview/Story.h"
#include "preview/vast/DocumentCheck.h"

namespace velto::preview {
namespace {

// Nodes that hold an address, and what the journal calls it. Where a person goes by a click is no part of the ad.
struct AddressNode {
  const char *node, *name;
  bool isDestination = false;
};
constexpr std::array addressNodes{AddressNode{"clickthrough", "destination", true},
                                  AddressNode{"clicktracking", "click"},
                                  AddressNode{"closedcaptionfile", "captions"},
                                  AddressNode{"companionclickthrough", "companion destination", true},
                                  AddressNode{"companionclicktracking", "companion click"},
                                  AddressNode{"customclick", "custom click"},
                                  AddressNode{"error", "error"},
                                  AddressNode{"executableresource", "program"},
                                  AddressNode{"iconclickthrough", "icon destination", true},
                                  AddressNode{"iconclicktracking", "icon click"},
                                  AddressNode{"iconviewtracking", "icon"},
                                  AddressNode{"iframeresource", "page"},
                                  AddressNode{"impression", "impression"},
                                  AddressNode{"interactivecreativefile", "program"},
                                  AddressNode{"javascriptresource", "script"},
                                  AddressNode{"mediafile", "file"},
                                  AddressNode{"nonlinearclickthrough", "overlay destination", true},
                                  AddressNode{"nonlinearclicktracking", "overlay click"},
                                  AddressNode{"notviewable", "not viewable"},
                                  AddressNode{"staticresource", "picture"},
                                  AddressNode{"survey", "survey"},
                                  AddressNode{"tracking", "tracking"},
                                  AddressNode{"vastadtaguri", "wrapper"},
                                  AddressNode{"viewable", "viewable"},
                                  AddressNode{"viewundetermined", "view undetermined"}};

// In brackets what no standard knows; and what a server should have put something in the place of.
std::optional<std::string> strangeMacro(const std::string& url) {
  static const std::regex brackets(R"((?:\[|%5[Bb])([A-Z][A-Z0-9_]{1,40})(?:\]|%5[Dd]))");
  for (std::sregex_iterator macro(url.begin(), url.end(), brackets), end; macro != end; ++macro) {
    const auto name = "[" + macro->str(1) + "]";
    if (VASTMacros().expanded(name) == name) return macro->str();
  }
  static const std::regex servers(R"(%%[A-Za-z_]{2,40}%%|\$\{[A-Za-z_.]{2,40}\}|\{\{[A-Za-z_. ]{2,40}\}\})");
  if (std::smatch found; std::regex_search(url, found, servers)) return found.str();
  return std::nullopt;
}

class AddressLook {
 public:
  explicit AddressLook(DocumentCheck& check) : check_(check) {}

  void look(const VASTNode& node) {
    std::set<std::string> told;  // among these children
    for (const auto& child : node.children) {
      const auto* kind = std::find_if(addressNodes.begin(), addressNodes.end(),
                                      [&](const auto& one) { return one.node == child.name; });
      if (kind != addressNodes.end()) {
        lookAt(child, *kind);
        if (isTold(child) && !told.insert(keyOf(child)).second)
          check_.add("vast-duplicate", child, "<" + nodeName(child.name) + "> once more: " + child.text);
      }
      // Extensions are their makers' own.
      const bool isExtension = child.name == "extension" || child.name == "creativeextension";
      if (!isExtension || isOfVerifications(child)) look(child);
    }
  }

 private:
  static bool isOfVerifications(const VASTNode& extension) {
    return lowercased(extension.attribute("type").value_or("")) == "adverifications";
  }
  static bool isTold(const VASTNode& node) {
    return !node.text.empty() && (node.name == "impression" || node.name == "tracking");
  }
  static std::string keyOf(const VASTNode& node) {
    return node.name + " " + lowercased(node.attribute("event").value_or("")) + " " +
           node.attribute("offset").value_or("") + " " + node.text;
  }

  void lookAt(const VASTNode& node, const AddressNode& kind) {
    if (node.name == "tracking") lookAtEvent(node);
    // Servers leave out what they have nothing for; an impression that nobody counts is written so.
    if (node.text.empty() || node.text == "about:blank") return;
    const auto url = vastURL(node.text);
    const auto name = "<" + nodeName(node.name) + ">: ";
    // A destination may be a telephone, or a page of the application's.
    if (kind.isDestination && node.text.find(':') != std::string::npos && url.empty()) return;
    if (const auto macro = strangeMacro(node.text))
      check_.add("vast-unknown-macro", node, *macro + " in " + node.text);
    else if (const auto wrong = faultOf(node.text, url); !wrong.empty())
      return check_.add("vast-bad-address", node, name + wrong + ": " + node.text);
    const auto host = hostOf(lowercased(url.substr(0, url.find('/', 8))));
    if (lowercased(url.substr(0, 5)) == "http:" && !kind.isDestination && !isLocal(host))
      check_.add("vast-http", node, name + url);
    const auto event = node.name == "tracking" ? node.attribute("event").value_or("") : "";
    check_.reading.addresses.push_back(
        {std::string(event.empty() ? kind.name : vastEventNamed(event)), url, node.line});
  }

  static std::string faultOf(const std::string& text, const std::string& url) {
    if (url.empty()) return "it is no http or https address";
    if (text.find_first_of(" \t\r\n") != std::string::npos) return "there are blanks in it";
    const auto address = NSURL::URLByEscaping(VASTMacros().expanded(url));
    return address && !address->host().value_or("").empty() ? "" : "it names no server";
  }

  void lookAtEvent(const VASTNode& node) {
    const auto event = node.attribute("event").value_or("");
    if (event.empty())
      check_.add("vast-unknown-event", node, "<Tracking> does not say of which event");
    else if (vastEventNamed(event).empty())
      check_.add("vast-unknown-event", node, "\"" + event + "\"");
    else if (vastEventNamed(event) == "progress" && !node.attribute("offset"))
      check_.add("vast-unknown-event", node, "\"progress\" without an offset");
  }

  DocumentCheck& check_;
};

}  // namespace

void checkAddresses(const VASTNode& root, DocumentCheck& check) {
  AddressLook(check).look(root);
}

}  // namespace velto::preview
