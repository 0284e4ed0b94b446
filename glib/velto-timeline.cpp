// Timelines for who reads introspection.
#include "velto-placement-private.h"

using namespace velto_glib;

struct _VeltoTimeline {
  GObject parent_instance;
  velto::VeltoAdTimeline* told;
  char* explanation;
  GVariant* entries;
};

/**
 * VeltoTimeline:
 *
 * What became of one load, as it is when it is asked for: who asked, what happened step by step, and why it ended.
 *
 * ```python
 * def failed(banner, error):
 *     print(banner.get_timelines()[-1].get_explanation())
 * ```
 *
 * It holds no key, no identifier, no address and no location.
 *
 * Since: 1.0
 */
G_DEFINE_FINAL_TYPE(VeltoTimeline, velto_timeline, G_TYPE_OBJECT)

static void velto_timeline_finalize(GObject* object) {
  auto* self = VELTO_TIMELINE(object);
  delete self->told;
  g_free(self->explanation);
  g_clear_pointer(&self->entries, g_variant_unref);
  G_OBJECT_CLASS(velto_timeline_parent_class)->finalize(object);
}

static void velto_timeline_class_init(VeltoTimelineClass* klass) {
  G_OBJECT_CLASS(klass)->finalize = velto_timeline_finalize;
}

// One that somebody else makes tells nothing.
static void velto_timeline_init(VeltoTimeline* self) {
  self->told = new velto::VeltoAdTimeline;
}

// Names come from servers.
static GVariant* variantOf(const velto::JSON& value) {
  if (const auto* text = value.string()) {
    char* valid = g_utf8_make_valid(text->c_str(), gssize(text->size()));
    return g_variant_new_take_string(valid);
  }
  return g_variant_new_double(value.number().value_or(0));
}

static GVariant* entriesOf(const velto::VeltoAdTimeline& told) {
  GVariantBuilder list;
  g_variant_builder_init(&list, G_VARIANT_TYPE("a(sda{sv})"));
  for (const auto& entry : told.entries) {
    g_variant_builder_open(&list, G_VARIANT_TYPE("(sda{sv})"));
    g_variant_builder_add(&list, "s", std::string(nameOf(entry.kind)).c_str());
    g_variant_builder_add(&list, "d", entry.seconds - told.entries.front().seconds);
    g_variant_builder_open(&list, G_VARIANT_TYPE("a{sv}"));
    for (const auto& [name, value] : entry.fields())
      g_variant_builder_add(&list, "{sv}", name.c_str(), variantOf(value));
    g_variant_builder_close(&list);
    g_variant_builder_close(&list);
  }
  return g_variant_ref_sink(g_variant_builder_end(&list));
}

namespace velto_glib {

GList* timelinesFrom(std::vector<velto::VeltoAdTimeline> told) {
  GList* list = nullptr;
  for (auto& one : told) {
    auto* made = VELTO_TIMELINE(g_object_new(VELTO_TYPE_TIMELINE, nullptr));
    if (one.end) {
      const auto& words = wordsOf(*one.end);
      made->explanation = g_strconcat(words.sentence.data(), " ", words.advice.data(), nullptr);
    }
    *made->told = std::move(one);
    list = g_list_prepend(list, made);
  }
  return g_list_reverse(list);
}

}  // namespace velto_glib

/**
 * velto_timeline_get_load:
 * @self: a timeline
 *
 * Gets the number of the load, which the log calls it by.
 *
 * Returns: the number, counted from 1 by process
 *
 * Since: 1.0
 */
guint64 velto_timeline_get_load(VeltoTimeline* self) {
  g_return_val_if_fail(VELTO_IS_TIMELINE(self), 0);
  velto_return_val_if_elsewhere(0);
  return self->told->load;
}

/**
 * velto_timeline_get_placement:
 * @self: a timeline
 *
 * Gets the name of the banner or interstitial when the load began.
 *
 * Returns: (transfer none): the name
 *
 * Since: 1.0
 */
const char* velto_timeline_get_placement(VeltoTimeline* self) {
  g_return_val_if_fail(VELTO_IS_TIMELINE(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return self->told->placement.c_str();
}

/**
 * velto_timeline_get_reason:
 * @self: a timeline
 *
 * Gets why the load ended, or its ad went: a name that stays as it is, such as "status-no-fill" or "refreshed".
 *
 * Returns: (nullable) (transfer none): the reason, or %NULL while it goes on
 *
 * Since: 1.0
 */
const char* velto_timeline_get_reason(VeltoTimeline* self) {
  g_return_val_if_fail(VELTO_IS_TIMELINE(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  const auto& end = self->told->end;
  return end ? wordsOf(*end).name.data() : nullptr;
}

/**
 * velto_timeline_get_explanation:
 * @self: a timeline
 *
 * Gets what the reason means and what to do about it, in words for developers.
 *
 * Returns: (nullable) (transfer none): the words, or %NULL while it goes on
 *
 * Since: 1.0
 */
const char* velto_timeline_get_explanation(VeltoTimeline* self) {
  g_return_val_if_fail(VELTO_IS_TIMELINE(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return self->explanation;
}

/**
 * velto_timeline_get_entries:
 * @self: a timeline
 *
 * Gets what happened: of each entry its name, the seconds since the load was asked for, and its particulars, such as
 * `("answered", 0.25, {"status": 204, "class": "no-fill"})`.
 *
 * Returns: (transfer none): a list of type `a(sda{sv})`, in the order of time
 *
 * Since: 1.0
 */
GVariant* velto_timeline_get_entries(VeltoTimeline* self) {
  g_return_val_if_fail(VELTO_IS_TIMELINE(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  if (!self->entries) self->entries = entriesOf(*self->told);
  return self->entries;
}

/**
 * velto_timeline_to_json:
 * @self: a timeline
 *
 * Writes all of it, such as for a report.
 *
 * Returns: (transfer full): a text of JSON
 *
 * Since: 1.0
 */
char* velto_timeline_to_json(VeltoTimeline* self) {
  g_return_val_if_fail(VELTO_IS_TIMELINE(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  return g_strdup(writeJSON(self->told->json(), true).value_or("{}").c_str());
}
