"""Colours by the language's own tables: a Pygments lexer, and the style of the prompt."""
from pygments.lexer import Lexer
from pygments.style import Style
from pygments.token import Comment, Error, Keyword, Name, Number, Operator, Punctuation, String, Text

from .scanner import Scan
from .signs import UNKNOWN, onecharacter

KINDS = {"word": Operator, "open": Keyword, "close": Keyword, "end": Keyword, "builtin": Keyword, "comment": Comment,
         "constant": Name.Constant, "number": Number, "string": String, "vector": Punctuation, "shape": Number,
         "name": Name.Variable, "address": Name.Label, "space": Text, "stray": Error}


class MorvikLexer(Lexer):
    name = "Morvik"
    aliases = ["morvik"]
    filenames = ["*.morvik"]

    def get_tokens_unprocessed(self, text):
        known, place = onecharacter(text), 0
        for token in Scan(known).tokens:
            if token.start > place:
                yield place, Error, text[place:token.start]
            kind = KINDS[token.kind]
            if token.kind in ("name", "address") and UNKNOWN in known[token.start:token.end]:
                kind = Error
            yield token.start, kind, text[token.start:token.end]
            place = token.end
        if place < len(text):
            yield place, Error, text[place:]


class MorvikStyle(Style):
    styles = {Operator: "#5f87d7", Keyword: "bold #af87ff", Comment: "italic #808080", Name.Constant: "#d7875f",
              Number: "#5faf87", String: "#afaf5f", Punctuation: "bold", Name.Variable: "", Name.Label: "#d787af",
              Error: "underline #d75f5f"}


OPENING = {"(": ")", "`(": ")"}
PAIRS = [("[.", (".]",))]


def pairs(text):
    """Where what is opened is closed: {start of one: start of the other} and the lengths of both."""
    known, open_, found = onecharacter(text), [], {}
    for token in Scan(known).tokens:
        part = known[token.start:token.end]
        place = (token.start, token.end)
        if token.kind == "open" or part in ("(", "`(", "[.", "MARK"):
            open_.append((token.kind if token.kind == "open" else part.replace("`", "").replace("MARK", "[."), place))
            continue
        wanted = ("open" if token.kind == "close" else {")": "(", ".]": "[.", "COLLECTFROMMARK": "[."}.get(part))
        if wanted and open_ and open_[-1][0] == wanted:
            other = open_.pop()[1]
            found[place], found[other] = other, place
    return found


def matching(text, cursor):
    """The two places (start, end) that belong together at the cursor, or nothing."""
    for place, other in pairs(text).items():
        if place[0] <= cursor < place[1] or place[1] == cursor:
            return place, other
    return None
