// Asking the portal, scheme by scheme.
#include "velto/gtk/services/UriPortal.h"

#include <cstdlib>
#include <cstring>

namespace velto::gtk {
namespace {

constexpr int portalMilliseconds = 300;
constexpr size_t mostSchemes = 256;  // pages may ask for any

bool isOfTheWeb(const std::string& scheme) {
  return scheme == "https" || scheme == "http";
}

bool isTooOld(const GError* error) {
  return g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_METHOD);
}

bool isGone(const GError* error) {
  return g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) ||
         g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER);
}

}  // namespace

struct UriPortal::Question {
  std::weak_ptr<Answers> answers;
  std::string scheme;
};

bool isSandboxed() {
  static const bool sandboxed = [] {
    // The variable that makes GLib open by the portal has changed its name.
    const char* asked = std::getenv(glib_check_version(2, 79, 0) ? "GTK_USE_PORTAL" : "GIO_USE_PORTALS");
    return g_file_test("/.flatpak-info", G_FILE_TEST_EXISTS) || std::getenv("SNAP") ||
           (asked && std::strcmp(asked, "1") == 0);
  }();
  return sandboxed;
}

UriPortal::UriPortal() {
  if (!isSandboxed()) return;
  for (const char* scheme : {"https", "http", "tel", "sms", "mailto"}) ask(scheme);
}

bool UriPortal::supports(const std::string& scheme) {
  const auto known = answers_->find(scheme);
  if (known != answers_->end()) return known->second;
  ask(scheme);
  return isOfTheWeb(scheme);
}

void UriPortal::ask(const std::string& scheme) {
  if (answers_->size() >= mostSchemes) answers_->clear();
  (*answers_)[scheme] = isOfTheWeb(scheme);  // and is not asked again meanwhile
  g_bus_get(G_BUS_TYPE_SESSION, nullptr, onConnected, new Question{answers_, scheme});
}

void UriPortal::onConnected(GObject*, GAsyncResult* result, gpointer data) noexcept {
  std::unique_ptr<Question> question(static_cast<Question*>(data));
  const auto connection = GPtr<GDBusConnection>::adopt(g_bus_get_finish(result, nullptr));
  if (!connection || question->answers.expired()) return;
  auto* parameters = g_variant_new("(sa{sv})", question->scheme.c_str(), nullptr);
  g_dbus_connection_call(connection, "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                         "org.freedesktop.portal.OpenURI", "SchemeSupported", parameters,
                         G_VARIANT_TYPE("(b)"), G_DBUS_CALL_FLAGS_NONE, portalMilliseconds, nullptr, onAnswer,
                         question.release());
}

void UriPortal::onAnswer(GObject* connection, GAsyncResult* result, gpointer data) noexcept {
  const std::unique_ptr<Question> question(static_cast<Question*>(data));
  GError* fault = nullptr;
  const GOwned<GVariant, g_variant_unref> reply(
      g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, &fault));
  const GErrorOwned error(fault);
  const auto answers = question->answers.lock();
  if (!answers || isTooOld(error.get())) return;
  gboolean supported = FALSE;
  if (reply) g_variant_get(reply.get(), "(b)", &supported);
  if (reply || isGone(error.get()))
    (*answers)[question->scheme] = supported;
  else
    answers->erase(question->scheme);  // to be asked again
}

}  // namespace velto::gtk
