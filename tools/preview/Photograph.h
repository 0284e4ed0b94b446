// Pictures of what a person sees: the toolkit's picture of a widget, with the pages in it as the engine paints them
// anew. What it keeps painted from before may smear where it works without compositing. Main thread.
#pragma once

#include "velto/platform/foundation/GMemory.h"

#include <gtk/gtk.h>
#include <webkit/webkit.h>

#include <vector>

namespace velto::preview {

// At the scale of the widget's screen. The pages are asked first, on the main loop; one that does not answer soon is shown
// as it was painted last. Nothing while there is nothing to take a picture of, such as in the middle of a frame.
GPtr<GdkTexture> photographOf(GtkWidget* widget, const std::vector<WebKitWebView*>& pages);
// Of windows, side by side.
GPtr<GdkTexture> photographOf(const std::vector<GtkWindow*>& windows,
                              const std::vector<WebKitWebView*>& pages);

}  // namespace velto::preview
