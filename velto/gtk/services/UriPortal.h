// Which URLs the desktop opens for an application in a sandbox,
// which cannot see the others (the OpenURI portal). Main thread.
#pragma once

#include "velto/platform/foundation/GMemory.h"

#include <gio/gio.h>

#include <map>
#include <memory>
#include <string>

namespace velto::gtk {

// Whether this process is in a sandbox that has portals, as GLib finds it out.
bool isSandboxed();

class UriPortal {
 public:
  // The schemes of which pages are told whether they work are asked for at once, in a sandbox.
  UriPortal();

  // The portal's last answer. Nothing waits for it: until it has come, and with portals too old to be asked,
  // pages of the web are opened and nothing else is.
  bool supports(const std::string& scheme);
  void forget() { answers_->clear(); }

 private:
  using Answers = std::map<std::string, bool>;
  struct Question;
  void ask(const std::string& scheme);
  static void onConnected(GObject*, GAsyncResult* result, gpointer question) noexcept;
  static void onAnswer(GObject* connection, GAsyncResult* result, gpointer question) noexcept;

  std::shared_ptr<Answers> answers_ = std::make_shared<Answers>();
};

}  // namespace velto::gtk
