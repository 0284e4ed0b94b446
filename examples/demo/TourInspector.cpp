// The tour's look into the toolkit's inspector: a placement that failed twice and was then filled by the third network of
// its waterfall.
#include <velto/timeline/VeltoAdEndReason.h>

#include "Inspector.h"
#include "Tour.h"

namespace demo {

void Tour::inspect() {
  const std::string name = "waterfall";
  stage_.show(name);
  expect("waterfall: the first load has no ad", [&] { return stage_.count(name, "DidFail 0") == 1; });
  stage_.loadAgain(name);
  expect("waterfall: nor has the second", [&] { return stage_.count(name, "DidFail 0") == 2; });
  stage_.loadAgain(name);
  expect("waterfall: the third is filled", [&] { return stage_.count(name, "DidFinishLoad") == 1; });

  GtkWidget* page = openInspector();
  if (!page) return missing_.emplace_back("the inspector has no page of ours"), void();
  gtk_window_set_default_size(GTK_WINDOW(gtk_widget_get_root(page)), 1000, 860);
  const Camera camera(gtk_widget_get_root(page) ? GTK_WIDGET(gtk_widget_get_root(page)) : page);
  const auto seen = [&](const std::string& text) {
    return expect("inspector: it says \"" + text + "\"", [&] { return says(page, text); });
  };
  for (const char* text : {"filled in", "No network of the mediation instructions had an ad.",
                           "The server had no ad (status 204).", "% is seen"})
    seen(text);
  const auto ground = [&] { return camera.take().at(300, 500); };
  expect("inspector: it is drawn", [&] { return ground().value_or(0) > 0x808080; });
  photograph("inspector", camera.take());
  auto* settings = gtk_settings_get_for_display(gtk_widget_get_display(page));
  g_object_set(settings, "gtk-application-prefer-dark-theme", TRUE, nullptr);
  expect("inspector: it is drawn dark", [&] { return ground().value_or(0xffffff) < 0x808080; });
  photograph("inspector-dark", camera.take());
  g_object_set(settings, "gtk-application-prefer-dark-theme", FALSE, nullptr);

  const auto press = [page](const char* label) {
    if (auto* button = buttonIn(page, label)) g_signal_emit_by_name(button, "clicked");
  };
  press("timed-out");
  expect("inspector: a simulated failure is told", [&] { return stage_.count(name, "DidFail 4") == 1; });
  seen(std::string(velto::wordsOf(velto::VeltoAdEndReason::TimedOut).sentence));
  press("_Reload");
  expect("inspector: reload brings an ad", [&] { return stage_.count(name, "DidFinishLoad") == 2; });
  closeInspector();
}

}  // namespace demo
