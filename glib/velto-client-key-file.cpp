// A client from a key file: its keys are the names of the properties.
#include <cstring>
#include <memory>

#include "velto-client-private.h"

namespace {

constexpr char group[] = "Velto";

using Text = std::unique_ptr<char, decltype(&g_free)>;

bool refuse(GError** error, const char* key, const char* why) {
  g_set_error(error, VELTO_CLIENT_ERROR, VELTO_CLIENT_ERROR_INVALID, "%s: %s", key, why);
  return false;
}

// "ads.example.com=127.0.0.1:8443;…"
bool setHostMap(GKeyFile* file, const char* key, GValue* value, GError** error) {
  gsize count = 0;
  auto** entries = g_key_file_get_string_list(file, group, key, &count, error);
  if (!entries) return false;
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("a{ss}"));
  bool isGood = true;
  for (gsize i = 0; i < count && isGood; ++i) {
    auto* equals = std::strchr(entries[i], '=');
    if (equals) *equals = '\0';
    isGood = equals || refuse(error, key, "not a list of host=address;");
    if (isGood) g_variant_builder_add(&builder, "{ss}", entries[i], equals + 1);
  }
  g_strfreev(entries);
  if (isGood)
    g_value_set_variant(value, g_variant_builder_end(&builder));
  else
    g_variant_builder_clear(&builder);
  return isGood;
}

bool read(GKeyFile* file, const char* key, GValue* value, GError** error) {
  GError* wrong = nullptr;
  const GType type = G_VALUE_TYPE(value);
  if (type == G_TYPE_VARIANT) return setHostMap(file, key, value, error);
  if (type == G_TYPE_BOOLEAN) {
    g_value_set_boolean(value, g_key_file_get_boolean(file, group, key, &wrong));
  } else if (type == G_TYPE_UINT) {
    const guint64 number = g_key_file_get_uint64(file, group, key, &wrong);
    if (!wrong && number > G_MAXUINT) return refuse(error, key, "too large");
    g_value_set_uint(value, guint(number));
  } else {
    const Text text(g_key_file_get_string(file, group, key, &wrong), g_free);
    if (text && type == G_TYPE_FILE) {
      auto* path = g_file_new_for_path(text.get());
      g_value_take_object(value, path);
    } else if (text && G_TYPE_IS_ENUM(type)) {
      auto* klass = static_cast<GEnumClass*>(g_type_class_ref(type));
      const auto* choice = g_enum_get_value_by_nick(klass, text.get());
      if (choice) g_value_set_enum(value, choice->value);
      g_type_class_unref(klass);
      if (!choice) return refuse(error, key, "not one of its values");
    } else if (text) {
      g_value_set_string(value, text.get());
    }
  }
  if (wrong) g_propagate_error(error, wrong);
  return !wrong;
}

bool set(VeltoClient* client, GKeyFile* file, const char* key, GError** error) {
  auto* property = g_object_class_find_property(G_OBJECT_GET_CLASS(client), key);
  if (!property || !(property->flags & G_PARAM_WRITABLE)) return refuse(error, key, "no such property");
  GValue value = G_VALUE_INIT;
  g_value_init(&value, property->value_type);
  bool isGood = read(file, key, &value, error);
  if (isGood && g_param_value_validate(property, &value)) isGood = refuse(error, key, "out of range");
  if (isGood) g_object_set_property(G_OBJECT(client), key, &value);
  g_value_unset(&value);
  return isGood;
}

}  // namespace

/**
 * velto_client_new_from_key_file:
 * @key_file: a key file
 * @error: return location for an error of [error@Velto.ClientError] or [error@GLib.KeyFileError]
 *
 * Creates a client with the values of the group `Velto`, such as an application's settings for tests.
 *
 * The keys are the names of the properties. Enumerations are written by their nicks, [property@Velto.Client:ca-file] as a
 * path, and [property@Velto.Client:host-map] as a list:
 *
 * ```
 * [Velto]
 * application-id=org.example.player
 * publisher-key=your-publisher-key
 * test-mode=true
 * host-map=*.velto.example=127.0.0.1:8443;
 * ```
 *
 * Returns: (transfer full) (nullable): a new client, or %NULL with an error
 *
 * Since: 1.0
 */
VeltoClient* velto_client_new_from_key_file(GKeyFile* key_file, GError** error) {
  velto_return_val_if_elsewhere(nullptr);
  g_return_val_if_fail(key_file, nullptr);
  g_return_val_if_fail(!error || !*error, nullptr);
  auto** keys = g_key_file_get_keys(key_file, group, nullptr, error);
  if (!keys) return nullptr;
  auto* client = VELTO_CLIENT(g_object_new(VELTO_TYPE_CLIENT, nullptr));
  for (char** key = keys; *key; ++key) {
    if (set(client, key_file, *key, error)) continue;
    g_clear_object(&client);
    break;
  }
  g_strfreev(keys);
  return client;
}
