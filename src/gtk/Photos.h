// The pictures of the Linux platform. So far they are kept in memory, and gone with the process. Any thread.
#pragma once

#include "velto/platform/MainQueue.h"
#include "velto/platform/PHPhotoLibrary.h"

#include <mutex>
#include <string>
#include <vector>

namespace velto::gtk {

class Photos : public PHPhotoLibrary {
 public:
  struct Picture {
    std::string bytes;
    std::string address;
  };

  Photos(MainQueue& mainQueue, bool granted) : mainQueue_(mainQueue), granted_(granted) {}

  AuthorizationStatus authorizationStatus() const override {
    return granted_ ? AuthorizationStatusAuthorized : AuthorizationStatusNotDetermined;
  }
  void UIImageWriteToSavedPhotosAlbum(std::string bytes, std::string address,
                                      std::function<void(bool)> completion) override;
  std::vector<Picture> pictures() const;

 private:
  MainQueue& mainQueue_;
  bool granted_;
  mutable std::mutex mutex_;
  std::vector<Picture> pictures_;
};

}  // namespace velto::gtk
