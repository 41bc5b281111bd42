"""What the person types: the line editor with its keys, colours, completions and history."""
import functools
import os

from prompt_toolkit import PromptSession
from prompt_toolkit.application import get_app, run_in_terminal
from prompt_toolkit.auto_suggest import AutoSuggestFromHistory
from prompt_toolkit.completion import CompleteEvent, get_common_complete_suffix
from prompt_toolkit.enums import EditingMode
from prompt_toolkit.filters import Condition, has_completions, is_searching
from prompt_toolkit.formatted_text import FormattedText
from prompt_toolkit.history import DummyHistory, FileHistory, InMemoryHistory
from prompt_toolkit.key_binding import KeyBindings
from prompt_toolkit.keys import Keys
from prompt_toolkit.layout.processors import Processor, Transformation
from prompt_toolkit.layout.utils import explode_text_fragments
from prompt_toolkit.lexers import DynamicLexer, PygmentsLexer, SimpleLexer
from prompt_toolkit.output.color_depth import ColorDepth
from prompt_toolkit.validation import ValidationError, Validator
from prompt_toolkit.styles import Style, merge_styles, style_from_pygments_cls

from . import colours, completing, engine, options as settings, words
from .scanner import Scan
from .signs import BYTES, CLOSE, EXACT, OPEN, onecharacter

MARKS = {"string": "'", "comment": '"', "vector": "(", "shape": "[", "function": ":", "name": "\x02"}
LONGEST_KEPT = 100000  # characters of a text that the file of history takes
HUGE = 2000  # characters of a paste that is shown as a note in its place
OURS = Style.from_dict({"bottom-toolbar": "noreverse #808080", "matching": "reverse", "continuation": "#808080",
                        "prompt": "bold", "depth": "#5faf87"})


class LimitedHistory(FileHistory):
    """Very long texts are remembered while the prompt runs, and not in the file."""

    def store_string(self, string):
        if len(string) <= LONGEST_KEPT:
            try:
                super().store_string(string)
            except OSError:
                pass


def history():
    path = settings.historyfile()
    try:
        path.parent.mkdir(mode=0o700, parents=True, exist_ok=True)
        os.close(os.open(path, os.O_CREAT | os.O_APPEND | os.O_WRONLY, 0o600))
        return LimitedHistory(str(path))
    except OSError:
        return InMemoryHistory()


class MatchingPairs(Processor):
    """Shows what belongs to the bracket, or to the beginning or end of a function, at the cursor."""

    def __init__(self):
        self.known = (None, None)

    def apply_transformation(self, transformation_input):
        document, fragments = transformation_input.document, transformation_input.fragments
        if len(document.text) > completing.LONGEST or get_app().is_done:
            return Transformation(fragments)
        key = (document.text, document.cursor_position)
        if self.known[0] != key:
            self.known = (key, colours.matching(*key))
        places = self.known[1]
        if not places:
            return Transformation(fragments)
        begin = document.translate_row_col_to_index(transformation_input.lineno, 0)
        fragments = explode_text_fragments(fragments)
        for start, end in places:
            for place in range(max(start - begin, 0), min(end - begin, len(fragments))):
                column = transformation_input.source_to_display(place)
                if column < len(fragments):
                    fragments[column] = (fragments[column][0] + " class:matching", *fragments[column][1:])
        return Transformation(fragments)


@functools.lru_cache(4)
def scanned(text):
    return Scan(onecharacter(text))


class Meanings(Validator):
    """Outside strings and comments only signs have a byte."""

    def __init__(self, expanded):
        self.expanded = expanded

    def validate(self, document):
        text = self.expanded(document.text)
        char = None if text.isascii() else unknown(text)
        if char and not Editor.ishelp(text):
            raise ValidationError(document.text.find(char), "%s is no sign, and means nothing outside strings and comments"
                                  % char)


