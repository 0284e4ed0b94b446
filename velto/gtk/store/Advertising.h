// The advertising identifier of this user, as the user decided:
// nobody is tracked unless the user said so. Any thread.
#pragma once

#include "velto/gtk/store/AdvertisingFile.h"
#include "velto/platform/ASIdentifierManager.h"

#include <string>

namespace velto::gtk {

// The file is read at each question: the decision may change in another process at any time.
class Advertising : public ASIdentifierManager, public ATTrackingManager {
 public:
  bool isAdvertisingTrackingEnabled() const override { return file_.read().identifier.has_value(); }
  std::optional<std::string> advertisingIdentifier() const override { return file_.read().identifier; }
  int64_t trackingAuthorizationStatus() const override {
    switch (file_.read().decision) {
      case AdvertisingFile::Decision::Allowed:
        return 3;
      case AdvertisingFile::Decision::Denied:
        return 2;
      default:
        return 0;
    }
  }

 private:
  AdvertisingFile file_;
};

}  // namespace velto::gtk
