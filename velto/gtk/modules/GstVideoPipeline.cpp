// Driving playbin. That it and its sinks exist was looked at before.
#include "velto/gtk/modules/GstVideoPipeline.h"

#include "velto/gtk/modules/CarriedBytes.h"
#include "velto/gtk/modules/FrameSlot.h"

#define G_SETTINGS_ENABLE_BACKEND  // as GIO asks of who includes the next
#include <gio/gsettingsbackend.h>

#include <algorithm>
#include <utility>

namespace velto::gtk {
namespace {

// Pictures, sound with a volume of our own, interlaced material made whole; no subtitles, no visualisation.
constexpr int playFlags = 0x1 | 0x2 | 0x10 | 0x200;

// As the toolkit has its pictures, with square pixels.
constexpr char pictureFormat[] = "video/x-raw,format=BGRA,pixel-aspect-ratio=1/1";

GstElement* newElement(const char* factory) {
  return gst_element_factory_make(factory, nullptr);
}

// Keeps time as a sound card would.
GstElement* newSilence() {
  auto* sink = newElement("fakesink");
  if (sink) g_object_set(sink, "sync", TRUE, nullptr);
  return sink;
}

// GIO makes its store of settings once, for who comes first. A thread of the player that comes to it by way of the proxy
// settings holds a lock by then that the main thread, with settings of its own, would wait for in turn, and both for ever.
// So it is made before there are such threads.
void makeSettingsStore() {
  g_object_unref(g_settings_backend_get_default());
}

using HeldSlot = std::shared_ptr<FrameSlot>;

GstFlowReturn put(GstSample* sample, gpointer slot) {
  if (sample) (*static_cast<HeldSlot*>(slot))->put(sample);
  return GST_FLOW_OK;
}

GstFlowReturn newPreroll(GstAppSink* sink, gpointer slot) noexcept {
  return put(gst_app_sink_pull_preroll(sink), slot);
}
GstFlowReturn newSample(GstAppSink* sink, gpointer slot) noexcept {
  return put(gst_app_sink_pull_sample(sink), slot);
}

}  // namespace

GstVideoPipeline::GstVideoPipeline(const char* url, const char* caFile, const char* proxy,
                                   VideoPipelineEvents& events)
    : events_(events),
      playbin_(GPtr<GstElement>::sink(newElement("playbin"))),
      shared_(makeShared(caFile, proxy, events)) {
  g_signal_connect_data(
      playbin_, "source-setup", G_CALLBACK(sourceMade), new std::shared_ptr(shared_),
      [](gpointer held, GClosure*) noexcept { delete static_cast<std::shared_ptr<Shared>*>(held); },
      GConnectFlags{});
  auto* sound = newElement("autoaudiosink");
  useAudioSink(sound ? sound : newSilence());
  g_object_set(playbin_, "uri", url, "flags", playFlags, "video-sink", makePictureSink(), nullptr);

  auto* bus = gst_element_get_bus(playbin_);
  messages_.reset(gst_bus_create_watch(bus));
  gst_object_unref(bus);
  g_source_set_callback(messages_.get(), G_SOURCE_FUNC(received), this, nullptr);
  g_source_attach(messages_.get(), nullptr);
  makeSettingsStore();
  gst_element_call_async(playbin_, begin, new std::shared_ptr(shared_),
                         [](gpointer held) noexcept { delete static_cast<std::shared_ptr<Shared>*>(held); });
}

std::shared_ptr<GstVideoPipeline::Shared> GstVideoPipeline::makeShared(const char* caFile, const char* proxy,
                                                                       VideoPipelineEvents& events) {
  auto* authorities = caFile ? g_tls_file_database_new(caFile, nullptr) : nullptr;
  return std::shared_ptr<Shared>(new Shared{.authorities = GPtr<GTlsDatabase>::adopt(authorities),
                                            .proxy = proxy ? proxy : "",
                                            .frames = std::make_shared<FrameSlot>(events),
                                            .carried = std::make_shared<CarriedBytes>()});
}

void GstVideoPipeline::begin(GstElement* playbin, gpointer held) noexcept {
  using State = Shared::State;
  auto& shared = **static_cast<std::shared_ptr<Shared>*>(held);
  auto state = State::Waiting;
  if (!shared.state.compare_exchange_strong(state, State::Beginning)) return;
  shared.isLive = gst_element_set_state(playbin, GST_STATE_PAUSED) == GST_STATE_CHANGE_NO_PREROLL;
  state = State::Beginning;
  if (!shared.state.compare_exchange_strong(state, State::Begun))
    gst_element_set_state(playbin, GST_STATE_NULL);
}

GstVideoPipeline::~GstVideoPipeline() {
  const bool isBeginning = shared_->state.exchange(Shared::State::Over) == Shared::State::Beginning;
  g_source_destroy(messages_.get());
  shared_->frames->close();
  if (!isBeginning) gst_element_set_state(playbin_, GST_STATE_NULL);  // its threads are over afterwards
}

GstElement* GstVideoPipeline::makePictureSink() {
  auto* sink = newElement("appsink");
  GstAppSinkCallbacks callbacks{};
  callbacks.new_preroll = newPreroll;
  callbacks.new_sample = newSample;
  gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, new HeldSlot(shared_->frames),
                             [](gpointer held) noexcept { delete static_cast<HeldSlot*>(held); });
  auto* caps = gst_caps_from_string(pictureFormat);
  gst_app_sink_set_caps(GST_APP_SINK(sink), caps);
  gst_caps_unref(caps);
  return sink;
}

