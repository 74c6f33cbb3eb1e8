// The style sheet of a report, for light and dark displays and for print.

#ifndef HOST_REPORTSTYLE_H
#define HOST_REPORTSTYLE_H

namespace host {

inline constexpr const char* kReportStyle = R"css(
:root { color-scheme: light dark; --ink: #1f2328; --faint: #656d76; --line: #d8dee4;
  --ground: #ffffff; --panel: #f6f8fa; --bar: #4a7ab5; --link: #1d5fb4;
  --x: #c62f2f; --y: #23803f; --z: #2b5fc0;
  --c0: #4a7ab5; --c1: #c98a2b; --c2: #4d9a63; --c3: #b0628f; --c4: #8a6fc0; --c5: #4b9aa6; }
@media (prefers-color-scheme: dark) { :root { --ink: #e2e6ea; --faint: #9198a1; --line: #363c44;
  --ground: #14171b; --panel: #1b1f25; --bar: #6b9bd6; --link: #7fb0f0;
  --x: #f07070; --y: #5cc27c; --z: #74a5f5;
  --c0: #6b9bd6; --c1: #dba653; --c2: #6fbf86; --c3: #cf86b1; --c4: #a893dc; --c5: #6fbcc8; } }
* { box-sizing: border-box; }
body { margin: 0; background: var(--ground); color: var(--ink);
  font: 15px/1.5 system-ui, "Segoe UI", "Liberation Sans", "DejaVu Sans", sans-serif; }
main { max-width: 62rem; margin: 0 auto; padding: 2.5rem 1.5rem 4rem; }
a { color: var(--link); }
nav ul { list-style: none; display: flex; flex-wrap: wrap; gap: .3rem 1.3rem; margin: .75rem 0 0;
  padding: 0; }
nav .first { font-weight: 600; overflow-wrap: anywhere; }
h1 { font-size: 1.7rem; font-weight: 600; margin: 0 0 .25rem; overflow-wrap: anywhere; }
h2 { font-size: 1.1rem; font-weight: 600; margin: 2.5rem 0 .75rem; padding-bottom: .3rem;
  border-bottom: 1px solid var(--line); }
h1 + p { margin-top: 0; }
p, figcaption { margin: .5rem 0; }
.faint, figcaption { color: var(--faint); }
figcaption { font-size: .85rem; }
figure { margin: 0; padding: .75rem 1rem; background: var(--panel); border: 1px solid var(--line);
  border-radius: 6px; break-inside: avoid; }
figure + figure, .scroll + figure { margin-top: 1rem; }
section + p { margin-top: 2rem; }
figure + details { margin-top: .75rem; }
header ~ header, nav + header { margin-top: 4rem; }
.filter input { font: inherit; color: inherit; background: var(--ground); padding: .25rem .6rem;
  border: 1px solid var(--line); border-radius: 6px; width: 16rem; max-width: 100%; }
.filter output { color: var(--faint); }
.tree, .tree ul { list-style: none; margin: 0; padding: 0; }
.tree ul { margin-left: .45rem; padding-left: 1.1rem; border-left: 1px solid var(--line); }
.tree li { overflow-wrap: anywhere; }
.tree summary { border-radius: 4px; } .tree summary:hover { background: var(--panel); }
.tree li > span { padding-left: 1.05rem; }
.id { color: var(--faint); font-size: .85rem; }
.count { font-weight: 600; }
.remark { color: var(--x); font-size: .85rem; }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; width: 100%; font-variant-numeric: tabular-nums; }
th, td { text-align: left; vertical-align: top; padding: .3rem .9rem .3rem 0;
  border-bottom: 1px solid var(--line); overflow-wrap: break-word; }
th { white-space: nowrap; font-size: .85rem; font-weight: 600; color: var(--faint); }
td.number, th.number { text-align: right; white-space: nowrap; }
tr { break-inside: avoid; }
summary { cursor: pointer; }
.versions { list-style: none; display: flex; flex-wrap: wrap; gap: .4rem 1.6rem; margin: .2rem 0 1rem;
  padding: 0; }
.versions li { position: relative; padding: .15rem .7rem; background: var(--panel);
  border: 1px solid var(--line); border-radius: 6px; }
.versions li + li::before { content: "→"; position: absolute; left: -1.35rem; color: var(--faint); }
.views { display: grid; grid-template-columns: 1fr 1fr; gap: .5rem 1.5rem; }
.views p { margin: 0; font-size: .85rem; }
svg { display: block; width: 100%; font: 12px system-ui, "Segoe UI", "Liberation Sans",
  "DejaVu Sans", sans-serif; }
.views svg { height: auto; }
svg line { stroke-linecap: round; }
svg .x, svg .y, svg .z { stroke-width: 2; }
svg line.x { stroke: var(--x); } svg line.y { stroke: var(--y); } svg line.z { stroke: var(--z); }
svg text { fill: var(--ink); }
svg text.x { fill: var(--x); } svg text.y { fill: var(--y); } svg text.z { fill: var(--z); }
svg text.axis { stroke: none; font-style: italic; }
svg text.label, svg text.middle { text-anchor: middle; } svg text.end { text-anchor: end; }
svg text.label { paint-order: stroke; stroke: var(--panel); stroke-width: 3px; }
svg text.note { fill: var(--faint); font-size: 11px; }
svg circle { fill: var(--ink); }
svg .box { stroke-width: .75; stroke-linejoin: round; }
svg .box polygon { fill-opacity: .55; } svg .box .sx { fill-opacity: .7; }
svg .box .sz { fill-opacity: .4; }
svg .c0 { fill: var(--c0); stroke: var(--c0); } svg .c1 { fill: var(--c1); stroke: var(--c1); }
svg .c2 { fill: var(--c2); stroke: var(--c2); } svg .c3 { fill: var(--c3); stroke: var(--c3); }
svg .c4 { fill: var(--c4); stroke: var(--c4); } svg .c5 { fill: var(--c5); stroke: var(--c5); }
svg .link { stroke: var(--faint); stroke-width: 1; stroke-dasharray: 2 4; opacity: .7; }
svg .leader { stroke: var(--faint); stroke-width: .75; }
svg .scale { stroke: var(--ink); stroke-width: 1.5; }
svg .tick { stroke: var(--line); }
svg .bar { fill: var(--bar); }
svg.bars, svg.head { overflow: visible; }
figure:has(.bars) { padding-left: 1.75rem; padding-right: 1.75rem; }
@media (max-width: 700px) {
  main { padding: 1.25rem 1rem 3rem; }
  figure { padding: .6rem; }
  .views { grid-template-columns: 1fr; }
  .filter input { width: 100%; }
  thead { display: none; }
  tr { display: block; padding: .4rem 0; border-bottom: 1px solid var(--line); }
  td, td.number { display: flex; gap: .75rem; justify-content: space-between; border: 0;
    padding: .1rem 0; text-align: right; white-space: normal; overflow-wrap: anywhere; }
  td:first-child { font-weight: 600; }
  td:empty { display: none; }
  td::before { content: attr(data-title); color: var(--faint); font-weight: 400; text-align: left;
    white-space: nowrap; }
}
@media print {
  :root { color-scheme: light; --ink: #000; --faint: #555; --line: #ccc; --ground: #fff;
    --panel: #fff; --bar: #4a7ab5; --x: #c62f2f; --y: #23803f; --z: #2b5fc0; }
  .filter, nav { display: none; }
  body { font-size: 10pt; } main { max-width: none; padding: 0; }
  h2 { break-after: avoid; } section { break-inside: auto; }
}
)css";

}  // namespace host

#endif
