"""Where the prompt keeps what, and the person's settings."""
import configparser
import os
import pathlib

DEFAULTS = {
    "editing": ("emacs", ("emacs", "vi"), "keys of Emacs or of Vi"),
    "toolbar": (True, None, "the stack below the prompt"),
    "dot": (False, None, "a full stop at the end of each line by itself"),
    "completing": (True, None, "completions while one types, not only at Tab"),
    "suggesting": (True, None, "suggestions from history"),
    "signs": (True, None, "signs in completions of words"),
    "large": ("cut", ("cut", "pager", "all"), "what is done with a large output"),
    "limit": (50000, None, "bytes that make an output large"),
    "confine": (False, None, "files below the present folder only, wherever links lead, and no editor"),
    "log": ("", None, "a file that every text is written to, to be run again"),
}


def folder(variable, fallback):
    base = os.environ.get(variable)
    return pathlib.Path(base if base and os.path.isabs(base) else os.path.expanduser(fallback)) / "morvik"


def optionfile():
    return folder("XDG_CONFIG_HOME", "~/.config") / "prompt.ini"


def historyfile():
    return folder("XDG_STATE_HOME", "~/.local/state") / "history"


class Options:
    """One attribute for each row of DEFAULTS. `complaints` says what of the file made no sense."""

    def __init__(self, path=None):
        self.complaints = []
        for name, (value, _, _) in DEFAULTS.items():
            setattr(self, name, value)
        path = path or optionfile()
        reader = configparser.ConfigParser(interpolation=None)
        try:
            text = path.read_text(encoding="utf-8")
            reader.read_string(text if text.lstrip().startswith("[") else "[prompt]\n" + text, str(path))
        except FileNotFoundError:
            return
        except (OSError, UnicodeDecodeError, configparser.Error) as fault:
            self.complaints.append("%s: %s" % (path, str(fault).splitlines()[0]))
            return
        for section in reader.sections():
            for name in reader[section]:
                self.take(path, reader[section], name)

    def take(self, path, section, name):
        if name not in DEFAULTS:
            self.complaints.append("%s: there is no option %s" % (path, name))
            return
        value, choices, _ = DEFAULTS[name]
        try:
            value = (section.getboolean(name) if isinstance(value, bool) else section.getint(name)
                     if isinstance(value, int) else section[name])
            if choices and value not in choices:
                raise ValueError
            setattr(self, name, value)
        except ValueError:
            self.complaints.append("%s: %s = %s makes no sense" % (path, name, section[name]))
