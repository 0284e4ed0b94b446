// The ground that most tests stand on: a fresh headless platform, a registered key, a server that answers
// with markup.
#pragma once

#include "velto/headless/VeltoHeadless.h"
#include "velto/velto.h"

#include <gtest/gtest.h>

#include <string>

namespace velto::test {

inline const std::string readyPage =
    "<html><body><a href='https://shop.example/'>ad</a><!-- velto://loadFinished --></body></html>";
inline const std::string richPage = "<script src='mraid.js'></script>rich";

class HeadlessTest : public ::testing::Test {
 protected:
  HeadlessTest() : platform(headless::Platform::install()) {}
  ~HeadlessTest() override { headless::Platform::uninstall(); }

  void registerKey(const std::string& key = "key-1") { VeltoFramework::addVeltoKey(key); }

  // An answer with an ad of that size.
  static headless::Answer markup(std::string body = readyPage, int width = 320, int height = 50) {
    headless::Answer answer;
    answer.headers = {
        {"x-content", "html"}, {"x-width", std::to_string(width)}, {"x-height", std::to_string(height)}};
    answer.body = std::move(body);
    return answer;
  }
  // Instructions of mediation.
  static headless::Answer mediation(std::string body) {
    return {.headers = {{"x-content", "mediation"}, {"x-width", "320"}, {"x-height", "50"}},
            .body = std::move(body)};
  }
  static headless::Answer with(headless::Answer answer, std::vector<HeaderFields::Field> more) {
    for (auto& field : more) answer.headers.push_back(std::move(field));
    return answer;
  }
  static headless::Answer status(int code) { return {.status = code}; }

  std::shared_ptr<headless::Platform> platform;
};

}  // namespace velto::test
