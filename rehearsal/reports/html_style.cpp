#include "rehearsal/reports/html_parts.h"

namespace varnok::rehearsal {
namespace {

constexpr std::string_view kStyle = R"css(
:root {
  color-scheme: light dark;
  --paper: #ffffff; --panel: #f6f7f9; --ink: #1b1f24; --soft: #5c6570; --line: #dde1e6; --link: #0b57b0;
  --grave: #a8172c; --warning: #8a5a00; --fine: #1c6b3f;
  --read: #7f93ab; --write: #1f4e8c; --wait: #c3cad3; --cut: #d9a441; --lost: #a8172c;
  --t0: #cfdff2; --t1: #d9ead3; --t2: #f0e2c4; --t3: #e6d7ee; --t4: #d2ebea; --t5: #f3d9d6;
  --free: #eceef1; --changed: #24303d; --mark: #ffe08a;
  --c-wanted: #b9dcc6; --c-old: #b5c1d0; --c-rerun: #e3cf94; --c-endless: #e0a33c; --c-stuck: #d97a2b;
  --c-noway: #c2412d; --c-told: #b0518f; --c-unshown: #9c1b45; --c-false: #4d0f5e;
  --c-crashed: #16001f;
}
@media (prefers-color-scheme: dark) {
  :root {
    --paper: #14171b; --panel: #1d2126; --ink: #e4e7eb; --soft: #9aa4b0; --line: #333a43; --link: #7db4f5;
    --grave: #ff8a93; --warning: #e8b95a; --fine: #74c996;
    --read: #6f84a0; --write: #8ebcf7; --wait: #454d58; --cut: #b58a3a; --lost: #ff8a93;
    --t0: #27405e; --t1: #2d4a2f; --t2: #51431f; --t3: #452f54; --t4: #1f4a4a; --t5: #552f2f;
    --free: #262b31; --changed: #f0f3f6; --mark: #6b5410;
    --c-wanted: #2f5a41; --c-old: #46525f; --c-rerun: #6f6233; --c-endless: #a3762a; --c-stuck: #d07a35;
    --c-noway: #ef6a52; --c-told: #e58ac6; --c-unshown: #ff86ad; --c-false: #e3b4ff;
    --c-crashed: #f7ecff;
  }
}
* { box-sizing: border-box; }
html { scroll-padding-top: 1rem; }
body {
  margin: 0 auto; padding: 1.5rem 1.25rem 3rem; max-width: 70rem; background: var(--paper); color: var(--ink);
  font: 15px/1.5 system-ui, -apple-system, "Segoe UI", "Noto Sans", "Liberation Sans", sans-serif;
  overflow-wrap: anywhere; font-variant-numeric: tabular-nums; -webkit-text-size-adjust: 100%;
}
h1, h2, h3, h4 { line-height: 1.25; margin: 0; text-wrap: balance; }
h1 { font-size: 1.75rem; font-weight: 650; letter-spacing: -0.01em; }
h2 { font-size: 1.25rem; font-weight: 650; }
h3 { font-size: 1.02rem; font-weight: 650; margin-top: 1.5rem; }
h4 { font-size: 0.95rem; font-weight: 600; margin-top: 1.25rem; }
p { margin: 0.35rem 0; }
a { color: var(--link); text-underline-offset: 0.15em; text-decoration-thickness: 1px; }
code { font: 0.875em/1.5 ui-monospace, "SF Mono", "Cascadia Mono", "DejaVu Sans Mono", "Liberation Mono", monospace; }
header p { color: var(--soft); }
header .kind { margin: 0; font-size: 0.8rem; letter-spacing: 0.06em; text-transform: uppercase; }
section { padding-top: 2.25rem; }
#summary { padding-top: 1.25rem; }
.aside { color: var(--soft); font-size: 0.875rem; max-width: 44rem; }
footer { margin-top: 3rem; padding-top: 0.75rem; border-top: 1px solid var(--line); color: var(--soft); font-size: 0.8125rem; }
nav { display: flex; flex-wrap: wrap; gap: 0.25rem 1.25rem; margin-top: 1.25rem; padding: 0.5rem 0; border: solid var(--line); border-width: 1px 0; }

.verdict { padding: 0.7rem 1rem; border-left: 0.3rem solid var(--fine); background: var(--panel); font-size: 1.2rem; }
.verdict.grave { border-color: var(--grave); }
.verdict.warning { border-color: var(--warning); }
.findings { list-style: none; margin: 0.75rem 0 0; padding: 0; }
.findings li { display: grid; grid-template-columns: 5rem 1fr; gap: 0 0.75rem; padding: 0.45rem 0; border-bottom: 1px solid var(--line); }
.findings .weight { grid-row: span 2; font-size: 0.8125rem; line-height: 1.85; font-weight: 600; color: var(--soft); }
.findings .grave .weight { color: var(--grave); }
.findings .warning .weight { color: var(--warning); }
.findings a { font-weight: 550; }
.findings span { color: var(--soft); font-size: 0.875rem; }
.figures { display: flex; flex-wrap: wrap; gap: 1px; margin: 1.25rem 0 0; background: var(--line); border: 1px solid var(--line); }
.figures div { flex: 1 1 9.5rem; background: var(--paper); padding: 0.6rem 0.8rem; }
.figures dt { color: var(--soft); font-size: 0.8125rem; }
.figures dd { margin: 0; }
.figures strong { display: block; font-size: 1.35rem; font-weight: 600; line-height: 1.3; }
.figures span { color: var(--soft); font-size: 0.8125rem; }

details { margin: 0.5rem 0; }
summary { cursor: pointer; padding: 0.15rem 0; }
table { border-collapse: collapse; width: 100%; margin: 0.5rem 0; font-size: 0.875rem; line-height: 1.4; }
th { text-align: left; font-weight: 500; }
thead th { color: var(--soft); font-size: 0.8125rem; overflow-wrap: normal; }
.plain th, .plain td { padding: 0.3rem 0.75rem 0.3rem 0; border-bottom: 1px solid var(--line); vertical-align: top; }
.number { text-align: right; white-space: nowrap; }
.plain td.number { width: 1%; }
.changes, .groups { table-layout: fixed; }
.changes th:first-child { width: 14%; }
.changes th:nth-child(2) { width: 30%; }
.fleet td { white-space: nowrap; }
.fleet td:nth-child(5) { white-space: normal; }
.groups th:first-child { width: 13%; }
.groups th:nth-child(2) { width: 24%; }
.groups th:nth-child(3) { width: 30%; }
.bad { color: var(--grave); font-weight: 650; }
pre { margin: 0.25rem 0; padding: 0.5rem 0.75rem; background: var(--panel); white-space: break-spaces; }
.strip { display: block; width: 100%; height: 1.15rem; shape-rendering: crispEdges; }

.tree { font-size: 0.9375rem; }
.tree p { margin: 0.2rem 0; }
.question { font-weight: 550; }
.tag { font-size: 0.75rem; font-weight: 500; color: var(--soft); border: 1px solid var(--line); border-radius: 0.2rem; padding: 0 0.3rem; }
.place { font-size: 0.8125rem; font-weight: 400; white-space: nowrap; }
.answers { list-style: none; margin: 0.1rem 0 0.4rem; padding: 0 0 0 0.7rem; border-left: 1px solid var(--line); }
.only { font-weight: 400; }
.answers.deep { padding-left: 0.15rem; }
.answers details { margin: 0; }
.answer { font-weight: 500; }
.count { color: var(--soft); font-size: 0.8125rem; margin-left: 0.6rem; }
.answers .single { display: flex; flex-wrap: wrap; gap: 0 0.75rem; align-items: baseline; padding-left: 1.05rem; }
.leaf { font-size: 0.875rem; color: var(--soft); }
.leaf b { color: var(--ink); font-weight: 600; }
.leaf.failed b::after { content: " ✕"; }
.leaf.failed b { color: var(--grave); }

.script { border: 1px solid var(--line); }
.script th[scope=row], .script .mark { width: 1%; white-space: nowrap; text-align: right; color: var(--soft); font-size: 0.8125rem; padding: 0 0.6rem; font-weight: 400; vertical-align: top; }
.script thead th { white-space: nowrap; padding: 0.2rem 0.6rem; background: var(--panel); }
.script td:last-child { border-left: 1px solid var(--line); padding: 0 0.6rem; }
.script code { white-space: break-spaces; }
.script .reached .mark { color: var(--fine); }
.script .unreached { background: color-mix(in srgb, var(--grave) 12%, var(--paper)); }
.script .unreached .mark { color: var(--grave); font-weight: 650; }
.script tr:target { outline: 2px solid var(--link); }

article { border-top: 1px solid var(--line); margin-top: 1rem; }
.maps { display: grid; grid-template-columns: 1fr 1fr; gap: 0 2rem; }
figure { margin: 0.5rem 0; min-width: 0; }
figcaption { font-size: 0.875rem; font-weight: 550; }
.map { table-layout: fixed; margin: 0.25rem 0; }
.map th, .map td { padding: 1px 0; vertical-align: middle; }
.map th:first-child { width: 5.5rem; font-size: 0.75rem; font-weight: 400; color: var(--soft); line-height: 1.15; padding-right: 0.4rem; }
.map th:nth-child(3), .map .areas { width: 7.5rem; font-size: 0.75rem; line-height: 1.2; padding-left: 0.5rem; color: var(--soft); }
.map .more .strip { opacity: 0.55; }
.lanes th:nth-child(3), .lanes .areas { width: 11rem; }
.lanes .strip { shape-rendering: auto; }
.heat th:first-child { width: 15rem; padding-right: 0.75rem; font-size: 0.8125rem; color: var(--ink); }
.heat th:nth-child(3), .heat .number { width: 4rem; }
.heat thead th:nth-child(3) { text-align: right; }
.heat .strip { background: var(--panel); }
.heat .requests th { color: var(--soft); }
.key { display: inline-block; width: 0.8rem; height: 0.8rem; vertical-align: -0.08rem; border: 1px solid var(--line); }
.results th .strip { display: inline-block; width: 1.6rem; height: 1rem; background: var(--panel); vertical-align: -0.15rem; margin-right: 0.4rem; }
.results th { white-space: nowrap; }
.hex { width: auto; }
.hex th, .hex td { padding: 0 1rem 0 0; }
.hex th { font: 0.8125rem ui-monospace, "DejaVu Sans Mono", "Liberation Mono", monospace; color: var(--soft); }
mark { background: var(--mark); color: inherit; font-weight: 700; text-decoration: underline; }

.t0 { fill: var(--t0); background: var(--t0); } .t1 { fill: var(--t1); background: var(--t1); }
.t2 { fill: var(--t2); background: var(--t2); } .t3 { fill: var(--t3); background: var(--t3); }
.t4 { fill: var(--t4); background: var(--t4); } .t5 { fill: var(--t5); background: var(--t5); }
.free { fill: var(--free); } .changed { fill: var(--changed); }
.read { fill: var(--read); } .write { fill: var(--write); } .wait { fill: var(--wait); } .cut { fill: var(--cut); } .lost { fill: var(--lost); }
.c-wanted { fill: var(--c-wanted); } .c-old { fill: var(--c-old); } .c-rerun { fill: var(--c-rerun); }
.c-endless { fill: var(--c-endless); } .c-stuck { fill: var(--c-stuck); } .c-noway { fill: var(--c-noway); } .c-told { fill: var(--c-told); }
.c-unshown { fill: var(--c-unshown); } .c-false { fill: var(--c-false); } .c-crashed { fill: var(--c-crashed); }

@media (max-width: 48rem) {
  body { padding: 1rem 0.875rem 2rem; }
  .maps { grid-template-columns: 1fr; }
  .findings li { grid-template-columns: 1fr; }
  .findings .weight { grid-row: auto; line-height: 1.4; }
  .lanes th:first-child { width: 4.5rem; }
  .lanes th:nth-child(3), .lanes .areas { width: 6rem; }
  .heat th:first-child { width: 8rem; }
  .heat th:nth-child(3), .heat .number { width: 2.6rem; }
  .script th[scope=row], .script .mark, .script td:last-child { padding: 0 0.3rem; }
  .fleet thead { display: none; }
  .fleet tr { display: grid; grid-template-columns: 2rem 5.5rem 1fr auto; border-bottom: 1px solid var(--line); padding: 0.4rem 0; }
  .fleet th, .fleet td { border: 0; padding: 0; }
  .fleet td:nth-child(5) { grid-column: 1 / -1; }
  .fleet td.number { width: auto; text-align: left; }
  .groups thead { display: none; }
  .groups th:first-child, .groups td { display: block; width: auto; border: 0; padding: 0; }
  .groups th { font-weight: 650; }
  .groups tr { display: block; border-bottom: 1px solid var(--line); padding: 0.4rem 0; }
  .hex th, .hex td { padding-right: 0.4rem; }
  .hex code { font-size: 0.6875rem; letter-spacing: -0.02em; }
}
@media print {
  :root { --link: #1b1f24; }
  body { font-size: 10pt; max-width: none; padding: 0; }
  nav { display: none; }
  section, article { break-inside: auto; }
  h2, h3, h4, figcaption, .question { break-after: avoid; }
  tr, .leaf, .figures div { break-inside: avoid; }
  details::details-content { content-visibility: visible; block-size: auto; }
  .strip, .key, mark { -webkit-print-color-adjust: exact; print-color-adjust: exact; }
}
)css";

}  // namespace

std::string_view PageStyle() {
  return kStyle;
}

}  // namespace varnok::rehearsal
