#include <velto/platform/foundation/JSON.h>

#include "velto-test-private.h"

struct _VeltoTestRequest {
  GObject parent_instance;
  velto::NSURLRequest* request;  // null for one that nobody has sent
  std::string* url;
};

/**
 * VeltoTestRequest:
 *
 * A request that the application has sent.
 *
 * Since: 1.0
 */
G_DEFINE_FINAL_TYPE(VeltoTestRequest, velto_test_request, G_TYPE_OBJECT)

enum { PROP_URL = 1, PROP_METHOD, PROP_BODY, N_PROPS };
static GParamSpec* properties[N_PROPS];

static void velto_test_request_get_property(GObject* object, guint id, GValue* value, GParamSpec* pspec) {
  auto* self = VELTO_TEST_REQUEST(object);
  switch (id) {
    case PROP_URL:
      return g_value_set_string(value, velto_test_request_get_url(self));
    case PROP_METHOD:
      return g_value_set_string(value, velto_test_request_get_method(self));
    case PROP_BODY:
      return g_value_set_string(value, velto_test_request_get_body(self));
    default:
      G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
  }
}

static void velto_test_request_finalize(GObject* object) {
  delete VELTO_TEST_REQUEST(object)->request;
  delete VELTO_TEST_REQUEST(object)->url;
  G_OBJECT_CLASS(velto_test_request_parent_class)->finalize(object);
}

static void velto_test_request_class_init(VeltoTestRequestClass* klass) {
  auto* object_class = G_OBJECT_CLASS(klass);
  object_class->get_property = velto_test_request_get_property;
  object_class->finalize = velto_test_request_finalize;
  constexpr auto flags = GParamFlags(G_PARAM_READABLE | G_PARAM_STATIC_STRINGS);
  /**
   * VeltoTestRequest:url: (getter get_url)
   *
   * Its address.
   *
   * Since: 1.0
   */
  properties[PROP_URL] = g_param_spec_string("url", nullptr, nullptr, nullptr, flags);
  /**
   * VeltoTestRequest:method: (getter get_method)
   *
   * The method of HTTP.
   *
   * Since: 1.0
   */
  properties[PROP_METHOD] = g_param_spec_string("method", nullptr, nullptr, nullptr, flags);
  /**
   * VeltoTestRequest:body: (getter get_body)
   *
   * Its body; that of a request for an ad is JSON.
   *
   * Since: 1.0
   */
  properties[PROP_BODY] = g_param_spec_string("body", nullptr, nullptr, nullptr, flags);
  g_object_class_install_properties(object_class, N_PROPS, properties);
}

static void velto_test_request_init(VeltoTestRequest* self) {
  self->url = new std::string;
}

static char* dup(const std::optional<std::string>& text) {
  return text ? g_strdup(text->c_str()) : nullptr;
}

/**
 * velto_test_request_get_url: (get-property url)
 * @self: a request
 *
 * Gets its address.
 *
 * Returns: (transfer none): the address
 *
 * Since: 1.0
 */
const char* velto_test_request_get_url(VeltoTestRequest* self) {
  g_return_val_if_fail(VELTO_TEST_IS_REQUEST(self), nullptr);
  return self->url->c_str();
}

/**
 * velto_test_request_get_method: (get-property method)
 * @self: a request
 *
 * Gets the method of HTTP.
 *
 * Returns: (transfer none): the method, such as "POST"
 *
 * Since: 1.0
 */
const char* velto_test_request_get_method(VeltoTestRequest* self) {
  g_return_val_if_fail(VELTO_TEST_IS_REQUEST(self), nullptr);
  return self->request ? self->request->httpMethod.c_str() : "";
}

/**
 * velto_test_request_get_body: (get-property body)
 * @self: a request
 *
 * Gets its body.
 *
 * Returns: (nullable) (transfer none): the body
 *
 * Since: 1.0
 */
const char* velto_test_request_get_body(VeltoTestRequest* self) {
  g_return_val_if_fail(VELTO_TEST_IS_REQUEST(self), nullptr);
  return self->request && self->request->httpBody ? self->request->httpBody->c_str() : nullptr;
}

/**
 * velto_test_request_dup_header:
 * @self: a request
 * @name: the header's name
 *
 * Gets a header.
 *
 * Returns: (nullable) (transfer full): its value
 *
 * Since: 1.0
 */
char* velto_test_request_dup_header(VeltoTestRequest* self, const char* name) {
  g_return_val_if_fail(VELTO_TEST_IS_REQUEST(self), nullptr);
  g_return_val_if_fail(name, nullptr);
  return self->request ? dup(self->request->allHTTPHeaderFields.value(name)) : nullptr;
}

/**
 * velto_test_request_dup_parameter:
 * @self: a request
 * @name: the parameter's name, such as "k" for the publisher key
 *
 * Gets a parameter of the address.
 *
 * Returns: (nullable) (transfer full): its value
 *
 * Since: 1.0
 */
char* velto_test_request_dup_parameter(VeltoTestRequest* self, const char* name) {
  g_return_val_if_fail(VELTO_TEST_IS_REQUEST(self), nullptr);
  g_return_val_if_fail(name, nullptr);
  const auto items = self->request ? self->request->url.queryItems() : std::nullopt;
  if (!items) return nullptr;
  for (const auto& item : *items)
    if (item.name == name) return g_strdup(item.value.value_or("").c_str());
  return nullptr;
}

/**
 * velto_test_request_dup_field:
 * @self: a request
 * @name: the field's name
 *
 * Gets a field of the body's JSON: a text as it is, everything else as JSON.
 *
 * Returns: (nullable) (transfer full): its value
 *
 * Since: 1.0
 */
char* velto_test_request_dup_field(VeltoTestRequest* self, const char* name) {
  g_return_val_if_fail(VELTO_TEST_IS_REQUEST(self), nullptr);
  g_return_val_if_fail(name, nullptr);
  const char* text = velto_test_request_get_body(self);
  const auto body = velto::readJSON(text ? text : "");
  if (!body || !body->object()) return nullptr;
  const auto found = body->object()->find(name);
  if (found == body->object()->end()) return nullptr;
  return dup(found->second.string() ? *found->second.string() : velto::writeJSON(found->second, false));
}

namespace velto_test {

VeltoTestRequest* newRequest(const velto::NSURLRequest& request) {
  auto* made = VELTO_TEST_REQUEST(g_object_new(VELTO_TEST_TYPE_REQUEST, nullptr));
  made->request = new velto::NSURLRequest(request);
  *made->url = request.url.absoluteString();
  return made;
}

}  // namespace velto_test
