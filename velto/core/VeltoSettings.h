// Targeting values that a host application may pass with a load. Unset fields are not sent. A plain value:
// copy it freely.
#pragma once

#include "velto/core/VeltoConstants.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velto {

struct VeltoSettings {
  int64_t yearOfBirth = VeltoSettingNoValue;
  int64_t age = VeltoSettingNoValue;  // years
  int64_t gender = VeltoGenderNoValue;
  int64_t marital = VeltoMaritalNoValue;
  std::optional<std::string> mediation = {};  // name of the mediating platform that wraps this library
  std::optional<std::vector<std::string>> keywords = {};

  int64_t getYearOfBirth() const { return yearOfBirth; }
  int64_t getAge() const { return age; }
  int64_t getGender() const { return gender; }
  int64_t getMarital() const { return marital; }
  const std::optional<std::string>& getMediation() const { return mediation; }
  const std::optional<std::vector<std::string>>& getKeywords() const { return keywords; }
};

}  // namespace velto
