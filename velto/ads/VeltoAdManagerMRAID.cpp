// What rich media needs from the network after its ad is shown: the second creative and pictures.
#include "velto/ads/VeltoAdManager.h"
#include "velto/core/VeltoInspector.h"
#include "velto/network/VeltoTaskManager.h"
#include "velto/platform/AnswerOnMain.h"
#include "velto/platform/PHPhotoLibrary.h"

namespace velto {

void VeltoAdManager::fetchForSecondaryMRAIDContent(const std::string& url,
                                                   VeltoAdCompletion completionHandler) {
  shared()->fetchSecondaryMRAIDContent(url, std::move(completionHandler));
}

void VeltoAdManager::fetchForMRAIDImageContent(const std::string& url,
                                               std::function<void(bool)> completionHandler) {
  shared()->fetchMRAIDImageContent(url, std::move(completionHandler));
}

void VeltoAdManager::fetchSecondaryMRAIDContent(const std::string& url, VeltoAdCompletion completionHandler) {
  VeltoTaskManager::executeTaskForSecondaryMRAIDContent(url, [completion = std::move(completionHandler)](
                                                                 const VeltoTaskResponsePointer& response) {
    VeltoAdManagerAdResolver::handleTaskResponseForSecondMRAIDContent(
        response, [completion](const std::shared_ptr<VeltoAd>& ad, const std::optional<VeltoErrorAd>& error) {
          answerOnMain(completion, ad, error);
        });
  });
}

void VeltoAdManager::fetchMRAIDImageContent(const std::string& url,
                                            std::function<void(bool)> completionHandler) {
  VeltoTaskManager::executeTaskForDownloadData(
      url, [url, completion = std::move(completionHandler)](std::optional<std::string> data) {
        auto* platform = Platform::currentOrNull();
        if (!platform) return;
        auto& library = platform->photoLibrary();
        if (!data || library.authorizationStatus() != AuthorizationStatusAuthorized)
          return answerOnMain(completion, false);
        library.UIImageWriteToSavedPhotosAlbum(std::move(*data), url, [url, completion](bool saved) {
          inspect("picture", [&] { return JSON::Object{{"url", url}, {"saved", saved}}; });
          if (completion) completion(saved);
        });
      });
}

}  // namespace velto
