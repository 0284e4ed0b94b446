// Everything that a host application needs, but for its platform: <velto/gtk/VeltoGtk.h> or
// <velto/headless/VeltoHeadless.h>. VeltoVideoAd is in a library of its own, velto::vast.
#pragma once

#include "velto/core/VeltoConstants.h"
#include "velto/core/VeltoErrorAd.h"
#include "velto/core/VeltoFramework.h"
#include "velto/core/VeltoSettings.h"
#include "velto/network/VeltoURL.h"
#include "velto/platform/ui/UIViewController.h"
#include "velto/timeline/VeltoAdTimeline.h"
#include "velto/timeline/VeltoMetrics.h"
#include "velto/ui/VeltoBannerViewController.h"
#include "velto/ui/VeltoDelegates.h"
#include "velto/ui/VeltoInterstitialViewController.h"
#include "velto/video/VeltoVASTURL.h"
#include "velto/video/VeltoVideoAd.h"
