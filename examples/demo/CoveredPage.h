// A window with a banner in a slot, and what applications show over their content: a dialog in the window and
// a toast. They lie over the ad as over anything else. Main thread.
#pragma once

#include <gtk/gtk.h>
#include <velto/velto.h>

#include <memory>

namespace demo {

class CoveredPage {
 public:
  CoveredPage();
  CoveredPage(const CoveredPage&) = delete;
  CoveredPage& operator=(const CoveredPage&) = delete;
  ~CoveredPage();

  void showDialog(bool shown) { gtk_widget_set_visible(dialog_, shown); }
  void showToast(bool shown) { gtk_widget_set_visible(toast_, shown); }
  GtkWidget* content() const { return content_; }
  bool isLoaded() const;
  velto::CGRect adFrame() const;      // in the content's coordinates
  velto::CGRect dialogFrame() const;  // so are these
  velto::CGRect toastFrame() const;
  // Of the ad, in percent.
  int seen() const;

 private:
  class Ads;
  velto::CGRect frameOf(GtkWidget* widget) const;

  GtkWindow* window_;
  GtkWidget* content_;
  GtkWidget* slot_;
  GtkWidget* dialog_;
  GtkWidget* toast_;
  std::shared_ptr<Ads> ads_;
};

}  // namespace demo
