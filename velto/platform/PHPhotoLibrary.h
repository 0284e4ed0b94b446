// Supplied by the platform: the user's collection of pictures. The library adds those that a rich-media page
// asks for, when the host application was granted access before; it never asks for it. Any thread.
#pragma once

#include "velto/Export.h"
#include "velto/platform/EKEventStore.h"

#include <functional>
#include <string>

namespace velto {

class VELTO_EXPORT PHPhotoLibrary {
 public:
  virtual ~PHPhotoLibrary() = default;

  virtual AuthorizationStatus authorizationStatus() const = 0;

  // Decodes the bytes and, when they are an image, adds it to the collection without overwriting anything.
  // `address` is where it came from, for a name. The completion (may be empty) is called later on the main
  // thread: whether the bytes were an image that is kept now.
  virtual void UIImageWriteToSavedPhotosAlbum(std::string bytes, std::string address,
                                              std::function<void(bool written)> completion) = 0;
};

}  // namespace velto
