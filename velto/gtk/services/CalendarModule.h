// What the calendar module exports: a shared object of its own, since libecal brings fifty libraries that no
// application should load for showing a banner. Found and loaded by Calendar when the first event is stored.
#pragma once

#include <gio/gio.h>

extern "C" {

// Adds the event (a VEVENT as text, times in UTC) to the user's default calendar.
// Repeated ones follow the user's time zone. FALSE with an error when it does not
// stand there. May take seconds, until cancelled; any thread but the main one.
using VeltoCalendarSave = gboolean(const char* event, GCancellable* cancellable, GError** error);
__attribute__((visibility("default"))) VeltoCalendarSave velto_calendar_save;
}
