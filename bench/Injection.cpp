// What the measurement service adds to a load: the same page is loaded again and again in one web view, with
// the service script in it and without, in turns. Measured is the time from the load to its end.
//
//   usage: velto-bench-injection AD_FILE LOADS
//
// Prints {"withMs": [...], "withoutMs": [...]}.
#include "velto/gtk/VeltoGtk.h"
#include "velto/measurement/OMSDK.h"
#include "velto/platform/ui/UIViewController.h"
#include "velto/platform/ui/WKWebView.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "Measure.h"

namespace {

using namespace velto;

struct LoadWatch : WKNavigationDelegate {
  bool ended = false;
  void webView(WKWebView&, const WKNavigationAction&, const DecisionHandler& decide) override {
    decide(WKNavigationActionPolicy::Cancel);
  }
  void webView(WKWebView&, const WKNavigation&) override { ended = true; }
  void webView(WKWebView&, const WKNavigation&, const NSError&) override { std::exit(1); }
};

void print(const char* name, const std::vector<double>& samples) {
  std::printf("\"%s\": [", name);
  for (size_t i = 0; i < samples.size(); ++i) std::printf("%s%.3f", i ? ", " : "", samples[i]);
  std::printf("]");
}

}  // namespace

int main(int count, char** words) {
  const int loads = count == 3 ? std::atoi(words[2]) : 0;
  std::ifstream file(count == 3 ? words[1] : "", std::ios::binary);
  const std::string ad{std::istreambuf_iterator<char>(file), {}};
  if (loads < 1 || ad.empty()) {
    std::fprintf(stderr, "usage: %s AD_FILE LOADS\n", words[0]);
    return 2;
  }
  if (!gtk_init_check()) {
    std::fprintf(stderr, "%s: no display\n", words[0]);
    return 1;
  }
  gtk::install({.applicationIdentifier = "org.example.bench"});
  OMSDK::initOMSDK();
  const std::string injected = OMSDK::htmlWithOMSDKInjection(ad);
  if (injected.size() == ad.size()) {
    std::fprintf(stderr, "%s: nothing was injected\n", words[0]);
    return 1;
  }
  auto* window = GTK_WINDOW(gtk_window_new());
  auto controller = gtk::hostViewController(window);
  gtk_window_present(window);
  auto view = WKWebView::initWithFrame({{0, 0}, {320, 50}}, {});
  const auto watch = std::make_shared<LoadWatch>();
  view->setNavigationDelegate(watch);
  controller->view()->addSubview(view);

  std::vector<double> with;
  std::vector<double> without;
  constexpr int warmUp = 5;
  for (int load = -warmUp; load < loads; ++load)
    for (const bool first : {true, false}) {
      const bool isInjected = first == (load % 2 == 0);
      watch->ended = false;
      const double start = bench::wallMilliseconds();
      view->loadHTMLString(isInjected ? injected : ad, std::nullopt);
      while (!watch->ended) g_main_context_iteration(nullptr, TRUE);
      const double spent = bench::wallMilliseconds() - start;
      if (load >= 0) (isInjected ? with : without).push_back(spent);
    }
  std::printf("{");
  print("withMs", with);
  std::printf(", ");
  print("withoutMs", without);
  std::printf("}\n");
  view.reset();
  controller.reset();
  gtk::uninstall();
  gtk_window_destroy(window);
}