void GstVideoPipeline::useAudioSink(GstElement* sink) {
  audioSink_ = GPtr<GstElement>::sink(sink);
  g_object_set(playbin_, "audio-sink", sink, nullptr);
}

void GstVideoPipeline::sourceMade(GstElement*, GstElement* source, gpointer held) noexcept {
  const auto& shared = **static_cast<std::shared_ptr<Shared>*>(held);
  const auto has = [source](const char* property) {
    return g_object_class_find_property(G_OBJECT_GET_CLASS(source), property) != nullptr;
  };
  if (shared.authorities && has("tls-database"))
    g_object_set(source, "tls-database", shared.authorities.get(), nullptr);
  if (!shared.proxy.empty() && has("proxy")) g_object_set(source, "proxy", shared.proxy.c_str(), nullptr);
  if (auto* pad = gst_element_get_static_pad(source, "src")) {
    shared.carried->countAt(pad);
    gst_object_unref(pad);
  }
}

// --- what the player wants

void GstVideoPipeline::run(bool playing) {
  wanted_ = playing;
  applyState();
}

void GstVideoPipeline::applyState() {
  if (!loaded_ || restarting_) return;
  gst_element_set_state(playbin_, wanted_ && buffered_ ? GST_STATE_PLAYING : GST_STATE_PAUSED);
}

bool GstVideoPipeline::jump(Nanoseconds position) {
  auto* query = gst_query_new_seeking(GST_FORMAT_TIME);
  gboolean seekable = FALSE;
  if (gst_element_query(playbin_, query))
    gst_query_parse_seeking(query, nullptr, &seekable, nullptr, nullptr);
  gst_query_unref(query);
  if (!seekable) return false;
  position_ = position;
  constexpr auto how = static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE);
  return gst_element_seek_simple(playbin_, GST_FORMAT_TIME, how, position.count());
}

void GstVideoPipeline::setVolume(double volume) {
  g_object_set(playbin_, "volume", volume, nullptr);
}

VideoPipeline::Nanoseconds GstVideoPipeline::position() const {
  gint64 now = 0;
  if (!restarting_ && !comingBack_ && gst_element_query_position(playbin_, GST_FORMAT_TIME, &now))
    position_ = Nanoseconds(now);
  return position_;
}

// --- what GStreamer tells

gboolean GstVideoPipeline::received(GstBus*, GstMessage* message, gpointer data) noexcept {
  auto* self = static_cast<GstVideoPipeline*>(data);  // each of these may be the last that it hears
  switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_STATE_CHANGED: {
      GstState now = GST_STATE_NULL;
      gst_message_parse_state_changed(message, nullptr, &now, nullptr);
      if (GST_MESSAGE_SRC(message) == GST_OBJECT(self->playbin_.get())) self->reachedState(now);
      break;
    }
    case GST_MESSAGE_BUFFERING: {
      int percent = 0;
      gst_message_parse_buffering(message, &percent);
      self->buffered(percent);
      break;
    }
    case GST_MESSAGE_CLOCK_LOST:  // the sound output went: another clock is chosen on the way back
      gst_element_set_state(self->playbin_, GST_STATE_PAUSED);
      self->applyState();
      break;
    case GST_MESSAGE_EOS:
      self->tellCarried();
      self->events_.pipelineEnded();
      break;
    case GST_MESSAGE_ERROR:
      self->failed(message);
      break;
    default:
      break;
  }
  return G_SOURCE_CONTINUE;
}

