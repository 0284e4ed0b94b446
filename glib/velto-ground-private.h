// What ads stand on: all that the GObject library asks of the toolkit's platform. The test kit puts another in its place,
// without a web engine and a network. Main thread.
#pragma once

#include <velto/gtk/VeltoGtk.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "velto-private.h"

namespace velto_glib {

class VELTO_SHARED Ground {
 public:
  Ground() = default;
  Ground(const Ground&) = delete;
  Ground& operator=(const Ground&) = delete;
  virtual ~Ground();

  // What has to be done before it can be installed, if anything has.
  virtual std::optional<std::string> missing() const = 0;
  // Throws as velto::gtk::install() does.
  virtual void install(const velto::gtk::Options& options) = 0;
  virtual void uninstall() = 0;
  virtual void setCalendarAccess(velto::gtk::Access access) = 0;
  virtual void setPicturesAccess(velto::gtk::Access access) = 0;
  virtual void setInForeground(std::optional<bool> inForeground) = 0;

  // The widget that a banner's ad stands in: it asks for the ad's size, or keeps room while there is none.
  virtual GtkWidget* makeSlot() = 0;
  virtual void setSlotRoom(GtkWidget* slot, std::optional<velto::CGSize> room) = 0;
  // Throws for a window that cannot be wrapped.
  virtual std::shared_ptr<velto::UIViewController> slotController(GtkWidget* slot) = 0;
  // What an ad is presented over, in the window of a widget (may be null). Null, and the reason, where that is nothing.
  virtual std::shared_ptr<velto::UIViewController> windowController(GObject* ad, GtkWidget* parent,
                                                                    const char*& why) = 0;
  // What an ad is played in, over a widget (may be null). Else the same.
  virtual std::shared_ptr<velto::UIView> hostView(GObject* ad, GtkWidget* widget, const char*& why) = 0;
  // The view of another network's ad.
  virtual std::shared_ptr<velto::UIView> adView(GtkWidget* widget) = 0;
  // Where views may be touched: at once where that is here.
  virtual void onMainThread(std::function<void()> work) = 0;
};

Ground& ground();
// In place of the toolkit's, before a client starts.
VELTO_SHARED void setGround(std::unique_ptr<Ground> ground);
// Puts the client that has been started, if there is one, onto a ground that begins anew. Throws as its start does.
VELTO_SHARED void startAgain();

}  // namespace velto_glib
