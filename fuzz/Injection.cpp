// Injection of the service script: any markup that is not blank gets it once, whole and in front of the first
// tag that a head does not come before, and stays what it was otherwise.
#include "velto/headless/VeltoHeadless.h"
#include "velto/measurement/OMIDVeltoSDK.h"
#include "velto/measurement/OMIDVeltoScriptInjector.h"

#include "Check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const auto platform = velto::headless::Platform::install();
  velto::OMIDVeltoSDK::sharedInstance()->activate();
  static const std::string tag = "<script>\x01service\x01</script>";
  const std::string html(asText(data, size));
  const auto injected = velto::OMIDVeltoScriptInjector::injectScriptContent("\x01service\x01", html, nullptr);
  require(injected.has_value() == !velto::OMIDVeltoIsBlank(html));
  if (!injected || html.find('\x01') != std::string::npos) return 0;
  const size_t place = injected->find(tag);
  require(place != std::string::npos);
  require(injected->substr(0, place) + injected->substr(place + tag.size()) == html);
  if (html.find("<!") == std::string::npos && html.find("<?") == std::string::npos) {
    const size_t script = html.find("<script>");
    // In a tag that is not closed, or that has attributes, a script may be mere text.
    const std::string before = html.substr(0, script);
    const bool maybeText =
        before.find('=') != std::string::npos || before.rfind('<') + 1 > before.rfind('>') + 1;
    require(script == std::string::npos || maybeText || place <= script);
  }
  return 0;
}
