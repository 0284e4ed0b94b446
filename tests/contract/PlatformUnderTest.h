// What the contract suite needs to know of a platform in order to run against it. A port implements this
// once, links it with the *Contract.cpp files, and runs the program.
#pragma once

#include "velto/platform/Geometry.h"
#include "velto/platform/MainQueue.h"
#include "velto/platform/Platform.h"
#include "velto/platform/ViewSystem.h"
#include "velto/platform/ui/UIViewController.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace velto {

class PlatformUnderTest {
 public:
  virtual ~PlatformUnderTest() = default;

  // Installs the platform with an empty store; with the store of the last one, as when the application starts
  // again.
  virtual void install() = 0;
  virtual void relaunch() = 0;
  virtual void uninstall() = 0;

  // Runs the main queue until the condition holds; false when it does not within some seconds.
  virtual bool runUntil(const std::function<bool()>& condition) = 0;

  // The controller of a new window of at least 400 × 600 points that is shown when this returns. It closes at
  // uninstall.
  virtual std::shared_ptr<UIViewController> showWindow() = 0;
  // A person's touch at a point of that window, reported by the time the main queue has run for a while.
  virtual void tap(CGPoint point) = 0;

  // "http://host:port" of a server that answers as serverAnswer() (TestServer.h) says.
  virtual std::string server() = 0;
  // The same of a port where nobody listens.
  virtual std::string refusingServer() = 0;

  // Whether a web view runs the pages it loads, so that their scripts and links do something.
  virtual bool runsPages() const = 0;
  // The engine dies under all web views.
  virtual void killPages() = 0;
};

// Written by the port; called once.
std::unique_ptr<PlatformUnderTest> makePlatformUnderTest();

// A freshly installed platform for each test case.
class Contract : public testing::Test {
 protected:
  static PlatformUnderTest& subject() {
    static const auto made = makePlatformUnderTest();
    return *made;
  }
  void SetUp() override { subject().install(); }
  void TearDown() override { subject().uninstall(); }

  static Platform& platform() { return Platform::current(); }
  static MainQueue& queue() { return platform().mainQueue(); }
  static bool runUntil(const std::function<bool()>& condition) { return subject().runUntil(condition); }
  // Lets everything happen that is due within the time.
  static void runFor(std::chrono::milliseconds time) {
    auto passed = std::make_shared<bool>(false);
    queue().postAfter(time, [passed] { *passed = true; });
    ASSERT_TRUE(runUntil([&] { return *passed; }));
  }
  // Lets the display show what was asked for, so that a touch meets it.
  static void runUntilShown() {
    int frames = 0;
    const Handle link = platform().views().displayLink([&](double) { ++frames; });
    ASSERT_TRUE(runUntil([&] { return frames == 3; }));
  }
};

// With a window that is shown.
class WindowContract : public Contract {
 protected:
  void SetUp() override {
    Contract::SetUp();
    window_ = subject().showWindow();
  }
  void TearDown() override {
    window_.reset();
    Contract::TearDown();
  }

  std::shared_ptr<UIViewController> window_;
};

}  // namespace velto
