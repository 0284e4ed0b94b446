// Widgets as views, for who brings ads that the toolkit draws, such as an adapter of another network. Part of
// VeltoGtk.h; main thread.
#pragma once

#include "velto/Export.h"

#include <gtk/gtk.h>

#include <memory>

namespace velto {
class UIView;
}

namespace velto::gtk {

// A view that the widget fills, and that keeps it: give it where a view is asked for (getBannerView()). What a
// person does to it is the widget's matter: no tap on it is told to anybody else. Takes a floating reference.
// Throws std::invalid_argument for what is no widget, or is in another one.
VELTO_EXPORT std::shared_ptr<UIView> widgetView(GtkWidget* widget);

}  // namespace velto::gtk
