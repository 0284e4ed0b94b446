// A document of ad breaks (VMAP 1.0.1): when content is interrupted, and where the ads for it are to be had. Plain values; any
// thread; nothing is fetched. The numbers name sections of VMAP 1.0.1.
//
//   const auto document = velto::VMAPDocument::read(text);
//   for (const auto* adBreak : document.inOrder(content.duration())) …
//   resolving = velto::resolveVMAPSource(*adBreak->source, settings, [](velto::VASTResolution found) { … });
#pragma once

#include "velto/Export.h"
#include "velto/vast/VASTDocument.h"
#include "velto/vast/VASTResolver.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velto {

// What a break's servers are told when it fails: the numbers that [ERRORCODE] stands for (2.5).
enum class VMAPError : uint16_t {
  Undefined = 1000,
  NotVMAP = 1001,
  VersionNotSupported = 1002,
  NotXML = 1003,
  BreakTypeNotSupported = 1004,  // neither "linear" nor anything else that is played here
  AdDocument = 1005,             // any other fault of the break's ads
  TemplateNotSupported = 1006,   // ads in another form than VAST
  AdDocumentUnreadable = 1007,
  AdDocumentTimeout = 1008,
  AdDocumentNotFetched = 1009,
};

// When a break is (2.3.2 timeOffset): at a time, at a share of the content, before or behind it, or at the content's own
// opportunity of that number, from 1 on.
struct VELTO_EXPORT VMAPOffset {
  enum class Kind : uint8_t { Time, Percent, Start, End, Position };
  Kind kind = Kind::Start;
  double value = 0;

  // Seconds of the content. Nothing for a position, and for what hangs on a length that is not known; a time behind
  // the end is at the end.
  std::optional<double> secondsOf(std::optional<double> duration) const;
  // "HH:MM:SS[.mmm]", "n%", "start", "end", "#n".
  static std::optional<VMAPOffset> read(std::string_view text);
  bool operator==(const VMAPOffset&) const = default;
};

// Where a break's ads are to be had (2.3.3): one of the three forms.
struct VMAPAdSource {
  std::string id;
  bool allowMultipleAds = true;          // a pod may be played
  bool followRedirects = true;           // wrappers are followed
  std::optional<VASTDocument> document;  // 2.3.3.1 VASTAdData
  std::string adTag;                     // 2.3.3.3 AdTagURI, with macros
  std::string templateType;              // of the tag: "vast", "vast3", … lower case
};

struct VELTO_EXPORT VMAPAdBreak {
  VMAPOffset offset;
  std::vector<std::string> types;  // "linear", "nonlinear", "display"; lower case
  std::string id;
  // The break comes again each so many seconds after it (2.3.2 repeatAfter).
  std::optional<double> repeatAfter;
  std::optional<VMAPAdSource> source;             // nothing: an opportunity that is only told of
  std::vector<std::string> starts, ends, errors;  // told of breakStart, breakEnd, error (2.3.4)
  std::vector<VASTExtension> extensions;          // 2.3.5

  // Why its ads cannot be played here; nothing speaks against it: nothing.
  std::optional<VMAPError> fault() const;
};

// The ads of a source, by its own rules on pods and wrappers, as VASTResolver finds them. Main thread.
[[nodiscard]] VELTO_EXPORT Handle resolveVMAPSource(const VMAPAdSource& source, VASTSettings settings,
                                                    VASTResolver::Completion completion);
// What the break is told when there were none for that reason.
VELTO_EXPORT VMAPError vmapErrorFor(VASTError error);

struct VELTO_EXPORT VMAPDocument {
  static constexpr size_t mostBreaks = 1000;

  std::string version;
  std::vector<VMAPAdBreak> breaks;  // in the document's order; those without a place are left out
  std::optional<VMAPError> error;   // set: nothing of it can be used

  // The same limits and forgiveness as VASTDocument::read.
  static VMAPDocument read(std::string_view text);

  // The breaks by their time in content of that length, equal ones as in the document. Those whose time is not known
  // (VMAPOffset::secondsOf) are left out, but for the ones behind the end, which come last.
  std::vector<const VMAPAdBreak*> inOrder(std::optional<double> duration) const;
};

}  // namespace velto
