// Supplied by the platform: its players of videos (AVPlayer.h), and what it can play. Main thread only, and calls back on it.
#pragma once

#include "velto/Export.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velto {

class AVPlayer;
struct AVPlayerItem;

class VELTO_EXPORT MediaSystem {
 public:
  virtual ~MediaSystem() = default;
  virtual std::shared_ptr<AVPlayer> makePlayer(const std::shared_ptr<AVPlayerItem>& item) = 0;
  // Something will be played soon: what takes long is done meanwhile, on another thread. Calls back in a later turn, once
  // the questions below and a player hold nobody up.
  virtual void prepare(std::function<void()> ready);

  // Whether files of this MIME type play here, with this codec (RFC 6381) or list of codecs; either may be empty. Yes, where
  // it cannot be told without trying. The first question may take some milliseconds.
  virtual bool canPlay(const std::string& /*type*/, const std::string& /*codec*/) { return true; }
  // Whether that is known, and not only where it cannot be told. What is sure is tried first.
  virtual bool surelyPlays(const std::string& type, const std::string& codec) { return canPlay(type, codec); }

  // What the network has carried for the files of late, kilobits a second; nothing: not known yet. Players tell it.
  std::optional<double> bandwidth() const { return bandwidth_; }
  void carried(double kilobits);

 private:
  std::optional<double> bandwidth_;
};

}  // namespace velto
