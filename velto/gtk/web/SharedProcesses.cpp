// A list of processes that do not live by being in it.
#include "velto/gtk/web/SharedProcesses.h"

namespace velto::gtk {
namespace {

bool takes(const std::shared_ptr<WebProcess>& process) {
  return process && process->view() && !process->site().empty() && process->hasRoom() &&
         process->isResponsive();
}

}  // namespace

bool SharedProcesses::isAny() const {
  for (const auto& one : processes_)
    if (takes(one.lock())) return true;
  return false;
}

void SharedProcesses::ask() const {
  for (const auto& one : processes_)
    if (const auto process = one.lock(); takes(process)) process->ask();
}

std::optional<Engine> SharedProcesses::viewOf(const std::string& site) const {
  for (const auto& one : processes_)
    if (const auto process = one.lock(); takes(process) && process->site() == site)
      return relatedEngine(process->view(), process);
  return std::nullopt;
}

void SharedProcesses::add(const Engine& engine, const std::string& site) {
  std::erase_if(processes_, [&](const auto& one) { return one.expired() || one.lock() == engine.process; });
  engine.process->setSite(site);
  if (!site.empty()) processes_.push_back(engine.process);
}

}  // namespace velto::gtk
