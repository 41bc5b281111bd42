"""Colours for the pages: programmes, and sessions with what is typed in them."""
import pathlib
import re
import sys

from pygments.lexer import Lexer
from pygments.lexers import LEXERS
from pygments.token import Generic

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "python"))
from morvik.colours import MorvikLexer  # noqa: E402  pylint: disable=wrong-import-position

__all__ = ["MorvikLexer", "SessionLexer"]

PROMPT = re.compile(r"(?:Morvik \[\d+\]>|Inspect \[\d+\]:) ?")
ENDED = re.compile(r"(?:\.|(?<![A-Za-z_0-9])END)\s*$")


class SessionLexer(Lexer):
    """A text is typed from a prompt on, up to the line that ends it; at the Inspect prompt it is the line."""

    name = "Morvik session"
    aliases = ["morvik-session"]

    def get_tokens_unprocessed(self, text):
        place, typing, start, typed = 0, False, 0, ""
        for line in text.splitlines(True):
            prompt = PROMPT.match(line)
            if prompt:
                yield place, Generic.Prompt, prompt.group()
                start, typed, typing = place + prompt.end(), line[prompt.end():], True
            elif typing:
                typed += line
            else:
                yield place, Generic.Output, line
            place += len(line)
            if typing and (ENDED.search(line) or line.startswith("Inspect") or not typed.strip()):
                yield from self.programme(start, typed)
                typing = False
        if typing:
            yield from self.programme(start, typed)

    @staticmethod
    def programme(start, text):
        for place, kind, part in MorvikLexer().get_tokens_unprocessed(text):
            yield start + place, kind, part


def register():
    """Makes them known to whoever asks Pygments for a lexer by its name."""
    for lexer in (MorvikLexer, SessionLexer):
        LEXERS[lexer.__name__] = (__name__, lexer.name, tuple(lexer.aliases), (), ())
