// The volume of the default output, as the sound server (PulseAudio, or PipeWire in its name) has it. See
// VolumeService.h. It never starts a server.
#pragma once

#include "velto/gtk/modules/VolumeService.h"
#include "velto/platform/foundation/GMemory.h"

#include <pulse/glib-mainloop.h>
#include <pulse/pulseaudio.h>

namespace velto::gtk {

class PulseVolume final : public VolumeService {
 public:
  explicit PulseVolume(VolumeEvents& events);
  PulseVolume(const PulseVolume&) = delete;
  PulseVolume& operator=(const PulseVolume&) = delete;
  ~PulseVolume() override;

 private:
  static gboolean connect(gpointer self) noexcept;
  static void stateChanged(pa_context* context, void* self) noexcept;
  static void changed(pa_context* context, pa_subscription_event_type_t type, uint32_t index,
                      void* self) noexcept;
  static void serverKnown(pa_context* context, const pa_server_info* server, void* self) noexcept;
  static void outputKnown(pa_context* context, const pa_sink_info* output, int end, void* self) noexcept;
  void ask();

  VolumeEvents& events_;
  GOwned<pa_glib_mainloop, pa_glib_mainloop_free> loop_;
  GOwned<pa_context, pa_context_unref> context_;
  guint connect_ = 0;  // the source that will
};

}  // namespace velto::gtk
