// Asking the sound server, and asking again whenever something changed.
#include "velto/gtk/modules/PulseVolume.h"

#include <algorithm>

namespace velto::gtk {
namespace {

void letGo(pa_operation* operation) {
  if (operation) pa_operation_unref(operation);
}

}  // namespace

PulseVolume::PulseVolume(VolumeEvents& events)
    : events_(events),
      loop_(pa_glib_mainloop_new(nullptr)),
      context_(pa_context_new(pa_glib_mainloop_get_api(loop_.get()), "velto")) {
  pa_context_set_state_callback(context_.get(), stateChanged, this);
  pa_context_set_subscribe_callback(context_.get(), changed, this);
  // In a later turn: without a server it fails at once, inside the call.
  connect_ = g_idle_add(connect, this);
}

PulseVolume::~PulseVolume() {
  if (connect_) g_source_remove(connect_);
  pa_context_set_state_callback(context_.get(), nullptr, nullptr);
  pa_context_set_subscribe_callback(context_.get(), nullptr, nullptr);
  pa_context_disconnect(context_.get());  // cancels what was asked
}

gboolean PulseVolume::connect(gpointer data) noexcept {
  auto* self = static_cast<PulseVolume*>(data);
  self->connect_ = 0;
  pa_context_connect(self->context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
  return G_SOURCE_REMOVE;
}

void PulseVolume::stateChanged(pa_context* context, void* data) noexcept {
  auto* self = static_cast<PulseVolume*>(data);
  switch (pa_context_get_state(context)) {
    case PA_CONTEXT_READY: {
      constexpr auto wanted =
          static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SINK | PA_SUBSCRIPTION_MASK_SERVER);
      letGo(pa_context_subscribe(context, wanted, nullptr, nullptr));
      return self->ask();
    }
    case PA_CONTEXT_FAILED:
    case PA_CONTEXT_TERMINATED:
      return self->events_.volumeUnknown();
    default:
      return;
  }
}

void PulseVolume::changed(pa_context*, pa_subscription_event_type_t, uint32_t, void* self) noexcept {
  static_cast<PulseVolume*>(self)->ask();
}

// Which output is the default one may have changed too.
void PulseVolume::ask() {
  letGo(pa_context_get_server_info(context_.get(), serverKnown, this));
}

void PulseVolume::serverKnown(pa_context* context, const pa_server_info* server, void* self) noexcept {
  if (server && server->default_sink_name)
    letGo(pa_context_get_sink_info_by_name(context, server->default_sink_name, outputKnown, self));
}

void PulseVolume::outputKnown(pa_context*, const pa_sink_info* output, int, void* self) noexcept {
  if (!output) return;  // the end of the list, or it is gone again
  const auto volume =
      static_cast<float>(pa_cvolume_avg(&output->volume)) / static_cast<float>(PA_VOLUME_NORM);
  static_cast<PulseVolume*>(self)->events_.volumeIs(output->mute ? 0 : std::min(volume, 1.0F));
}

}  // namespace velto::gtk

extern "C" __attribute__((visibility("default"))) velto::gtk::VolumeService* velto_make_volume_service(
    velto::gtk::VolumeEvents* events) {
  return new velto::gtk::PulseVolume(*events);
}
