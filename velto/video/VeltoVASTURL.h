// Builds the URL of a request for a video ad (a VAST document), for applications that play video
// themselves: they fetch the document and play it. Public. A plain value; any thread, once a platform is
// installed (it needs no window).
//
//   auto request = velto::VeltoVASTURL::VASTURLforHost("video.example.com", "your-key", 1, 640, 360,
//                                                      "My Player", "https://apps.example.com/my-player");
//   request->setMaxDurationVideoSeconds(30);
//   fetch(request->stringURL().value());
//
// The privacy values are this object's own: those given to VeltoFramework are not used here.
#pragma once

#include "velto/Export.h"
#include "velto/platform/foundation/NSURL.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velto {

class VELTO_EXPORT VeltoVASTURL {
 public:
  using Numbers = std::vector<int64_t>;

  // Nothing unless all values but the position are given; they may be empty. `host` is a name, with a port if
  // need be, and `with` the player's width in points like `height`. What the position's codes mean is the
  // server's matter.
  static std::optional<VeltoVASTURL> VASTURLforHost(const std::optional<std::string>& host,
                                                    const std::optional<std::string>& veltoKey,
                                                    uint64_t videoPosition, std::optional<double> with,
                                                    std::optional<double> height,
                                                    const std::optional<std::string>& applicationName,
                                                    const std::optional<std::string>& applicationStoreURL);
  static std::optional<VeltoVASTURL> initWithURLHost(const std::optional<std::string>& host,
                                                     const std::optional<std::string>& veltoKey,
                                                     uint64_t videoPosition, std::optional<double> with,
                                                     std::optional<double> height,
                                                     const std::optional<std::string>& applicationName,
                                                     const std::optional<std::string>& applicationStoreURL);

  void setGDPROptin(bool accepted) { gdprOptin = accepted; }
  // Nothing, here and in the lists below, changes nothing.
  void setMinDurationVideoSeconds(std::optional<double> seconds);
  void setMaxDurationVideoSeconds(std::optional<double> seconds);
  void setVASTVideoFormat(const std::optional<Numbers>& formats);  // of these, 0 to 3 are kept
  void setVASTVersion(const std::optional<Numbers>& versions);     // of these, 2 and 3 are kept
  void setAppCategory(std::optional<std::string> category) { appCat = std::move(category); }
  void setGDPRConsent(std::optional<std::string> consent) { gpdr = std::move(consent); }
  void setUsPrivacy(std::optional<std::string> text) { privacy = std::move(text); }
  void setVASTPlaybackMethod(uint64_t method) { playbackMethod = method; }
  void setVPAIDAd(bool accepted) { vpaid = accepted; }
  void setVPAIDVersion(uint64_t vpaidVersion) { vpaidV = vpaidVersion; }
  void setOMSDKSupported(bool supported) { omsdk = supported; }
  void setOMSDKIdentifier(std::optional<std::string> partner) { omsdkId = std::move(partner); }
  void setOMSDKVersionString(std::optional<std::string> partnerVersion) {
    omsdkV = std::move(partnerVersion);
  }
  void setCOPPA(bool forChildren) { coppa = forChildren; }
  void setTest(bool isTest) { test = isTest; }

  // The URL, new each time; nothing when a value that must be given was taken away or the host is none.
  std::optional<NSURL> URL() const;
  std::optional<std::string> stringURL() const;

  bool gdprOptin = false;  // the user accepted that personal data is processed
  bool vpaid = false;      // interactive (VPAID) ads are accepted
  bool omsdk = false;      // the player supports Open Measurement
  bool coppa = false;      // the application is directed at children
  bool test = false;
  uint64_t urlType = 0;  // 1 for the key of a connected television; not sent
  std::optional<std::string> host;
  std::optional<std::string> veltoKey;
  uint64_t videoPosition = 0;
  std::optional<double> width, height;  // points
  std::optional<std::string> applicationName;
  std::optional<std::string> applicationStoreURL;
  double minDurationVideo = 5, maxDurationVideo = 90;  // seconds
  Numbers videoFormat{1};
  std::optional<std::string> appCat;
  std::optional<std::string> gpdr;     // the consent string
  std::optional<std::string> privacy;  // the US privacy string
  Numbers version{2};                  // of VAST
  uint64_t playbackMethod = 1;
  uint64_t vpaidV = 1;
  std::optional<std::string> omsdkId;  // partner name and version for Open Measurement
  std::optional<std::string> omsdkV;

  static bool _mandatoryParametersAreValid(const std::optional<std::string>& host,
                                           const std::optional<std::string>& veltoKey,
                                           std::optional<double> with, std::optional<double> height,
                                           const std::optional<std::string>& applicationName,
                                           const std::optional<std::string>& applicationStoreURL);
  bool _mandatoryParametersAreValid() const;
  std::optional<NSURL> _buildURL() const;
  std::vector<NSURLQueryItem> _queryParameterItems() const;
  static std::string _avoidCache();

 private:
  VeltoVASTURL() = default;
};

}  // namespace velto
