// The server: rules, and what it has heard. The newest one plays.
#include <algorithm>

#include "velto-test-ground-private.h"

using velto_test::TestGround;

namespace {

struct Rule {
  std::string part;
  VeltoTestAnswer* answer;  // owned by the server
  bool once;
};

VeltoTestServer* newest = nullptr;

// A click is told to this address; "1" says that it has been counted.
constexpr char tracking[] = "trk_";

}  // namespace

struct _VeltoTestServer {
  GObject parent_instance;
  std::vector<Rule>* rules;
  GPtrArray* requests;
  gboolean pages_finish;
};

/**
 * VeltoTestServer:
 *
 * The ad server of a test, and with it the whole world outside the application.
 *
 * From the first one on, a process has neither network nor web engine for its ads, and time passes for them only by
 * [func@VeltoTest.advance]. So make one before the client starts and before any ad is made.
 *
 * ```python
 * server = VeltoTest.Server()
 * server.respond(None, VeltoTest.Answer.new_ad("<b>Tea</b>", 320, 50))
 * client.start()
 * ```
 *
 * A new server takes the place of the one before, and the world begins anew, at the first moment of the year 2024: nothing
 * has been scripted or sent, nothing is on its way, and ads that exist do nothing from here on; a video ad can be loaded
 * anew. The client that has been started stays, so each test may begin with a server of its own.
 *
 * What nobody has scripted: there is no ad, and clicks are counted.
 *
 * Since: 1.0
 */
G_DEFINE_FINAL_TYPE(VeltoTestServer, velto_test_server, G_TYPE_OBJECT)

enum { PROP_PAGES_FINISH = 1, N_PROPS };
static GParamSpec* properties[N_PROPS];

static void velto_test_server_get_property(GObject* object, guint id, GValue* value, GParamSpec* pspec) {
  if (id == PROP_PAGES_FINISH)
    g_value_set_boolean(value, VELTO_TEST_SERVER(object)->pages_finish);
  else
    G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
}

static void velto_test_server_set_property(GObject* object, guint id, const GValue* value,
                                           GParamSpec* pspec) {
  if (id == PROP_PAGES_FINISH)
    velto_test_server_set_pages_finish(VELTO_TEST_SERVER(object), g_value_get_boolean(value));
  else
    G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
}

static void velto_test_server_finalize(GObject* object) {
  auto* self = VELTO_TEST_SERVER(object);
  if (newest == self) newest = nullptr;
  for (const auto& rule : *self->rules) g_object_unref(rule.answer);
  delete self->rules;
  g_ptr_array_unref(self->requests);
  G_OBJECT_CLASS(velto_test_server_parent_class)->finalize(object);
}

static void velto_test_server_class_init(VeltoTestServerClass* klass) {
  auto* object_class = G_OBJECT_CLASS(klass);
  object_class->get_property = velto_test_server_get_property;
  object_class->set_property = velto_test_server_set_property;
  object_class->finalize = velto_test_server_finalize;
  /**
   * VeltoTestServer:pages-finish: (getter get_pages_finish) (setter set_pages_finish)
   *
   * Whether the page of an ad finishes its load by itself. If not, the test plays the page: [func@VeltoTest.finish_page].
   *
   * Since: 1.0
   */
  properties[PROP_PAGES_FINISH] =
      g_param_spec_boolean("pages-finish", nullptr, nullptr, TRUE,
                           GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | G_PARAM_EXPLICIT_NOTIFY));
  g_object_class_install_properties(object_class, N_PROPS, properties);
}

static void velto_test_server_init(VeltoTestServer* self) {
  self->rules = new std::vector<Rule>;
  self->requests = g_ptr_array_new_with_free_func(g_object_unref);
  self->pages_finish = TRUE;
  newest = self;
  velto_glib::guarded("velto_test_server_new", [] { TestGround::current().begin(); });
}

static void add_rule(VeltoTestServer* self, const char* part, VeltoTestAnswer* answer, bool once) {
  self->rules->push_back({part ? part : "", VELTO_TEST_ANSWER(g_object_ref(answer)), once});
}

/**
 * velto_test_server_new:
 *
 * Creates a server, and the world begins anew.
 *
 * Returns: (transfer full): a new server
 *
 * Since: 1.0
 */
VeltoTestServer* velto_test_server_new() {
  velto_return_val_if_elsewhere(nullptr);
  return VELTO_TEST_SERVER(g_object_new(VELTO_TEST_TYPE_SERVER, nullptr));
}

/**
 * velto_test_server_respond:
 * @self: a server
 * @part: (nullable): what the address contains; %NULL for every request
 * @answer: the answer
 *
 * Says how requests are answered from now on. Of several answers for one request, the newest counts.
 *
 * Since: 1.0
 */
void velto_test_server_respond(VeltoTestServer* self, const char* part, VeltoTestAnswer* answer) {
  g_return_if_fail(VELTO_TEST_IS_SERVER(self));
  velto_return_if_elsewhere();
  g_return_if_fail(VELTO_TEST_IS_ANSWER(answer));
  add_rule(self, part, answer, false);
}

/**
 * velto_test_server_respond_once:
 * @self: a server
 * @part: (nullable): what the address contains; %NULL for every request
 * @answer: the answer
 *
 * Says how the next such request is answered, before all that [method@VeltoTest.Server.respond] says; the one after it by
 * the next call of this.
 *
 * Since: 1.0
 */
