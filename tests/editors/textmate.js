// Tokens of a text by the TextMate grammar, one "scope text" a line:  node textmate.js MODULES GRAMMAR <TEXT
const fs = require("fs");
const path = require("path");
const [modules, grammarfile] = process.argv.slice(2);
const textmate = require(path.join(modules, "vscode-textmate"));
const oniguruma = require(path.join(modules, "vscode-oniguruma"));
const wasm = fs.readFileSync(path.join(modules, "vscode-oniguruma", "release", "onig.wasm"));

const library = oniguruma.loadWASM(wasm).then(() => ({
  createOnigScanner: (patterns) => new oniguruma.OnigScanner(patterns),
  createOnigString: (text) => new oniguruma.OnigString(text),
}));
const registry = new textmate.Registry({
  onigLib: library,
  loadGrammar: async () => textmate.parseRawGrammar(fs.readFileSync(grammarfile, "utf8"), grammarfile),
});
registry.loadGrammar("source.morvik").then((grammar) => {
  let state = textmate.INITIAL;
  for (const line of fs.readFileSync(0, "utf8").split("\n")) {
    const found = grammar.tokenizeLine(line, state);
    for (const token of found.tokens) {
      const text = line.slice(token.startIndex, token.endIndex);
      if (text.trim()) console.log(token.scopes[token.scopes.length - 1] + " " + text);
    }
    state = found.ruleStack;
  }
});
