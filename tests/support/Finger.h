// A finger on the touch screen of a test's display (scripts/with-display --touch). The display's driver says how it
// is moved, and talks to one client only: inputtest(4).
#pragma once

#include "velto/platform/Geometry.h"

#include <X11/extensions/XI2.h>
#include <glib.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xorg/xf86-input-inputtest-protocol.h>

#include <cstring>

namespace velto::test {

class Finger {
 public:
  Finger() {
    sockaddr_un address = {AF_UNIX, {}};
    std::strncpy(address.sun_path, g_getenv("VELTO_FINGER"), sizeof(address.sun_path) - 1);
    EXPECT_EQ(connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    xf86ITEventClientVersion version = {{}, XF86IT_PROTOCOL_VERSION_MAJOR, XF86IT_PROTOCOL_VERSION_MINOR};
    ask<xf86ITResponseServerVersion>(version, XF86IT_EVENT_CLIENT_VERSION);
  }

  // Points of the screen. Each returns when the display has it.
  void down(CGPoint at) { touch(XI_TouchBegin, at); }
  void move(CGPoint to) { touch(XI_TouchUpdate, to); }
  void up(CGPoint at) { touch(XI_TouchEnd, at); }
  // Some milliseconds after the last one, which is what the display tells a speed by.
  void flick(CGPoint to) {
    for (const gint64 start = g_get_monotonic_time(); g_get_monotonic_time() < start + 4000;) continue;
    move(to);
  }

 private:
  void touch(uint32_t type, CGPoint at) {
    xf86ITEventTouch event = {{}, 1, type, {}};
    event.valuators.mask[0] = 3;  // both of these
    event.valuators.valuators[0] = at.x * 0xffff / 1280;
    event.valuators.valuators[1] = at.y * 0xffff / 1024;
    tell(event, XF86IT_EVENT_TOUCH);
    xf86ITEventWaitForSync sync = {};
    ask<xf86ITResponseSyncFinished>(sync, XF86IT_EVENT_WAIT_FOR_SYNC);
  }
  template <class Event>
  void tell(Event& event, xf86ITEventType type) {
    event.header = {sizeof(event), type};
    EXPECT_EQ(write(socket_, &event, sizeof(event)), ssize_t(sizeof(event)));
  }
  template <class Answer, class Event>
  void ask(Event& event, xf86ITEventType type) {
    tell(event, type);
    Answer answer;
    EXPECT_EQ(recv(socket_, &answer, sizeof(answer), MSG_WAITALL), ssize_t(sizeof(answer)));
  }

  const int socket_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

}  // namespace velto::test
