// What the sources of the GObject library share. Nothing of C++ leaves them: an exception becomes an error or
// a warning here.
#pragma once

#include <glib-object.h>
#include <velto/velto.h>

#include <exception>
#include <stdexcept>
#include <utility>

#include "velto-glib.h"

// Also for the test kit, which is a library of its own.
#define VELTO_SHARED [[gnu::visibility("default")]]
// A warning names a function as C does, without its types.
#undef G_STRFUNC
#define G_STRFUNC (static_cast<const char*>(__func__))

namespace velto_glib {

// Whether the caller is on the thread of the default main context; else it is told what to do.
VELTO_SHARED bool isMainThread(const char* function);
// Whether the enumeration has that value; else the caller is told which it has.
bool isValueOf(GType enumeration, int value, const char* function);
// Whether a client runs; else the caller is told what to do. Needed by whatever asks for ads.
bool isStarted(const char* function);

// As an error of VELTO_AD_ERROR, with the system's own words where there are any.
GError* errorFrom(const velto::VeltoErrorAd& error);
// For an exception of the C++ library: of VELTO_CLIENT_ERROR, or of VELTO_AD_ERROR where an ad was asked for.
VELTO_SHARED GError* errorFrom(const std::exception& exception);
GError* adErrorFrom(const std::exception& exception);

velto::VeltoSettings settingsFrom(VeltoTargeting* targeting);  // may be null

// Keeps an object while signals are emitted: a handler may let go of it.
class Kept {
 public:
  explicit Kept(gpointer object) : object_(g_object_ref(object)) {}
  Kept(const Kept&) = delete;
  Kept& operator=(const Kept&) = delete;
  ~Kept() { g_object_unref(object_); }

 private:
  gpointer object_;
};

// Runs it; false with the error set (may be null) when it throws.
template <class Work>
bool guarded(GError** error, Work&& work, GError* (*as)(const std::exception&) = errorFrom) noexcept {
  try {
    std::forward<Work>(work)();
    return true;
  } catch (const std::exception& thrown) {
    g_propagate_error(error, as(thrown));
  }
  return false;
}

// Where nobody asked for an error.
template <class Work>
bool guarded(const char* function, Work&& work) noexcept {
  GError* error = nullptr;
  if (guarded(&error, std::forward<Work>(work))) return true;
  g_critical("%s: %s", function, error->message);
  g_error_free(error);
  return false;
}

}  // namespace velto_glib

#define velto_return_if_elsewhere() \
  if (!velto_glib::isMainThread(__func__)) return
#define velto_return_val_if_elsewhere(value) \
  if (!velto_glib::isMainThread(__func__)) return (value)
