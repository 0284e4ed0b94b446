// What the application's process and the module in the web process (PageModule.cpp) say to each other, as user messages of
// the engine.
#pragma once

#include <glib.h>

namespace velto::gtk::page {

constexpr char moduleFile[] = "web/velto-page.so";  // alone in its folder: the engine opens all that is there

// Nothing but a reason for the engine to start the process.
constexpr char start[] = "velto-start";
// Statements, run one after the other, each as its bytes. The message's answer is that of the last: the outcome, and the
// value as a JSON text or what the exception says.
constexpr char run[] = "velto-run";
constexpr char tell[] = "velto-tell";  // the same, and nobody waits for the answer
constexpr char statementsType[] = "aay";
constexpr char answerType[] = "(us)";

enum class Outcome : guint { Value, Undefined, Exception, Unsupported };

}  // namespace velto::gtk::page
