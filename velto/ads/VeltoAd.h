// A resolved ad: the one model that the presentation and everything after it receive. Made on the thread that
// resolves, then used on the main thread.
#pragma once

#include "velto/Export.h"
#include "velto/core/VeltoConstants.h"
#include "velto/network/VeltoTaskResponse.h"
#include "velto/platform/Geometry.h"
#include "velto/platform/NSNotificationCenter.h"
#include "velto/platform/SharedCallback.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace velto {

class VeltoAdMediationCoreAdapterProtocol;
class VeltoMRAIDHandler;

enum VeltoAdSourceType : uint64_t {
  VeltoAdSourceMarkup = 0,
  VeltoAdSourceMediation = 1,  // shown by an adapter
  VeltoAdSourceMRAID = 2,
};

class VELTO_EXPORT VeltoAd : public NotificationObject {
 public:
  using Headers = std::shared_ptr<VeltoTaskResponseHeaders>;

  // The timer is the headers' own.
  static std::shared_ptr<VeltoAd> adWithHTML(std::string html, std::optional<int64_t> bannerSize,
                                             Headers headers);
  // Rich-media ads get no timer.
  static std::shared_ptr<VeltoAd> adWithHTML(std::string html, std::optional<int64_t> bannerSize,
                                             Headers headers, std::optional<double> timer);
  static std::shared_ptr<VeltoAd> adWithMediation(
      std::shared_ptr<VeltoAdMediationCoreAdapterProtocol> adapter, std::optional<int64_t> bannerSize,
      Headers headers);

  bool canBeCached() const;
  // Whether this ad may answer a later fetch: only once its lifetime has run out, for the same size and key.
  bool canBeUsedFor(VeltoBannerSize size) const;
  bool isEqualAd(const VeltoAd& other) const { return identifier == other.identifier; }
  void setOrdId(std::optional<std::string> ordId, std::optional<std::string> bannerId,
                std::optional<std::string> publisherId);
  void resetAdInformations();
  std::string description() const;

  std::optional<std::string> html;
  Headers headers;
  std::optional<double> timer;  // seconds
  std::shared_ptr<VeltoAdMediationCoreAdapterProtocol> adapter;
  VeltoAdSourceType sourceType = VeltoAdSourceMarkup;
  std::optional<std::string> ordId;
  std::optional<std::string> bannerId;
  std::optional<std::string> publisherId;
  std::shared_ptr<VeltoMRAIDHandler> mraidHandler;
  // The server that answered with the markup; empty for what another network brought. Only ads of one site may ever be
  // kept together, in whatever runs them.
  std::string site;
  std::string identifier;           // a fresh UUID
  std::optional<double> createdAt;  // seconds since 1970
  std::optional<double> ttl;        // seconds
  std::optional<int64_t> bannerSize;
  std::optional<std::string> veltoKey;
  CGSize size;  // points; zero when the server did not say

 private:
  void _init(Headers headers, std::optional<int64_t> bannerSize, std::optional<double> timer);
};

// Answers who asked for an ad: with one, or with an error.
using VeltoAdCompletion = SharedCallback<std::shared_ptr<VeltoAd>, std::optional<VeltoErrorAd>>;

}  // namespace velto
