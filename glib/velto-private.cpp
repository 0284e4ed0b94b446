#include "velto-private.h"

#include <array>
#include <cstring>

/**
 * velto_ad_error_quark:
 *
 * Gets the domain of [error@Velto.AdError].
 *
 * Returns: the domain
 *
 * Since: 1.0
 */
GQuark velto_ad_error_quark() {
  return g_quark_from_static_string("velto-ad-error-quark");
}

/**
 * velto_ad_error_get_reason:
 * @error: an error of [error@Velto.AdError]
 *
 * Gets the finer cause, such as "name-not-found"; the reasons are those of [method@Velto.Timeline.get_reason].
 *
 * Returns: (nullable) (transfer none): the reason, or %NULL where there is none but the code
 *
 * Since: 1.0
 */
// Bindings hand an error over by its code and words, which begin with those of its reason.
const char* velto_ad_error_get_reason(const GError* error) {
  g_return_val_if_fail(error, nullptr);
  if (error->domain != VELTO_AD_ERROR) return nullptr;
  for (const auto& words : velto::veltoAdEndReasons())
    if (g_str_has_prefix(error->message, words.sentence.data())) return words.name.data();
  return nullptr;
}

/**
 * velto_client_error_quark:
 *
 * Gets the domain of [error@Velto.ClientError].
 *
 * Returns: the domain
 *
 * Since: 1.0
 */
GQuark velto_client_error_quark() {
  return g_quark_from_static_string("velto-client-error-quark");
}

namespace velto_glib {

// While nobody runs the default context, as before the main loop, any thread may take it.
bool isMainThread(const char* function) {
  auto* context = g_main_context_default();
  if (g_main_context_is_owner(context)) return true;
  if (g_main_context_acquire(context)) {
    g_main_context_release(context);
    return true;
  }
  g_critical("%s: called on another thread than that of the main loop; use g_idle_add() to get there",
             function);
  return false;
}

bool isValueOf(GType enumeration, int value, const char* function) {
  auto* klass = static_cast<GEnumClass*>(g_type_class_ref(enumeration));
  const bool isOne = g_enum_get_value(klass, value);
  if (!isOne)
    g_critical("%s: %d is no %s: use %s to %s", function, value, g_type_name(enumeration),
               klass->values[0].value_name, klass->values[klass->n_values - 1].value_name);
  g_type_class_unref(klass);
  return isOne;
}

bool isStarted(const char* function) {
  if (velto_client_get_default()) return true;
  g_critical("%s: no ads without a client: call velto_client_start() before", function);
  return false;
}

GError* errorFrom(const velto::VeltoErrorAd& error) {
  static constexpr std::array words{"the server has no ad for this place now", "the server or the ad failed",
                                    "the ad cannot be used here", "the ad was given up",
                                    "the server cannot be reached"};
  const bool isKnown = error.errorCode >= 0 && error.errorCode < int64_t(words.size());
  const int code = isKnown ? int(error.errorCode) : int(VELTO_AD_ERROR_SERVER);
  std::string message = words[size_t(code)];
  if (error.reason != velto::VeltoAdEndReason::Unexplained) message = wordsOf(error.reason).sentence;
  // The library's own words say no more than the reason.
  const bool says = error.error && error.error->domain != velto::constVeltoBundleIdentifier;
  if (says && !error.error->localizedDescription.empty())
    message.append(" ").append(error.error->localizedDescription);
  return g_error_new_literal(VELTO_AD_ERROR, code, message.c_str());
}

// Without the C++ function that it begins with.
static const char* wordsOf(const std::exception& exception) {
  const char* words = exception.what();
  const char* rest = words + std::strspn(words, G_CSET_A_2_Z G_CSET_a_2_z ":");
  return rest > words && rest[-1] == ':' && *rest == ' ' ? rest + 1 : words;
}

GError* adErrorFrom(const std::exception& exception) {
  return g_error_new_literal(VELTO_AD_ERROR, VELTO_AD_ERROR_DEVELOPER, wordsOf(exception));
}

GError* errorFrom(const std::exception& exception) {
  const bool isInvalid = dynamic_cast<const std::invalid_argument*>(&exception);
  return g_error_new_literal(VELTO_CLIENT_ERROR,
                             isInvalid ? VELTO_CLIENT_ERROR_INVALID : VELTO_CLIENT_ERROR_FAILED,
                             wordsOf(exception));
}

}  // namespace velto_glib
