// Velto for GTK applications: everything of velto-glib-1.0. All of it belongs to the thread that runs the
// application's default main context.
#pragma once

#include "velto-adapter-ad.h"
#include "velto-adapter-request.h"
#include "velto-adapter.h"
#include "velto-banner.h"
#include "velto-client.h"
#include "velto-enum-types.h"
#include "velto-enums.h"
#include "velto-errors.h"
#include "velto-interstitial.h"
#include "velto-targeting-enums.h"
#include "velto-targeting.h"
#include "velto-timeline.h"
#include "velto-vast-request.h"
#include "velto-video-ad-companion.h"
#include "velto-video-ad-enums.h"
#include "velto-video-ad-info.h"
#include "velto-video-ad.h"
