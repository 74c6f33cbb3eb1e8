// The script of a report, which filters trees. It is the same on every page and takes nothing but
// texts from it; it holds no "<" and no "&", so that it is well-formed XML without escapes.

#ifndef HOST_REPORTSCRIPT_H
#define HOST_REPORTSCRIPT_H

namespace host {

// The lines that hold the text, what leads to them, and what is below them.
inline constexpr const char* kReportScript = R"js(
"use strict";
for (const input of document.querySelectorAll(".filter input")) {
  const panel = input.closest(".filter");
  const shown = panel.querySelector("output");
  const lines = [];
  const byItem = new Map();
  for (const item of document.getElementById(input.dataset.tree).querySelectorAll("li")) {
    const text = item.querySelector("summary, span").textContent.toLowerCase();
    const details = item.querySelector("details");
    const line = { item, text, details, open: details ? details.open : false,
      above: byItem.get(item.parentElement.closest("li")) };
    byItem.set(item, line);
    lines.push(line);
  }
  const filter = () => {
    const wanted = input.value.trim().toLowerCase();
    let found = 0;
    for (const line of lines) {
      const above = line.above;
      line.hit = line.text.includes(wanted);
      line.within = above ? above.hit || above.within : false;
      line.item.hidden = !(line.hit || line.within);
      if (line.details) line.details.open = wanted ? false : line.open;
      if (!line.hit) continue;
      found += 1;
      if (!wanted) continue;
      for (let way = above; way; way = way.above) {
        if (way.leads === wanted) break;
        way.leads = wanted;
        way.item.hidden = false;
        way.details.open = true;
      }
    }
    for (const line of lines) line.leads = "";
    shown.textContent = wanted ? found + " of " + lines.length + " lines" : "";
  };
  input.addEventListener("input", filter);
  panel.hidden = false;
}
)js";

// The only script that the page may run: the SHA-256 of the text above, as Base64.
inline constexpr const char* kReportScriptHash =
    "sha256-A0x1pyd3xlOpaT4A2rupJTR9tR+G7pkJJH4qrjaNPm8=";

}  // namespace host

#endif
