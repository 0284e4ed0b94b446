// Who integrates the measurement engine, as verification scripts are told. Immutable; main thread.
#pragma once

#include <memory>
#include <string>

namespace velto {

class OMIDVeltoPartner {
 public:
  // Null when one of the two is blank, or the engine is not active.
  static std::shared_ptr<const OMIDVeltoPartner> initWithName(const std::string& name,
                                                              const std::string& versionString);

  const std::string& name() const { return name_; }
  const std::string& versionString() const { return versionString_; }

 private:
  OMIDVeltoPartner(std::string name, std::string versionString);

  std::string name_;
  std::string versionString_;
};

}  // namespace velto
