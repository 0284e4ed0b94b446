// What a rich-media page has asked for with its property calls: plain records, each read from the JSON text
// of a command. Values of the wrong kind count as absent. Any thread.
#pragma once

#include "velto/mraid/VeltoMRAIDTables.h"
#include "velto/platform/Geometry.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace velto {

// decode() of each record: null when the text is no JSON object, or lacks what that record requires.
class VeltoMRAIDPropertyProtocol {
 public:
  virtual ~VeltoMRAIDPropertyProtocol() = default;
  virtual std::string description() const = 0;
};

class VeltoMRAIDProperty : public VeltoMRAIDPropertyProtocol {
 public:
  static std::shared_ptr<VeltoMRAIDProperty> decode(const std::string& /*json*/) { return nullptr; }
  std::string description() const override;
};

class VeltoMRAIDPropertyExpand : public VeltoMRAIDProperty {
 public:
  static std::shared_ptr<VeltoMRAIDPropertyExpand> decode(const std::string& json);
  std::string description() const override;

  bool useCustomClose = false;
  bool isModal = false;
  std::optional<double> width;  // points
  std::optional<double> height;

 private:
  bool _init(const std::string& json);
};

class VeltoMRAIDPropertyResize : public VeltoMRAIDProperty {
 public:
  static std::shared_ptr<VeltoMRAIDPropertyResize> decode(const std::string& json);
  std::string description() const override;

  std::optional<double> width;  // points
  std::optional<double> height;
  std::optional<double> offsetX;
  std::optional<double> offsetY;
  std::optional<std::string> customClosePosition;
  int64_t customClosePositionType = 0;   // VeltoClosePosition…; top-left also for a text that is none
  std::optional<double> allowOffscreen;  // a boolean; absent counts as false
  CGRect frame;  // whole points: offset and size, each zero unless both parts are there

 private:
  bool _init(const std::string& json);
};

class VeltoMRAIDPropertyOrientation : public VeltoMRAIDProperty {
 public:
  // What applies before the page says anything.
  static std::shared_ptr<VeltoMRAIDPropertyOrientation> orientation();
  static std::shared_ptr<VeltoMRAIDPropertyOrientation> decode(const std::string& json);
  std::string description() const override;

  bool allowOrientationChange = false;
  // The table's own "none" where the page named nothing, which differs from a "none" that it wrote.
  MRAIDText forceOrientation = MRAIDText::entry(MRAIDOrientation[MRAIDOrientationNone]);

 private:
  bool _init(const std::string& json);
};

class VeltoMRAIDPropertyCurrentAppOrientation : public VeltoMRAIDProperty {
 public:
  static std::shared_ptr<VeltoMRAIDPropertyCurrentAppOrientation> decode(const std::string& json);
  std::string description() const override;

  bool locked = false;
  std::string orientation = MRAIDOrientation[MRAIDOrientationNone];

 private:
  bool _init(const std::string& json);
};

}  // namespace velto
