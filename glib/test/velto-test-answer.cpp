#include "velto-test-private.h"

struct _VeltoTestAnswer {
  GObject parent_instance;
  velto::headless::Answer* answer;
};

/**
 * VeltoTestAnswer:
 *
 * What the server says to a request.
 *
 * Since: 1.0
 */
G_DEFINE_FINAL_TYPE(VeltoTestAnswer, velto_test_answer, G_TYPE_OBJECT)

enum { PROP_STATUS = 1, PROP_BODY, PROP_DELAY, N_PROPS };
static GParamSpec* properties[N_PROPS];

static void velto_test_answer_get_property(GObject* object, guint id, GValue* value, GParamSpec* pspec) {
  auto* self = VELTO_TEST_ANSWER(object);
  switch (id) {
    case PROP_STATUS:
      return g_value_set_uint(value, velto_test_answer_get_status(self));
    case PROP_BODY:
      return g_value_set_string(value, velto_test_answer_get_body(self));
    case PROP_DELAY:
      return g_value_set_uint(value, velto_test_answer_get_delay(self));
    default:
      G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
  }
}

static void velto_test_answer_set_property(GObject* object, guint id, const GValue* value,
                                           GParamSpec* pspec) {
  auto* self = VELTO_TEST_ANSWER(object);
  switch (id) {
    case PROP_STATUS:
      self->answer->status = int(g_value_get_uint(value));
      return;
    case PROP_BODY: {
      const char* body = g_value_get_string(value);
      self->answer->body = body ? body : "";
      return;
    }
    case PROP_DELAY:
      return velto_test_answer_set_delay(self, g_value_get_uint(value));
    default:
      G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
  }
}

static void velto_test_answer_finalize(GObject* object) {
  delete VELTO_TEST_ANSWER(object)->answer;
  G_OBJECT_CLASS(velto_test_answer_parent_class)->finalize(object);
}

static void velto_test_answer_class_init(VeltoTestAnswerClass* klass) {
  auto* object_class = G_OBJECT_CLASS(klass);
  object_class->get_property = velto_test_answer_get_property;
  object_class->set_property = velto_test_answer_set_property;
  object_class->finalize = velto_test_answer_finalize;
  constexpr auto made = GParamFlags(G_PARAM_READWRITE | G_PARAM_CONSTRUCT_ONLY | G_PARAM_STATIC_STRINGS);
  constexpr auto writable = GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | G_PARAM_EXPLICIT_NOTIFY);

  /**
   * VeltoTestAnswer:status: (getter get_status)
   *
   * The status of HTTP.
   *
   * Since: 1.0
   */
  properties[PROP_STATUS] = g_param_spec_uint("status", nullptr, nullptr, 100, 599, 200, made);
  /**
   * VeltoTestAnswer:body: (getter get_body)
   *
   * The body.
   *
   * Since: 1.0
   */
  properties[PROP_BODY] = g_param_spec_string("body", nullptr, nullptr, "", made);
  /**
   * VeltoTestAnswer:delay: (getter get_delay) (setter set_delay)
   *
   * How long the answer is on its way, in milliseconds of [func@VeltoTest.advance].
   *
   * Since: 1.0
   */
  properties[PROP_DELAY] = g_param_spec_uint("delay", nullptr, nullptr, 0, G_MAXUINT, 0, writable);
  g_object_class_install_properties(object_class, N_PROPS, properties);
}

static void velto_test_answer_init(VeltoTestAnswer* self) {
  self->answer = new velto::headless::Answer;
}

static VeltoTestAnswer* make_sized(const char* content, const char* body, int width, int height) {
  auto* made = velto_test_answer_new(200, body);
  velto_test_answer_set_header(made, "x-content", content);
  velto_test_answer_set_header(made, "x-width", std::to_string(width).c_str());
  velto_test_answer_set_header(made, "x-height", std::to_string(height).c_str());
  return made;
}

/**
 * velto_test_answer_new:
 * @status: the status of HTTP, such as 200
 * @body: (nullable): the body
 *
 * Creates an answer without headers.
 *
 * Returns: (transfer full): a new answer
 *
 * Since: 1.0
 */
VeltoTestAnswer* velto_test_answer_new(guint status, const char* body) {
  return VELTO_TEST_ANSWER(g_object_new(VELTO_TEST_TYPE_ANSWER, "status", status, "body", body, nullptr));
}

/**
 * velto_test_answer_new_ad:
 * @markup: the page
 * @width: the ad's width, in points
 * @height: the ad's height, in points
 *
 * Creates an answer with an ad. A page that does not say by itself how its load went, as `velto://loadFinished` or
 * `velto://failLoad`, says that it has loaded.
 *
 * Returns: (transfer full): a new answer
 *
 * Since: 1.0
 */
VeltoTestAnswer* velto_test_answer_new_ad(const char* markup, int width, int height) {
  g_return_val_if_fail(markup, nullptr);
  g_return_val_if_fail(width > 0 && height > 0, nullptr);
  std::string page = markup;
  if (page.find("velto://") == std::string::npos)
    page += "<script>location.href = 'velto://loadFinished'</script>";
  return make_sized("html", page.c_str(), width, height);
}

