// Looks into an ad's page: a script that stands before the page's own keeps what these do, and is asked from outside. Nothing
// is sent by the page, so no policy of the page's can close that way. Main thread.
#pragma once

#include <velto/platform/ui/WKWebView.h>

#include <functional>
#include <memory>
#include <set>
#include <string>

#include "preview/Journal.h"
#include "preview/Network.h"
#include "preview/Screen.h"
#include "preview/Story.h"

namespace velto::preview {

class Probe {
 public:
  // The script, for each page that is made from now on.
  static void prepare(WKWebViewConfiguration& configuration);

  // Asks the page every quarter of a second, and weighs it every second.
  Probe(Screen& screen, Journal& journal, Network& network);
  Probe(const Probe&) = delete;
  Probe& operator=(const Probe&) = delete;
  ~Probe();

  // Nothing is under way in the page that could still change anything within ten seconds.
  bool rests() const;
  // A touch has come to the page.
  bool isTouched() const { return isTouched_; }
  // The page has worked for two seconds without an answer, or says nothing at all for ten.
  bool hangs() const;
  // Asks for all that there is to know of the page as it is now, and waits for that, unless it is given up.
  void examine(const std::function<bool()>& isGivenUp = [] { return false; });

 private:
  class LibraryEars;
  struct Question;
  static gboolean ticked(gpointer self) noexcept;
  bool isAsking() const;
  void ask(bool wholly);
  void hear(const Entry& answer);
  double work() const;  // of the page's main thread so far, seconds
  void weigh();

  Screen& screen_;
  Journal& journal_;
  Network& network_;
  std::shared_ptr<LibraryEars> ears_;
  std::shared_ptr<Question> question_;  // that the page has not answered yet
  std::set<std::string> heard_;         // what is told once
  std::string askedIn_;                 // the rich-media state by then
  guint timer_ = 0;
  int ticks_ = 0;
  int restingAnswers_ = 0;
  bool isTouched_ = false;
  bool isToldHanging_ = false;
};

}  // namespace velto::preview
