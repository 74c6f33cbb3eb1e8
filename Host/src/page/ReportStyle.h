// The style sheet of a report, for light and dark displays and for print.

#ifndef HOST_REPORTSTYLE_H
#define HOST_REPORTSTYLE_H

namespace host {

inline constexpr const char* kReportStyle = R"css(
:root { color-scheme: light dark; --ink: #1f2328; --faint: #656d76; --line: #d8dee4;
  --ground: #ffffff; --panel: #f6f8fa; --bar: #4a7ab5;
  --x: #c62f2f; --y: #23803f; --z: #2b5fc0; }
@media (prefers-color-scheme: dark) { :root { --ink: #e2e6ea; --faint: #9198a1; --line: #363c44;
  --ground: #14171b; --panel: #1b1f25; --bar: #6b9bd6;
  --x: #f07070; --y: #5cc27c; --z: #74a5f5; } }
* { box-sizing: border-box; }
body { margin: 0; background: var(--ground); color: var(--ink);
  font: 15px/1.5 system-ui, "Segoe UI", "Liberation Sans", "DejaVu Sans", sans-serif; }
main { max-width: 62rem; margin: 0 auto; padding: 2.5rem 1.5rem 4rem; }
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
header ~ header { margin-top: 4rem; }
.tree, .tree ul { list-style: none; margin: 0; padding: 0; }
.tree ul { margin-left: .45rem; padding-left: 1.1rem; border-left: 1px solid var(--line); }
.tree li { overflow-wrap: anywhere; }
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
svg { display: block; width: 100%; height: auto; font: 12px system-ui, "Segoe UI",
  "Liberation Sans", "DejaVu Sans", sans-serif; }
svg line { stroke-linecap: round; }
svg .x, svg .y, svg .z { stroke-width: 2; }
svg line.x { stroke: var(--x); } svg line.y { stroke: var(--y); } svg line.z { stroke: var(--z); }
svg text { fill: var(--ink); }
svg text.x { fill: var(--x); } svg text.y { fill: var(--y); } svg text.z { fill: var(--z); }
svg text.axis { stroke: none; font-style: italic; }
svg text.label, svg text.middle { text-anchor: middle; }
svg text.label { paint-order: stroke; stroke: var(--panel); stroke-width: 3px; }
svg text.note { fill: var(--faint); font-size: 11px; }
svg circle { fill: var(--ink); }
svg .link { stroke: var(--faint); stroke-width: 1; stroke-dasharray: 2 4; opacity: .7; }
svg .leader { stroke: var(--faint); stroke-width: .75; }
svg .scale { stroke: var(--ink); stroke-width: 1.5; }
svg .tick { stroke: var(--line); }
svg .bar { fill: var(--bar); }
@media print {
  :root { color-scheme: light; --ink: #000; --faint: #555; --line: #ccc; --ground: #fff;
    --panel: #fff; --bar: #4a7ab5; --x: #c62f2f; --y: #23803f; --z: #2b5fc0; }
  body { font-size: 10pt; } main { max-width: none; padding: 0; }
  h2 { break-after: avoid; } section { break-inside: auto; }
}
)css";

}  // namespace host

#endif
