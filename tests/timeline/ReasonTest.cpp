// Reasons: their words, as people find them in the documentation, and that of a record which nobody ends.
#include "velto/headless/VeltoHeadless.h"
#include "velto/timeline/LoadRecord.h"

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

TEST(ReasonTest, ARecordThatNobodyHoldsHasEnded) {
  const auto platform = headless::Platform::install();
  PlacementRecord placement("own");
  placement.begin(VeltoAskedBy::Application).reset();
  auto held = placement.begin(VeltoAskedBy::Application);
  headless::Platform::uninstall();
  held.reset();
  EXPECT_EQ(placement.timelines().front().end, VeltoAdEndReason::ControllerGone);
  EXPECT_EQ(placement.timelines().back().end, VeltoAdEndReason::PlatformGone);
}

}  // namespace
}  // namespace velto
