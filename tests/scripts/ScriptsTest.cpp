// The page scripts' modules by themselves: their own suites (the folders beside this file), in the engine's bare JavaScript
// and once more in a page.
#include <gtest/gtest.h>
#include <webkit/webkit.h>

#include <fstream>
#include <optional>
#include <sstream>

#include "../support/MainLoop.h"

namespace velto::test {
namespace {

class Scripts : public testing::TestWithParam<const char*> {
 protected:
  Scripts() { gtk_init(); }
  // The bundled suite with its run behind it, whose value is the report.
  static std::string suite() {
    std::ifstream file(std::string(VELTO_SCRIPT_SUITES "/") + GetParam() + ".js");
    std::ostringstream text;
    text << file.rdbuf() << "\nveltoRunTests()";
    return text.str();
  }
  static void judge(const std::string& report) {
    EXPECT_TRUE(report.ends_with(" cases passed") && !report.starts_with("0 ")) << report;
  }
};

// First, since pages never load in a process that has run bare scripts before.
TEST_P(Scripts, HoldInAPage) {
  auto* view = WEBKIT_WEB_VIEW(g_object_ref_sink(webkit_web_view_new()));
  webkit_web_view_load_html(view, "<html></html>", nullptr);
  ASSERT_TRUE(runUntil([&] { return !webkit_web_view_is_loading(view); }));
  std::optional<std::string> report;
  webkit_web_view_evaluate_javascript(
      view, suite().c_str(), -1, nullptr, nullptr, nullptr,
      [](GObject* source, GAsyncResult* result, gpointer found) {
        GError* error = nullptr;
        auto* value = webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(source), result, &error);
        char* text = value ? jsc_value_to_string(value) : g_strdup(error->message);
        *static_cast<std::optional<std::string>*>(found) = text;
        g_free(text);
        g_clear_object(&value);
        g_clear_error(&error);
      },
      &report);
  ASSERT_TRUE(runUntil([&] { return report.has_value(); }));
  judge(*report);
  g_object_unref(view);
}

TEST_P(Scripts, HoldInBareJavaScript) {
  JSCContext* context = jsc_context_new();
  JSCValue* value = jsc_context_evaluate_with_source_uri(context, suite().c_str(), -1, GetParam(), 1);
  if (JSCException* exception = jsc_context_get_exception(context))
    ADD_FAILURE() << jsc_exception_report(exception);
  char* text = jsc_value_to_string(value);
  judge(text);
  g_free(text);
  g_object_unref(value);
  g_object_unref(context);
}

INSTANTIATE_TEST_SUITE_P(All, Scripts, testing::Values("mraid", "measurement"),
                         [](const auto& script) { return script.param; });

}  // namespace
}  // namespace velto::test
