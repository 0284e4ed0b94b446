// Which web processes are there for the pages of more than one place: one for each site, and another when that has no room
// left. A page that is of no site has its process for itself. Two sites never meet in one: what a page can read of its own
// process, it could read of another's.
//
// What this saves is memory, some 20 MiB a page. It costs independence: a page that hangs holds up the others of its
// process, one that crashes takes them along, each to come back with its next load or refresh; and what one of them costs cannot be
// told apart. So rich media has processes of its own, and so have places from which heavy ads are to be removed. Part of the
// view system; main thread.
#pragma once

#include "velto/gtk/web/WebProcesses.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto::gtk {

class SharedProcesses {
 public:
  // Whether there is one with room for the page that comes next, of whatever site.
  bool isAny() const;
  void ask() const;  // whether they still answer (WebProcess)
  // A view in a process of the site.
  std::optional<Engine> viewOf(const std::string& site) const;
  // The engine that a page of the site begins with: from here on others of the site may come to it.
  void add(const Engine& engine, const std::string& site);

 private:
  std::vector<std::weak_ptr<WebProcess>> processes_;
};

}  // namespace velto::gtk
