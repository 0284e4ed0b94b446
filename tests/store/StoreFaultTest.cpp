// The store of the Linux platform on a medium, and with a memory, that fails at each of its calls in turn.
#include "velto/gtk/store/DefaultsStore.h"

#include <gtest/gtest.h>

#include <set>

#include "../support/Folder.h"
#include "Faults.h"

namespace velto {
namespace {

using gtk::DefaultsStore;
using test::Fault;
using test::Faults;

[[maybe_unused]] const bool installed = [] {
  Faults::install();
  return true;
}();

using Value = std::optional<DefaultsValue>;

// What may be under each key: what was acknowledged last, and what was refused since.
class Expected {
 public:
  // The change happens, or it throws what the store is to throw, and leaves one or the other.
  template <class Change>
  void change(const std::string& key, const Value& to, const Change& change) {
    auto& allowed = allowed_[key];
    if (allowed.empty()) allowed.insert(Value());
    try {
      change();
      allowed = {to};
    } catch (const std::runtime_error&) {
      allowed.insert(to);
    }
  }
  void check(const DefaultsStore& store, bool isKnown, const std::string& when) const {
    for (const auto& [key, allowed] : allowed_) {
      const auto found = store.objectForKey(key);
      EXPECT_TRUE(allowed.contains(found) || (!isKnown && !found)) << key << " " << when;
    }
  }

 private:
  std::map<std::string, std::set<Value>> allowed_;
};

// Values of each kind come, change and go; with enough between that the log is written back, too.
void live(DefaultsStore& store, Expected& expected) {
  const auto set = [&](const std::string& key, const DefaultsValue& value) {
    expected.change(key, value, [&] { store.setObject(key, value); });
  };
  set("key", "first");
  set("flag", 1.0);
  for (const char* name : {"one", "two", "three"}) {
    const std::string track(3000, 'x');
    expected.change(name, DefaultsDictionary{{name, track}}, [&] { store.setEntry(name, name, track); });
  }
  set("key", "second");
  expected.change("flag", std::nullopt, [&] { store.removeObjectForKey("flag"); });
  for (const char* name : {"a", "b"}) set("whole", DefaultsDictionary{{name, "content"}});
}

class StoreFaults : public testing::TestWithParam<Fault> {};

TEST_P(StoreFaults, EachCallMayFailAndNothingAcknowledgedIsLost) {
  constexpr int mostCalls = 5000;
  for (const bool forEver : {false, true}) {
    for (const bool isNew : {true, false}) {
      bool came = true, everCame = false;
      for (int n = 1; came && !HasFailure(); ++n) {
        ASSERT_LT(n, mostCalls);
        const auto when = std::to_string(n) + (forEver ? " and all after" : "") + (isNew ? ", new" : "");
        const test::TemporaryFolder folder;
        const auto path = folder.path("defaults.sqlite3");
        Expected expected;
        if (!isNew) {
          DefaultsStore before(path);
          live(before, expected);
        }
        {
          DefaultsStore store(path);
          Faults::arm(GetParam(), n, forEver);
          live(store, expected);
          expected.check(store, false, "under fault " + when);
        }  // which writes the log back
        came = Faults::disarm();
        everCame = everCame || came;
        DefaultsStore next(path);
        expected.check(next, true, "in the next run, fault " + when);
        EXPECT_NO_THROW(next.setObject("key", "again")) << when;
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 3)
            << "a fault of the medium is no broken file: " << when;
      }
      EXPECT_TRUE(everCame) << "such calls there are";
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, StoreFaults, testing::ValuesIn(test::allFaults));

}  // namespace
}  // namespace velto