/**
 * velto_test_answer_new_mediation:
 * @instructions: JSON that names networks
 * @width: the ad's width, in points
 * @height: the ad's height, in points
 *
 * Creates an answer that sends the application to other networks, each a [iface@Velto.Adapter].
 *
 * ```python
 * VeltoTest.Answer.new_mediation('{"mediation": [{"cn": "VeltoAdmobBannerAdapter", "e": {"adunit": "north"}}]}', 320, 50)
 * ```
 *
 * Returns: (transfer full): a new answer
 *
 * Since: 1.0
 */
VeltoTestAnswer* velto_test_answer_new_mediation(const char* instructions, int width, int height) {
  g_return_val_if_fail(instructions, nullptr);
  g_return_val_if_fail(width > 0 && height > 0, nullptr);
  return make_sized("mediation", instructions, width, height);
}

/**
 * velto_test_answer_new_no_fill:
 *
 * Creates the answer of a server that has no ad.
 *
 * Returns: (transfer full): a new answer
 *
 * Since: 1.0
 */
VeltoTestAnswer* velto_test_answer_new_no_fill() {
  return velto_test_answer_new(204, nullptr);
}

/**
 * velto_test_answer_new_no_connection:
 *
 * Creates what stands for an answer that does not come, since the server cannot be reached.
 *
 * Returns: (transfer full): a new answer
 *
 * Since: 1.0
 */
VeltoTestAnswer* velto_test_answer_new_no_connection() {
  auto* made = velto_test_answer_new(200, nullptr);
  *made->answer = velto::headless::Answer::offline();
  return made;
}

/**
 * velto_test_answer_set_header:
 * @self: an answer
 * @name: the header's name
 * @value: (nullable): its value; %NULL for none
 *
 * Sets a header.
 *
 * Since: 1.0
 */
void velto_test_answer_set_header(VeltoTestAnswer* self, const char* name, const char* value) {
  g_return_if_fail(VELTO_TEST_IS_ANSWER(self));
  g_return_if_fail(name);
  auto& headers = self->answer->headers;
  std::erase_if(headers, [&](const auto& header) { return !g_ascii_strcasecmp(header.first.c_str(), name); });
  if (value) headers.push_back({name, value});
}

/**
 * velto_test_answer_get_header:
 * @self: an answer
 * @name: the header's name
 *
 * Gets a header.
 *
 * Returns: (nullable) (transfer none): its value
 *
 * Since: 1.0
 */
const char* velto_test_answer_get_header(VeltoTestAnswer* self, const char* name) {
  g_return_val_if_fail(VELTO_TEST_IS_ANSWER(self), nullptr);
  g_return_val_if_fail(name, nullptr);
  for (const auto& [key, value] : self->answer->headers)
    if (!g_ascii_strcasecmp(key.c_str(), name)) return value.c_str();
  return nullptr;
}

/**
 * velto_test_answer_get_status: (get-property status)
 * @self: an answer
 *
 * Gets the status.
 *
 * Returns: the status of HTTP
 *
 * Since: 1.0
 */
guint velto_test_answer_get_status(VeltoTestAnswer* self) {
  g_return_val_if_fail(VELTO_TEST_IS_ANSWER(self), 0);
  return guint(self->answer->status);
}

/**
 * velto_test_answer_get_body: (get-property body)
 * @self: an answer
 *
 * Gets the body.
 *
 * Returns: (transfer none): the body
 *
 * Since: 1.0
 */
const char* velto_test_answer_get_body(VeltoTestAnswer* self) {
  g_return_val_if_fail(VELTO_TEST_IS_ANSWER(self), nullptr);
  return self->answer->body ? self->answer->body->c_str() : "";
}

/**
 * velto_test_answer_get_delay: (get-property delay)
 * @self: an answer
 *
 * Gets how long it is on its way.
 *
 * Returns: milliseconds
 *
 * Since: 1.0
 */
guint velto_test_answer_get_delay(VeltoTestAnswer* self) {
  g_return_val_if_fail(VELTO_TEST_IS_ANSWER(self), 0);
  return guint(std::chrono::duration_cast<std::chrono::milliseconds>(self->answer->delay).count());
}

/**
 * velto_test_answer_set_delay: (set-property delay)
 * @self: an answer
 * @milliseconds: how long
 *
 * Sets how long it is on its way.
 *
 * Since: 1.0
 */
void velto_test_answer_set_delay(VeltoTestAnswer* self, guint milliseconds) {
  g_return_if_fail(VELTO_TEST_IS_ANSWER(self));
  if (velto_test_answer_get_delay(self) == milliseconds) return;
  self->answer->delay = std::chrono::milliseconds(milliseconds);
  g_object_notify_by_pspec(G_OBJECT(self), properties[PROP_DELAY]);
}

namespace velto_test {

const velto::headless::Answer& answerOf(VeltoTestAnswer* answer) {
  return *answer->answer;
}

}  // namespace velto_test
