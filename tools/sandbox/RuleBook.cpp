// See RuleBook.h.
#include "sandbox/RuleBook.h"

#include <algorithm>

namespace velto::sandbox {

namespace {

bool equalOrUnset(const std::optional<std::string>& wanted, const std::string& value) {
  return !wanted || *wanted == value;
}

bool pathMatches(const std::optional<std::string>& wanted, const std::string& path) {
  if (!wanted) return true;
  if (wanted->ends_with('*')) return path.starts_with(wanted->substr(0, wanted->size() - 1));
  return path == *wanted;
}

bool meets(const Match& when, const RequestFacts& facts) {
  return (!when.kind || *when.kind == facts.kind) && equalOrUnset(when.key, facts.key) &&
         equalOrUnset(when.type, facts.type) && equalOrUnset(when.size, facts.size) &&
         equalOrUnset(when.host, facts.host) && equalOrUnset(when.endpoint, facts.endpoint) &&
         pathMatches(when.path, facts.path) && equalOrUnset(when.item, facts.item);
}

}  // namespace

void RuleBook::append(Rule rule) {
  const std::lock_guard lock(mutex_);
  if (rule.name.empty()) rule.name = "rule " + std::to_string(++unnamed_);
  entries_.push_back({std::move(rule)});
}

void RuleBook::prepend(Rule rule) {
  const std::lock_guard lock(mutex_);
  if (rule.name.empty()) rule.name = "rule " + std::to_string(++unnamed_);
  entries_.insert(entries_.begin(), {std::move(rule)});
}

RuleBook::Entry* RuleBook::pick(const RequestFacts& facts, bool handshake) {
  Entry* picked = nullptr;
  for (Entry& entry : entries_) {
    const bool forHandshakes = entry.rule.tls != TlsFault::None;
    if (forHandshakes != handshake || !meets(entry.rule.when, facts)) continue;
    ++entry.met;
    if (!picked && entry.rule.when.count.admits(entry.met)) picked = &entry;
  }
  if (picked) ++picked->answered;
  return picked;
}

std::optional<ChosenAnswer> RuleBook::choose(const RequestFacts& facts) {
  const std::lock_guard lock(mutex_);
  const Entry* entry = pick(facts, false);
  if (!entry) return std::nullopt;
  const std::vector<Answer>& answers = entry->rule.answers;
  if (answers.empty()) return ChosenAnswer{entry->rule.name, Answer{}, entry->answered};
  return ChosenAnswer{entry->rule.name, answers[std::min(entry->answered, answers.size()) - 1],
                      entry->answered};
}

std::optional<std::pair<std::string, TlsFault>> RuleBook::chooseTls(const RequestFacts& facts) {
  const std::lock_guard lock(mutex_);
  const Entry* entry = pick(facts, true);
  if (!entry) return std::nullopt;
  return std::pair(entry->rule.name, entry->rule.tls);
}

}  // namespace velto::sandbox
