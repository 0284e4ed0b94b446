// Light and dark, wide and narrow, without scripts.
#include "preview/ReportStyle.h"

namespace velto::preview {

const char reportStyle[] = R"CSS(
:root { color-scheme: light dark; --page: #f5f6f8; --card: #fff; --text: #1b2430; --soft: #5d6978; --line: #dfe4ea;
  --error: #b3261e; --warning: #8a5a00; --notice: #2b5c9e; --fine: #1c7344; --bar: #6b93c9; --code: #eef1f5; }
@media (prefers-color-scheme: dark) { :root { --page: #12161c; --card: #1b212a; --text: #e3e8ee; --soft: #9aa7b6;
  --line: #303945; --error: #ff8a80; --warning: #f0b849; --notice: #8fb8f0; --fine: #6fd29b; --bar: #4f78b0; --code: #262e39; } }
* { box-sizing: border-box; }
body { margin: 0; background: var(--page); color: var(--text); font: 15px/1.5 system-ui, sans-serif; overflow-wrap: anywhere; }
main { max-width: 1080px; margin: 0 auto; padding: 24px 20px 60px; }
h1 { font-size: 24px; line-height: 1.25; margin: 0 0 4px; }
h2 { font-size: 17px; margin: 0 0 14px; }
h3 { font-size: 15px; margin: 0; }
section { background: var(--card); border: 1px solid var(--line); border-radius: 10px; padding: 18px 20px; margin-top: 18px; }
p { margin: 0 0 8px; }
.soft, figcaption, th { color: var(--soft); }
.verdict { display: inline-block; margin-top: 10px; padding: 3px 12px; border-radius: 14px; border: 1px solid; font-weight: 600; }
.error { color: var(--error); } .warning { color: var(--warning); } .notice { color: var(--notice); } .fine { color: var(--fine); }
nav { margin-top: 12px; display: flex; flex-wrap: wrap; gap: 4px 16px; }
a { color: var(--notice); }
dl.figures { display: flex; flex-wrap: wrap; gap: 10px 32px; margin: 0; }
dl.figures dt { color: var(--soft); font-size: 13px; } dl.figures dd { margin: 0; font-size: 20px; font-variant-numeric: tabular-nums; }
article { border-left: 4px solid; padding: 2px 0 2px 14px; margin-bottom: 18px; }
article:last-child { margin-bottom: 0; }
article > * { color: var(--text); }
article h3 span { font-weight: 400; font-size: 13px; margin-left: 6px; }
code { font: 13px/1.45 ui-monospace, monospace; }
.facts { background: var(--code); border-radius: 6px; padding: 8px 12px; margin: 6px 0 0; list-style: none; font-size: 13.5px; }
.pictures { display: flex; flex-wrap: wrap; gap: 18px; }
figure { margin: 0; width: 220px; max-width: 100%; }
figure img { width: 100%; border: 1px solid var(--line); border-radius: 6px; display: block; background: #fff; }
figcaption { font-size: 13px; margin-top: 4px; }
table { width: 100%; border-collapse: collapse; font-size: 13.5px; }
th { text-align: left; font-weight: 500; } th, td { padding: 5px 10px 5px 0; border-top: 1px solid var(--line); vertical-align: top; }
tr:first-child th { border-top: 0; }
.number { text-align: right; white-space: nowrap; font-variant-numeric: tabular-nums; }
.time { width: 5.5em; padding-left: 0; }
.way { width: 26%; min-width: 120px; } .way i { display: block; height: 9px; margin-top: 6px; border-radius: 3px; background: var(--bar); min-width: 2px; }
.lanes { display: grid; grid-template-columns: 108px 1fr; gap: 0 10px; align-items: center; }
.lanes svg { display: block; width: 100%; height: 34px; overflow: visible; border-top: 1px solid var(--line); }
.lanes svg.scale { height: 18px; border: 0; } .lanes text { fill: var(--soft); font-size: 11px; }
.lanes circle, .lanes rect { fill: var(--bar); } .lanes .error { fill: var(--error); } .lanes .warning { fill: var(--warning); }
.lanes .fine { fill: var(--fine); }
details { margin-top: 14px; } summary { cursor: pointer; color: var(--notice); }
@media (max-width: 620px) { main { padding: 14px 12px 40px; } section { padding: 14px; } .way, .wide { display: none; }
  .lanes { grid-template-columns: 1fr; } .lanes > span { margin-top: 6px; font-size: 13px; } figure { width: calc(50% - 9px); } }
@media print { body { background: #fff; } section { break-inside: avoid; } }
)CSS";

}  // namespace velto::preview
