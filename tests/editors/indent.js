// Indents the text on the standard input as Visual Studio Code does by the rules of a language configuration:
// node indent.js CONFIGURATION
const fs = require("fs");
const rules = JSON.parse(fs.readFileSync(process.argv[2])).indentationRules;
const increases = new RegExp(rules.increaseIndentPattern), decreases = new RegExp(rules.decreaseIndentPattern);
let level = 0;
const lines = fs.readFileSync(0, "utf8").split("\n").map((line) => {
  const text = line.trim();
  if (decreases.test(text)) level = Math.max(0, level - 1);
  const indented = text ? "  ".repeat(level) + text : "";
  if (increases.test(text)) level += 1;
  return indented;
});
process.stdout.write(lines.join("\n"));
