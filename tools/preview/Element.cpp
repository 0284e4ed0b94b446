// The script, and its answer.
#include "preview/Element.h"

namespace velto::preview {
namespace {

constexpr char finder[] = R"JS((selector) => {
  const named = (e) => '<' + e.localName + (e.id ? ' id="' + e.id + '"' : '') +
      (e.classList.length ? ' class="' + [...e.classList].join(' ') + '"' : '') + '>';
  let element;
  try { element = document.querySelector(selector); } catch (error) { return 'that is no selector'; }
  if (!element) return 'no element matches';
  const style = getComputedStyle(element);
  if (!element.getClientRects().length) return 'it is not displayed';
  if (style.visibility !== 'visible') return 'it is hidden (visibility: ' + style.visibility + ')';
  if (style.pointerEvents === 'none') return 'it takes no taps (pointer-events: none)';
  element.scrollIntoView({ block: 'nearest', inline: 'nearest', behavior: 'instant' });
  let fault = 'it has no size';
  for (const { left, top, width, height } of element.getClientRects()) {
    if (!width || !height) continue;
    const x = left + width / 2, y = top + height / 2;
    const over = document.elementFromPoint(x, y);
    if (!over) fault = 'it is outside of what can be seen of the page';
    else if (over === element || element.contains(over)) return [x, y];
    else fault = 'it is covered by ' + named(over);
  }
  return fault;
})JS";

}  // namespace

std::string scriptToFind(const std::string& selector) {
  return std::string("(") + finder + ")(" + writeJSON(JSON(selector), false).value_or("''") + ")";
}

Whereabouts whereabouts(const std::optional<JSON>& answer) {
  if (const auto* numbers = answer ? answer->array() : nullptr; numbers && numbers->size() == 2)
    return {CGPoint{(*numbers)[0].number().value_or(0), (*numbers)[1].number().value_or(0)}, {}};
  const auto* text = answer ? answer->string() : nullptr;
  return {std::nullopt, text ? *text : "the page does not say where it is"};
}

}  // namespace velto::preview