void velto_test_server_respond_once(VeltoTestServer* self, const char* part, VeltoTestAnswer* answer) {
  g_return_if_fail(VELTO_TEST_IS_SERVER(self));
  velto_return_if_elsewhere();
  g_return_if_fail(VELTO_TEST_IS_ANSWER(answer));
  add_rule(self, part, answer, true);
}

/**
 * velto_test_server_set_video:
 * @self: a server
 * @address: the address of a video
 * @milliseconds: how long it is; 0 for one that is not there
 *
 * Says what is behind the address of a video. Without a word it is one of ten seconds.
 *
 * Since: 1.0
 */
void velto_test_server_set_video(VeltoTestServer* self, const char* address, guint milliseconds) {
  g_return_if_fail(VELTO_TEST_IS_SERVER(self));
  velto_return_if_elsewhere();
  g_return_if_fail(address);
  if (self != newest) return;
  velto::headless::VideoScript script;
  script.duration = {int64_t(milliseconds), 1000};
  script.loadFails = milliseconds == 0;
  TestGround::current().platform().media().setVideo(address, script);
}

/**
 * velto_test_server_get_requests:
 * @self: a server
 * @part: (nullable): what the address contains; %NULL for every request
 *
 * Gets the requests that have been sent, in their order.
 *
 * Returns: (transfer container) (element-type VeltoTestRequest): the requests
 *
 * Since: 1.0
 */
GPtrArray* velto_test_server_get_requests(VeltoTestServer* self, const char* part) {
  g_return_val_if_fail(VELTO_TEST_IS_SERVER(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  auto* found = g_ptr_array_new_with_free_func(g_object_unref);
  for (guint i = 0; i < self->requests->len; ++i) {
    auto* request = VELTO_TEST_REQUEST(self->requests->pdata[i]);
    if (!part || std::string_view(velto_test_request_get_url(request)).find(part) != std::string_view::npos)
      g_ptr_array_add(found, g_object_ref(request));
  }
  return found;
}

/**
 * velto_test_server_dup_opened:
 * @self: a server
 *
 * Gets the addresses that ads have opened outside the application, in their order.
 *
 * Returns: (transfer full) (array zero-terminated=1): the addresses
 *
 * Since: 1.0
 */
char** velto_test_server_dup_opened(VeltoTestServer* self) {
  g_return_val_if_fail(VELTO_TEST_IS_SERVER(self), nullptr);
  velto_return_val_if_elsewhere(nullptr);
  auto* builder = g_strv_builder_new();
  if (self == newest)
    for (const auto& opened : TestGround::current().platform().application().opened)
      g_strv_builder_add(builder, opened.url.absoluteString().c_str());
  auto** addresses = g_strv_builder_end(builder);
  g_strv_builder_unref(builder);
  return addresses;
}

/**
 * velto_test_server_get_pages_finish: (get-property pages-finish)
 * @self: a server
 *
 * Gets whether the page of an ad finishes its load by itself.
 *
 * Returns: whether it does
 *
 * Since: 1.0
 */
gboolean velto_test_server_get_pages_finish(VeltoTestServer* self) {
  g_return_val_if_fail(VELTO_TEST_IS_SERVER(self), FALSE);
  return self->pages_finish;
}

/**
 * velto_test_server_set_pages_finish: (set-property pages-finish)
 * @self: a server
 * @pages_finish: whether it does
 *
 * Sets whether the page of an ad finishes its load by itself.
 *
 * Since: 1.0
 */
void velto_test_server_set_pages_finish(VeltoTestServer* self, gboolean pages_finish) {
  g_return_if_fail(VELTO_TEST_IS_SERVER(self));
  velto_return_if_elsewhere();
  if (self->pages_finish == !!pages_finish) return;
  self->pages_finish = !!pages_finish;
  if (self == newest) TestGround::current().platform().setPagesFinishByThemselves(self->pages_finish);
  g_object_notify_by_pspec(G_OBJECT(self), properties[PROP_PAGES_FINISH]);
}

namespace velto_test {

velto::headless::Answer answerTo(const velto::NSURLRequest& request) {
  auto* made = newRequest(request);
  const std::string_view url = velto_test_request_get_url(made);
  if (!newest) {
    g_object_unref(made);
    return velto::headless::Answer::offline();
  }
  const bool isClick = url.find(tracking) != std::string_view::npos;
  velto::headless::Answer answer{.status = isClick ? 200 : 204, .body = isClick ? "1" : ""};
  g_ptr_array_add(newest->requests, made);
  auto& rules = *newest->rules;
  const auto meant = [&](bool once) {
    return [&, once](const Rule& rule) { return rule.once == once && url.find(rule.part) != url.npos; };
  };
  const auto next = std::find_if(rules.begin(), rules.end(), meant(true));
  if (next != rules.end()) {
    answer = answerOf(next->answer);
    g_object_unref(next->answer);
    rules.erase(next);
  } else if (const auto rule = std::find_if(rules.rbegin(), rules.rend(), meant(false));
             rule != rules.rend()) {
    answer = answerOf(rule->answer);
  }
  return answer;
}

}  // namespace velto_test
