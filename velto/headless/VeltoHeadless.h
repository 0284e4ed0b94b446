// Velto without a display: the whole library over an in-memory
// platform, for tests of a host application's ad code.
//
//   auto platform = velto::headless::Platform::install();       // fresh: empty store, 2024-01-01T00:00:00Z
//   platform->setPagesFinishByThemselves(true);                 // no need to play the page
//   platform->urlSession().respond("", {.headers = {{"x-content", "html"}},
//                                       .body = "<a href='velto://loadFinished'></a>"});
//   velto::headless::HostWindow window;                          // your delegate's presentViewController:
//   ...                                                          //   window.controller()
//   platform->runUntilIdle();                                    // everything due now
//   platform->advance(std::chrono::seconds(30));                 // a refresh interval passes at once
//   window.tap({10, 10});                                        // a person's finger
//   window.tapLink(*platform->webViews().at(0), "https://shop.example/");
//   platform->application().opened;                              // where it led
//
// Nothing happens behind the test's back: callbacks come only inside runUntilIdle(),
// advance(), tap() and their like, on the calling thread. Request completions play the
// transport's thread: while one runs, the main queue says it is not current, and any
// call to a view throws std::logic_error. Install a fresh platform for each test case.
#pragma once

#include "velto/headless/HeadlessPlatform.h"
#include "velto/headless/views/HostSlot.h"
#include "velto/headless/views/HostWindow.h"
