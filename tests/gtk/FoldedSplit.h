// Two pages of which one is seen, as applications show a list and its detail in a narrow window: by the widget that this
// version of libadwaita has for that.
#pragma once

#include <adwaita.h>

namespace velto::test {

#if ADW_CHECK_VERSION(1, 4, 0)
class FoldedSplit {
 public:
  FoldedSplit(GtkWidget* first, GtkWidget* second) {
    adw_navigation_split_view_set_sidebar(view_, adw_navigation_page_new(first, "first"));
    adw_navigation_split_view_set_content(view_, adw_navigation_page_new(second, "second"));
    adw_navigation_split_view_set_collapsed(view_, TRUE);
  }
  GtkWidget* widget() { return GTK_WIDGET(view_); }
  void showFirst() { adw_navigation_split_view_set_show_content(view_, FALSE); }
  void showSecond() { adw_navigation_split_view_set_show_content(view_, TRUE); }

 private:
  AdwNavigationSplitView* view_ = ADW_NAVIGATION_SPLIT_VIEW(adw_navigation_split_view_new());
};
#else
class FoldedSplit {  // folds by itself where both need more room than there is
 public:
  FoldedSplit(GtkWidget* first, GtkWidget* second) : first_(first), second_(second) {
    adw_leaflet_set_fold_threshold_policy(leaflet_, ADW_FOLD_THRESHOLD_POLICY_NATURAL);
    gtk_widget_set_size_request(second, 400, -1);
    for (auto* page : {first, second}) adw_leaflet_append(leaflet_, page);
  }
  GtkWidget* widget() { return GTK_WIDGET(leaflet_); }
  void showFirst() { adw_leaflet_set_visible_child(leaflet_, first_); }
  void showSecond() { adw_leaflet_set_visible_child(leaflet_, second_); }

 private:
  AdwLeaflet* leaflet_ = ADW_LEAFLET(adw_leaflet_new());
  GtkWidget *first_, *second_;
};
#endif

}  // namespace velto::test
