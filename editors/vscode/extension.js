// What a word means, where the pointer rests on it and beside completions. The words are those of words.json, which is made
// from the tables of the interpreter.
const vscode = require("vscode");
const { words, signs } = require("./words.json");

const WORD = /[^\s()'";]+/;
const bySpelling = new Map();
for (const word of words)
  for (const spelling of word.spellings) bySpelling.set(spelling, [...(bySpelling.get(spelling) || []), word]);

// A file that is read as Latin-1 shows bytes where others have signs.
function withsigns(text) {
  return [...text].map((letter) => signs[letter] || letter).join("");
}

function described(word) {
  const effect = word.effect ? "`" + word.effect + "`\n\n" : "";
  return new vscode.MarkdownString("**" + word.spellings.join("  ") + "**\n\n" + effect + word.meaning);
}

function hover(document, position) {
  const range = document.getWordRangeAtPosition(position, WORD);
  if (!range) return undefined;
  const text = withsigns(document.getText(range));
  // A full stop that ends the text stands right behind a word.
  const found = bySpelling.get(text) || bySpelling.get(text.replace(/\.$/, ""));
  return found && new vscode.Hover(found.map(described), range);
}

function completions() {
  const items = [];
  for (const word of words)
    for (const spelling of word.spellings) {
      if (!/^[A-Za-z]/.test(spelling)) continue;
      const item = new vscode.CompletionItem(spelling, vscode.CompletionItemKind.Keyword);
      item.detail = word.effect;
      item.documentation = described(word);
      items.push(item);
    }
  return items;
}

function activate(context) {
  context.subscriptions.push(
    vscode.languages.registerHoverProvider("morvik", { provideHover: hover }),
    vscode.languages.registerCompletionItemProvider("morvik", { provideCompletionItems: completions })
  );
}

module.exports = { activate, hover, completions };
