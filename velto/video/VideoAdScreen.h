// Where video ads are seen: a picture and controls, over a view of the application or, presented, over all of a window.
// One for all ads of a pod. Made by the ad break; main thread.
//
// Keys, while it is presented: space plays and pauses, M is for the sound, Escape skips where that is allowed, and closes
// an ad that plays far longer than it should.
#pragma once

#include "velto/platform/ui/UIViewController.h"
#include "velto/video/VideoAdControls.h"

#include <functional>
#include <memory>
#include <optional>

namespace velto {

class VideoAdScreen final : public UIViewController {
 public:
  class Listener {
   public:
    virtual void screenToggled() = 0;
    virtual void screenMuted() = 0;
    virtual void screenSkipped() = 0;
    virtual void screenEscaped() = 0;
    virtual void screenPressed(std::optional<CGPoint> place) = 0;
    virtual void screenWentAway() = 0;  // what presented it has gone

   protected:
    ~Listener() = default;
  };

  static std::shared_ptr<VideoAdScreen> make(bool showsControls);
  ~VideoAdScreen() override;

  // Held weakly: whoever listens now. Nothing: nobody.
  void setListener(std::weak_ptr<Listener> listener) { listener_ = std::move(listener); }

  bool isWhole() const { return isWhole_; }  // over all of a window
  void fill(const std::shared_ptr<UIView>& host);
  void presentOver(const std::shared_ptr<UIViewController>& controller, std::function<void()> there);
  void remove();

  // The view that is measured, empty until a picture is put into it.
  const std::shared_ptr<UIView>& stage() const { return stage_; }
  void setPicture(std::unique_ptr<ViewPeer> picture);  // null: none
  const std::shared_ptr<VideoAdControls>& controls() const { return controls_; }

  bool accessibilityPerformEscape() override;
  bool pressesBegan(UIKey key) override;
  void presenterDidGo() override;

 private:
  VideoAdScreen() = default;
  void tell(const std::function<void(Listener&)>& what) const;

  std::weak_ptr<Listener> listener_;
  bool isWhole_ = false;
  std::shared_ptr<UIView> stage_, picture_;
  std::shared_ptr<VideoAdControls> controls_;
};

}  // namespace velto