void GstVideoPipeline::reachedState(GstState state) {
  if (state == GST_STATE_PLAYING) comingBack_ = false;
  if (state != GST_STATE_PAUSED) return;
  if (std::exchange(restarting_, false)) {
    if (position_.count() > 0) jump(position_);
    return applyState();
  }
  tellCarried();
  if (std::exchange(loaded_, true)) return;
  gint64 duration = -1;
  const bool known = gst_element_query_duration(playbin_, GST_FORMAT_TIME, &duration) && duration >= 0;
  events_.pipelineLoaded(known ? std::optional(Nanoseconds(duration)) : std::nullopt);
}

void GstVideoPipeline::buffered(int percent) {
  constexpr int full = 100;
  if (percent >= full) {
    shared_->carried->stop();
    tellCarried();
  }
  if (shared_->isLive || std::exchange(buffered_, percent >= full) == buffered_) return;
  applyState();
}

// Where it is not known yet, at the next occasion.
void GstVideoPipeline::tellCarried() {
  const auto rate = toldCarried_ ? std::nullopt : shared_->carried->rate();
  if (!rate) return;
  toldCarried_ = true;
  events_.pipelineCarried(*rate);
}

void GstVideoPipeline::failed(GstMessage* message) {
  const bool ofSound = gst_object_has_as_ancestor(GST_MESSAGE_SRC(message), GST_OBJECT(audioSink_.get())) ||
                       GST_MESSAGE_SRC(message) == GST_OBJECT(audioSink_.get());
  // The way back is a seek, which a demultiplexer that has just begun may fail at.
  const bool triesAgain = comingBack_ && ++triesToComeBack_ < mostTriesToComeBack;
  if ((ofSound && !silent_) || triesAgain) return goOnSilently();
  GError* raw = nullptr;
  gst_message_parse_error(message, &raw, nullptr);
  const GErrorOwned error(raw);
  // What a source may read from breaks off in other ways, too. Of a server that was not reached it says nothing but that
  // there was no stream.
  const bool neverCame = error->domain == GST_STREAM_ERROR && !shared_->carried->hasAny() &&
                         GST_OBJECT_FLAG_IS_SET(GST_MESSAGE_SRC(message), GST_ELEMENT_FLAG_SOURCE);
  const bool isNotThere = neverCame || (error->domain == GST_RESOURCE_ERROR &&
                                        (error->code == GST_RESOURCE_ERROR_NOT_FOUND ||
                                         error->code == GST_RESOURCE_ERROR_OPEN_READ ||
                                         error->code == GST_RESOURCE_ERROR_NOT_AUTHORIZED));
  events_.pipelineFailed({g_quark_to_string(error->domain), error->code, error->message,
                          isNotThere ? NSErrorCause::NotFound : NSErrorCause::Unknown});
}

// A sound output that is taken away, or never works, must not end the video.
void GstVideoPipeline::goOnSilently() {
  silent_ = true;
  if (!comingBack_) position();
  comingBack_ = restarting_ = loaded_;
  gst_element_set_state(playbin_, GST_STATE_NULL);
  useAudioSink(newSilence());
  gst_element_set_state(playbin_, GST_STATE_PAUSED);
}

}  // namespace velto::gtk

extern "C" __attribute__((visibility("default"))) velto::gtk::VideoPipeline* velto_make_video_pipeline(
    const char* url, const char* caFile, const char* proxy, velto::gtk::VideoPipelineEvents* events) {
  if (!gst_init_check(nullptr, nullptr, nullptr)) return nullptr;
  for (const char* needed : {"playbin", "appsink", "fakesink"}) {
    auto* factory = gst_element_factory_find(needed);
    if (!factory) return nullptr;
    gst_object_unref(factory);
  }
  // Other sources than this one know no proxy.
  const char* scheme = g_uri_peek_scheme(url);
  if (proxy && g_strcmp0(scheme, "http") != 0 && g_strcmp0(scheme, "https") != 0) return nullptr;
  return new velto::gtk::GstVideoPipeline(url, caFile, proxy, *events);
}
