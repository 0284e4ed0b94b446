// GLib's allocations and reference counts as owned C++ values. Private to platform/foundation and the GTK
// platform.
#pragma once

#include <glib-object.h>

#include <memory>
#include <utility>

namespace velto {

struct GFree {
  void operator()(void* memory) const { g_free(memory); }
};
using GText = std::unique_ptr<char, GFree>;

template <auto release>
struct GRelease {
  template <class T>
  void operator()(T* object) const {
    release(object);
  }
};
// GOwned<GUri, g_uri_unref> and the like.
template <class T, auto release>
using GOwned = std::unique_ptr<T, GRelease<release>>;

using GErrorOwned = GOwned<GError, g_error_free>;

// One reference to a GObject; moves, never copies.
template <class T>
class GPtr {
 public:
  GPtr() = default;
  static GPtr adopt(T* object) { return GPtr(object); }  // takes the caller's reference over
  static GPtr retain(T* object) { return GPtr(object ? static_cast<T*>(g_object_ref(object)) : nullptr); }
  // For widgets and others that start with a floating reference.
  static GPtr sink(T* object) { return GPtr(object ? static_cast<T*>(g_object_ref_sink(object)) : nullptr); }
  GPtr(GPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  GPtr& operator=(GPtr&& other) noexcept {
    if (this != &other) {
      reset();
      object_ = std::exchange(other.object_, nullptr);
    }
    return *this;
  }
  ~GPtr() { reset(); }

  void reset() {
    if (auto* object = std::exchange(object_, nullptr)) g_object_unref(object);
  }
  T* get() const { return object_; }
  operator T*() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  explicit GPtr(T* object) : object_(object) {}
  T* object_ = nullptr;
};

}  // namespace velto
