// What every thread of the library does first.
#pragma once

#include <pthread.h>

#include <csignal>

namespace velto::gtk {

// Names the calling thread (at most 15 characters) and leaves signals to the threads of the host application.
inline void beginThread(const char* name) {
  pthread_setname_np(pthread_self(), name);
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

}  // namespace velto::gtk