def unknown(text):
    """The first character outside strings, comments and exact bytes that stands for nothing there."""
    for token in scanned(EXACT.sub(lambda match: " " * len(match.group()), text)).tokens:
        if token.kind not in ("string", "comment"):
            for char in text[token.start:token.end]:
                if char > "\x7f" and char not in BYTES and char not in OPEN + CLOSE:
                    return char
    return None


class Editor:
    """The two line editors: of texts, and of answers to a running programme."""

    def __init__(self, prompt, plain):
        self.prompt, self.options, self.plain = prompt, prompt.options, plain
        self.pastes = {}
        lexer = PygmentsLexer(colours.MorvikLexer)
        self.completer = completing.MorvikCompleter(prompt.knownnames, self.options.signs)
        common = {
            "editing_mode": EditingMode.VI if self.options.editing == "vi" else EditingMode.EMACS,
            "lexer": DynamicLexer(lambda: SimpleLexer() if self.islong() else lexer),
            "style": merge_styles([style_from_pygments_cls(colours.MorvikStyle), OURS]),
            "completer": self.completer,
            "complete_in_thread": False,
            "color_depth": ColorDepth.DEPTH_1_BIT if prompt.colourless else None,
            "input_processors": [MatchingPairs()],
        }
        self.texts = PromptSession(history=history(), key_bindings=self.keys(),
                                   auto_suggest=AutoSuggestFromHistory() if self.options.suggesting else None,
                                   complete_while_typing=self.options.completing, enable_history_search=False,
                                   validator=Meanings(self.expanded), validate_while_typing=False,
                                   multiline=True, prompt_continuation=self.continuation, enable_suspend=True, **common)
        self.answers = PromptSession(history=InMemoryHistory(), complete_while_typing=False, **common)
        self.lines = PromptSession(history=DummyHistory(), key_bindings=self.linekeys(),
                                   color_depth=common["color_depth"], editing_mode=common["editing_mode"])

    def islong(self):
        return len(get_app().current_buffer.text) > completing.LONGEST

    # ---- Texts.

    scanned = staticmethod(scanned)

    def text(self, depth):
        """One or more whole texts; "" where the person dropped one, None where the session ends."""
        self.pastes.clear()
        self.texts.bottom_toolbar = self.toolbar if self.options.toolbar and not self.plain else None
        try:
            typed = self.texts.prompt(FormattedText([("class:prompt", "Morvik "), ("class:depth", "[%d]" % depth),
                                                     ("class:prompt", "> ")]))
        except KeyboardInterrupt:
            return ""
        except EOFError:
            return None
        return self.ended(self.expanded(typed))

    def ended(self, text):
        """A text that the person left to the prompt to end."""
        if self.ishelp(text) or not text.strip():
            return text
        scan = scanned(text)
        return text if scan.iswhole() or scan.opened else text + " ."

    def expanded(self, text):
        for note, paste in self.pastes.items():
            text = text.replace(note, paste)
        return text

    def iswhole(self, text):
        """Does Enter send this?"""
        text = self.expanded(text)
        if not text.strip() or self.ishelp(text):
            return True
        scan = scanned(text)
        return scan.iswhole() or (self.options.dot and not scan.opened)

    @staticmethod
    def ishelp(text):
        """A question mark and one word; `?` is a word itself, so that a text begins with one as well."""
        text = text.strip()
        return text.startswith("?") and len(text.split()) == 1 and not text.endswith(".")

    @staticmethod
    def namesin(text):
        return completing.namesin(text) if len(text) <= completing.LONGEST else []

    def continuation(self, width, line, wraps):
        """What is open at the end of the line before."""
        if wraps:
            return " " * width
        text = "\n".join(get_app().current_buffer.text.split("\n")[:line])
        opened = scanned(self.expanded(text)).opened if len(text) < completing.LONGEST else []
        marks = " ".join(MARKS[part.what] for part in opened[-3:])
        return [("class:continuation", (marks + "... ").rjust(width)[-width:])]

    # ---- The toolbar.

    def toolbar(self):
        values = self.prompt.stack
        depth = self.prompt.wanted.depth
        if depth == 0:
            text = "the stack is empty"
        elif values is None:
            text = "%d on the stack" % depth
        else:
            text = "top: " + "  │  ".join(value.summary() for value in values)
            text += "  │  ... %d in all" % depth if depth > len(values) else ""
        return [("class:bottom-toolbar", " " + text)]

    # ---- Keys.

    def keys(self):
        keys = KeyBindings()
        searching = is_searching

        @keys.add("enter", filter=~searching)
        def _(event):
            buffer = event.current_buffer
            if buffer.complete_state and buffer.complete_state.current_completion:
                buffer.complete_state = None
            elif self.iswhole(buffer.text):
                buffer.validate_and_handle()
            else:
                buffer.newline(copy_margin=False)

        @keys.add("escape", "enter", filter=~searching)
        def _(event):
            event.current_buffer.validate_and_handle()

        @keys.add("tab", filter=~has_completions)
        def _(event):
            buffer = event.current_buffer
            sign = completing.typedsign(buffer.document.text_before_cursor)
            if sign:
                buffer.delete_before_cursor(sign[0])
                buffer.insert_text(sign[1])
            else:
                self.complete(buffer)

        @keys.add("c-c")
        def _(event):
            event.app.exit(exception=KeyboardInterrupt, style="class:aborting")

        @keys.add("c-d", filter=Condition(lambda: not get_app().current_buffer.text))
        def _(event):
            event.app.exit(exception=EOFError, style="class:exiting")

        @keys.add(Keys.BracketedPaste)
        def _(event):
            data = event.data.replace("\r\n", "\n").replace("\r", "\n")
            event.current_buffer.insert_text(self.noted(data))

        @keys.add("f2")
        def _(event):
            self.options.toolbar = not self.options.toolbar
            self.prompt.look()
            self.texts.bottom_toolbar = self.toolbar if self.options.toolbar else None

        @keys.add("f3")
        def _(event):
            run_in_terminal(self.prompt.screen.page)

        @keys.add("f4")
        def _(event):
            vi = event.app.editing_mode == EditingMode.VI
            event.app.editing_mode = EditingMode.EMACS if vi else EditingMode.VI

        @keys.add("f5")
        def _(event):
            self.options.dot = not self.options.dot

        return keys

    def complete(self, buffer):
        """Puts in what all completions have in common; where that is nothing new, shows them."""
        document = buffer.document
        found = list(self.completer.get_completions(document, CompleteEvent(completion_requested=True)))
        common = get_common_complete_suffix(document, found)
        if len(found) == 1:
            buffer.apply_completion(found[0])
        elif common:
            buffer.insert_text(common)
        elif found:
            buffer.start_completion(select_first=False)

    def noted(self, data):
        """A huge paste stands in the text as a note, and is put in its place when the text is sent."""
        if len(data) <= HUGE:
            return data
        note = "⟦%d: %d pasted characters⟧" % (len(self.pastes) + 1, len(data))
        self.pastes[note] = data
        return note

    @staticmethod
    def linekeys():
        keys = KeyBindings()

        @keys.add(Keys.BracketedPaste)
        def _(event):
            event.current_buffer.insert_text(event.data.replace("\r\n", "\n").replace("\r", "\n").replace("\n", " "))

        return keys

    # ---- Answers to a running programme.

    def answer(self, wanted, question, sofar):
        """A line for INPUT, QUOTEDIN, the Inspect prompt or an unfinished text; None where the person breaks off."""
        editor = self.lines if wanted.state == engine.ASKS_LINE else self.answers
        if wanted.state == engine.UNFINISHED and not question:
            opened = scanned(sofar).opened
            question = " ".join(MARKS[part.what] for part in opened) + "... "
        try:
            return editor.prompt(question)
        except (KeyboardInterrupt, EOFError):
            return None

    # ---- Help.

    def help(self, text, example):
        print(words.answer(text, example))
