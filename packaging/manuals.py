"""Pages of the manual, in mdoc: a template beside this file for each program, with its options put in."""
import pathlib
import re
import textwrap
import time

TEMPLATES = pathlib.Path(__file__).resolve().parent / "man"


def escaped(text):
    """Text as it is: no line of it is a macro, no dash a hyphen that looks otherwise."""
    text = text.replace("\\", "\\e")
    text = re.sub(r"(?<![A-Za-z])-|-(?![A-Za-z])", r"\\-", text)
    return re.sub(r"^([.'])", r"\\&\1", text)


def broken(line):
    """A line of text on as many as it takes, none of which becomes a macro; a macro as it is."""
    if line.startswith("."):
        return line
    lines = textwrap.wrap(line, 78, break_long_words=False, break_on_hyphens=False)
    return "\n".join(re.sub(r"^([.'])", r"\\&\1", part) for part in lines)


def sentences(text):
    """A sentence a line, as mdoc wants it."""
    return "\n".join(escaped(part) for part in re.sub(r"([.;:]) (?=[A-Z])", r"\1\n", text).splitlines())


def flags(option):
    parts = []
    for name in option.names:
        part = "Fl " + name[1:].replace("-", "\\-")
        if option.argument and (name.startswith("--") or len(option.names) == 1):
            bare = option.argument.strip("[]={}")
            if option.optional():
                part += " Ns Op = Ns Cm %s" % bare
            elif option.choices():
                part += " Cm %s" % " | ".join(option.choices())
            else:
                joined = " Ns" if len(name) < 5 and bare.islower() or " " in bare else ""
                part += "%s Ar %s" % (joined, escaped(bare.replace(" ", "-")))
        parts.append(part)
    return ".It " + " , ".join(parts)


def optionlist(options):
    rows = "\n".join("%s\n%s" % (flags(option), sentences(option.text)) for option in options)
    return ".Bl -tag -width Ds\n%s\n.El" % rows


def page(program, version, settings, now):
    day = time.gmtime(now)
    text = (TEMPLATES / (program.name + ".1.in")).read_text(encoding="utf-8")
    parts = {"DATE": time.strftime("%B ", day) + time.strftime("%d, %Y", day).lstrip("0"), "VERSION": version,
             "OPTIONS": optionlist(program.options), "SETTINGS": settings}
    return "\n".join(map(broken, re.sub(r"@(\w+)@", lambda match: parts[match.group(1)], text).splitlines())) + "\n"


def settinglist(defaults):
    """The settings of the prompt: name, default, meaning."""
    rows = []
    for name, (value, choices, meaning) in defaults.items():
        said = {True: "yes", False: "no"}.get(value, value) if isinstance(value, bool) else value
        rest = " (%s)" % (", ".join(choices)) if choices else ""
        rows.append(".It Ic %s = %s\n%s%s." % (name, said if said != "" else "", meaning[0].upper() + meaning[1:], rest))
    return ".Bl -tag -width Ds\n%s\n.El" % "\n".join(row.replace(" = \n", " =\n") for row in rows)
