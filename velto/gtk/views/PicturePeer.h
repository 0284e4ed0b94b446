// A picture that changes, and the views that show it: as large as fits, in the middle. Made by the player of
// videos; main thread.
#pragma once

#include "velto/gtk/views/Peer.h"

#include <memory>
#include <vector>

namespace velto::gtk {

class Picture {
 public:
  void set(GPtr<GdkTexture> texture);  // null: nothing is shown
  GdkTexture* texture() const { return texture_; }

 private:
  friend class PicturePeer;
  GPtr<GdkTexture> texture_;
  std::vector<GtkWidget*> shownBy_;
};

class PicturePeer final : public Peer {
 public:
  explicit PicturePeer(std::shared_ptr<Picture> picture);
  ~PicturePeer() override;
  bool paintsContent() const override { return true; }

 private:
  std::shared_ptr<Picture> picture_;
};

}  // namespace velto::gtk
