// Pictures: decoded once, to be sure that they are some.
#include "velto/gtk/Photos.h"

#include "velto/platform/foundation/GMemory.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

namespace velto::gtk {
namespace {

bool isImage(const std::string& bytes) {
  const auto loader = GPtr<GdkPixbufLoader>::adopt(gdk_pixbuf_loader_new());
  const bool written =
      gdk_pixbuf_loader_write(loader, reinterpret_cast<const guchar*>(bytes.data()), bytes.size(), nullptr);
  const bool closed = gdk_pixbuf_loader_close(loader, nullptr);
  return written && closed && gdk_pixbuf_loader_get_pixbuf(loader);
}

}  // namespace

void Photos::UIImageWriteToSavedPhotosAlbum(std::string bytes, std::string address,
                                            std::function<void(bool)> completion) {
  const bool image = isImage(bytes);
  if (image) {
    std::lock_guard lock(mutex_);
    pictures_.push_back({std::move(bytes), std::move(address)});
  }
  if (completion) mainQueue_.post([completion = std::move(completion), image] { completion(image); });
}

std::vector<Photos::Picture> Photos::pictures() const {
  std::lock_guard lock(mutex_);
  return pictures_;
}

}  // namespace velto::gtk
