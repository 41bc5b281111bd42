// The extension in a stand-in for the editor: what hovering over each word of a text says, and the completions.
//   node extension.js EXTENSION <TEXT
const fs = require("fs");
const Module = require("module");
const registered = {};
const standin = {
  MarkdownString: function (text) { this.value = text; },
  Hover: function (contents, range) { this.contents = contents; this.range = range; },
  CompletionItem: function (label) { this.label = label; },
  CompletionItemKind: { Keyword: 13 },
  languages: {
    registerHoverProvider: (language, provider) => (registered.hover = { language, provider }),
    registerCompletionItemProvider: (language, provider) => (registered.completion = { language, provider }),
  },
};
const load = Module._load;
Module._load = (name, ...rest) => (name === "vscode" ? standin : load(name, ...rest));
const context = { subscriptions: [] };
require(process.argv[2]).activate(context);

const text = fs.readFileSync(0, "utf8");
const document = {
  getWordRangeAtPosition: (position, pattern) => {
    for (const match of text.matchAll(new RegExp(pattern, "g")))
      if (match.index <= position && position < match.index + match[0].length) return [match.index, match.index + match[0].length];
    return undefined;
  },
  getText: (range) => text.slice(...range),
};
const said = [];
for (const match of text.matchAll(/\S+/g)) {
  const hover = registered.hover.provider.provideHover(document, match.index);
  said.push([match[0], hover ? hover.contents.map((part) => part.value) : null]);
}
const items = registered.completion.provider.provideCompletionItems().map((item) => [item.label, item.detail, item.documentation.value]);
console.log(JSON.stringify({ language: registered.hover.language, subscriptions: context.subscriptions.length, said, items }));
