// A task called off is taken out and answered for itself; one outcome answers all that are left.
#include "velto-waiting.h"

#include <algorithm>

namespace velto_glib {
namespace {

constexpr char waitingKey[] = "velto-waiting";

}  // namespace

Waiting::~Waiting() {
  GError* gone = g_error_new_literal(VELTO_AD_ERROR, VELTO_AD_ERROR_CANCELLED, "the ad was given up");
  take()(gone);
  g_error_free(gone);
}

void Waiting::add(GTask* task) {
  auto* cancellable = g_task_get_cancellable(task);
  GSource* source = cancellable ? g_cancellable_source_new(cancellable) : nullptr;
  tasks_.push_back({task, source});
  if (!source) return;
  g_object_set_data(G_OBJECT(task), waitingKey, this);
  g_source_set_callback(source, G_SOURCE_FUNC(calledOff), task, nullptr);
  g_source_attach(source, g_task_get_context(task));
}

gboolean Waiting::calledOff(GCancellable*, gpointer task) noexcept {
  auto& self = *static_cast<Waiting*>(g_object_get_data(G_OBJECT(task), waitingKey));
  const auto found = std::find_if(self.tasks_.begin(), self.tasks_.end(),
                                  [&](const Entry& entry) { return entry.task == task; });
  const Entry entry = *found;
  self.tasks_.erase(found);
  self.cancelled_();
  g_task_return_error_if_cancelled(entry.task);
  end(entry);
  return G_SOURCE_REMOVE;
}

void Waiting::end(const Entry& entry) {
  if (entry.cancellation) {
    g_source_destroy(entry.cancellation);
    g_source_unref(entry.cancellation);
  }
  g_object_unref(entry.task);
}

Waiting::Answer Waiting::take() {
  auto taken = std::exchange(tasks_, {});
  for (const auto& entry : taken)
    if (entry.cancellation) g_source_destroy(entry.cancellation);
  return [taken = std::move(taken)](const GError* error) {
    for (const auto& entry : taken) {
      if (error)
        g_task_return_error(entry.task, g_error_copy(error));
      else
        g_task_return_boolean(entry.task, TRUE);
      end(entry);
    }
  };
}

}  // namespace velto_glib
