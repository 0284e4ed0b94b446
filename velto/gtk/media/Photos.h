// The user's pictures: files in the pictures folder (XDG user directories). Any thread.
#pragma once

#include "velto/gtk/Background.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/PHPhotoLibrary.h"

#include <atomic>
#include <filesystem>
#include <optional>
#include <string>

namespace velto::gtk {

class Photos : public PHPhotoLibrary {
 public:
  // Pictures are decoded and written on `background`, which ends before this goes.
  Photos(MainQueue& mainQueue, Background& background, AuthorizationStatus status)
      : mainQueue_(mainQueue), background_(background), status_(status) {}

  // Without it nothing is written.
  void setAuthorizationStatus(AuthorizationStatus status) { status_ = status; }

  AuthorizationStatus authorizationStatus() const override { return status_; }
  void UIImageWriteToSavedPhotosAlbum(std::string bytes, std::string address,
                                      std::function<void(bool)> completion) override;

 private:
  MainQueue& mainQueue_;
  Background& background_;
  std::atomic<AuthorizationStatus> status_;
};

// The file name extension of an image, such as "png"; nothing when the bytes are none that can be shown, or
// one that is larger than any screen could want.
std::optional<std::string> imageExtension(const std::string& bytes);
// A file's name for what came from an address: its last part without what other systems or people would
// stumble over, and the extension of what it really is.
std::string pictureName(const std::string& address, const std::string& extension);
// Writes a new file; where there is one of that name already,
// under a name with a number. False when it cannot be written.
bool writePicture(const std::filesystem::path& folder, const std::string& name, const std::string& bytes);

}  // namespace velto::gtk
