// What a page does with wheel and fingers, told by a script in each of its frames; what the page has no use for
// is the business of what the ad stands in. Part of the web view; main thread.
#pragma once

#include <webkit/webkit.h>

namespace velto::gtk {

// To be added when both handlers are registered.
void addPageUseScript(WebKitUserContentManager* manager);

// Whether it uses the wheel: a boolean, when it starts to listen, and whenever the pointer comes to another
// element.
inline constexpr char wheelUseHandler[] = "veltoWheel";
inline constexpr char wheelUseSignal[] = "script-message-received::veltoWheel";

// Which ways it uses the touch that has begun: a number, after the page has heard of it, and again when that
// changes. The answer, when the touch is over, is whether it was taken from the page; knowsEnd confirms that, as the
// engine's own end of the touch may overtake an answer.
enum TouchUse { useAcross = 1, useAlong = 2, knowsEnd = 4 };
inline constexpr char touchUseHandler[] = "veltoTouch";
inline constexpr char touchUseSignal[] = "script-message-with-reply-received::veltoTouch";

}  // namespace velto::gtk
