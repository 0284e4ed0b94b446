// The words for each reason, as people find them in the documentation.
#include "velto/timeline/VeltoAdEndReason.h"

#include <gtest/gtest.h>

#include "../support/Folder.h"

namespace velto {
namespace {

TEST(ReasonTest, TheDocumentLeadsThroughAllOfThem) {
  const auto text = test::textOf(VELTO_DIAGNOSIS);
  for (const auto& row : veltoAdEndReasons()) {
    const auto line = "| `" + std::string(row.name) + "` | " + std::string(row.sentence) + " | " +
                      std::string(row.advice) + " |";
    EXPECT_NE(text.find(line), std::string::npos) << line;
  }
}

}  // namespace
}  // namespace velto
