// The place on the virtual screen where a video ad plays, with its companions below, and what its delegate hears. Main thread.
#pragma once

#include <gtk/gtk.h>
#include <velto/gtk/VeltoGtk.h>
#include <velto/platform/foundation/GMemory.h>
#include <velto/video/VeltoVideoAd.h>

#include <memory>
#include <string>
#include <vector>

#include "preview/Arguments.h"
#include "preview/Journal.h"

namespace velto::preview {

class VideoAdStage {
 public:
  // In the content of the screen's window, whose host view controller it plays over where it is to fill the screen.
  VideoAdStage(const Arguments& arguments, Journal& journal, GtkBox* content,
               std::shared_ptr<UIViewController> host);
  VideoAdStage(const VideoAdStage&) = delete;
  VideoAdStage& operator=(const VideoAdStage&) = delete;
  ~VideoAdStage();

  // What plays goes first.
  void load(const std::string& document);
  bool hasStarted() const { return hasStarted_; }
  bool hasFailed() const { return hasFailed_; }  // before anything was seen
  bool hasEnded() const { return hasEnded_; }    // with whatever there was to play
  GtkWidget* widget() const { return stage_.get(); }

  void setMuted(bool muted);
  bool skip();

 private:
  class Ears;
  void tell(const char* name, JSON::Object details = {});
  void loaded();
  void started(const VeltoVideoAdInfo& info);
  void failed(const VeltoVideoAdError& error);
  void ended();
  void showCompanions();
  void removeCompanions();

  const Arguments& arguments_;
  Journal& journal_;
  GPtr<GtkWidget> content_, stage_;  // the window may be closed first
  std::shared_ptr<UIViewController> host_;
  std::shared_ptr<Ears> ears_;
  std::shared_ptr<VeltoVideoAd> ad_;
  std::vector<GPtr<GtkWidget>> companions_;
  bool isMuted_ = false, hasStarted_ = false, hasFailed_ = false, hasEnded_ = false;
};

}  // namespace velto::preview
