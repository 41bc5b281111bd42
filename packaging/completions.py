"""Completions for bash, zsh and fish, of options and of what stands behind them."""

LIBRARY = {"--library"}
FILE = {"--log", "--interpreter"}
SCRIPTS = {"morvik-run", "morvik-check", "morvik-signs"}

# The libraries that morvik-run would find, by their names.
BASH_LIBRARIES = """_morvik_libraries() {
  local folders folder path
  IFS=: read -r -a folders <<<"${MORVIK_PATH-}"
  path=$(type -P morvik-run) && folders+=("${path%/*}/../share/morvik/lib" "${path%/*}/../lib")
  for folder in "${folders[@]}"; do
    for path in "$folder"/*.morvik; do
      [ -e "$path" ] && path=${path##*/} && echo "${path%.morvik}"
    done
  done
}
"""
ZSH_LIBRARIES = """_morvik_libraries() {
  local -a folders names
  folders=(${(s.:.)MORVIK_PATH} ${commands[morvik-run]:+${commands[morvik-run]:h}/../share/morvik/lib} \\
           ${commands[morvik-run]:+${commands[morvik-run]:h}/../lib})
  names=(${^folders}/*.morvik(N:t:r))
  compadd -a names
}
"""
FISH_LIBRARIES = """function __morvik_libraries
    set -l folders (string split -n : -- $MORVIK_PATH)
    set -l binary (command -s morvik-run)
    and set -a folders (dirname $binary)/../share/morvik/lib (dirname $binary)/../lib
    for path in $folders/*.morvik
        string replace -r '\\.morvik$' '' (basename $path)
    end
end
"""


def kind(option):
    """What stands behind an option: nothing, a library, a file, one of a few words, or something else."""
    if not option.argument:
        return "nothing"
    if LIBRARY & set(option.names):
        return "library"
    if FILE & set(option.names):
        return "file"
    return "choice" if option.choices() else "other"


def summary(option):
    """The first sentence, short enough for a list."""
    text = option.text.split("; ")[0].split(". ")[0].rstrip(".:")
    return text if len(text) <= 70 else text[:70].rsplit(" ", 1)[0] + " ..."


def words(program):
    """Each option as it is typed; with the dash of a choice that stands behind `=`."""
    for option in program.options:
        for name in option.names:
            yield name
        if option.optional():
            yield from ("%s=%s" % (option.names[-1], choice) for choice in option.choices())


def uses_libraries(program):
    return any(kind(option) == "library" for option in program.options)


# ---- bash

def bash(program):
    function = "_" + program.name.replace("-", "_")
    cases = []
    for option in program.options:
        given = {"library": '$(compgen -W "$(_morvik_libraries)" -- "$word")', "file": '$(compgen -f -- "$word")',
                 "choice": '$(compgen -W "%s" -- "$word")' % " ".join(option.choices())}.get(kind(option), "")
        if kind(option) != "nothing" and not option.optional() and any(name.startswith("--") for name in option.names):
            cases.append("    %s)\n      COMPREPLY=(%s)\n      return\n      ;;\n" % (" | ".join(option.names), given))
    files = {True: '\n  COMPREPLY=($(compgen -f -X "!*.morvik" -- "$word") $(compgen -d -- "$word"))'}.get(program.name in SCRIPTS, "")
    return ("# Completion of %s in bash.\n%s%s() {\n  local word=${COMP_WORDS[COMP_CWORD]}\n  COMPREPLY=()\n%s  if [[ $word == -* ]]; then\n"
            '    COMPREPLY=($(compgen -W "%s" -- "$word"))\n    return\n  fi%s\n}\ncomplete -o filenames -F %s %s\n' %
            (program.name, BASH_LIBRARIES if uses_libraries(program) else "", function,
             '  case ${COMP_WORDS[COMP_CWORD - 1]} in\n%s  esac\n' % "".join(cases) if cases else "",
             " ".join(words(program)), files, function, program.name))


# ---- zsh

def zshquoted(text):
    return text.replace("'", "'\\''").replace("[", "\\[").replace("]", "\\]").replace(":", "\\:")


def zshspec(option):
    action = {"library": ":library:_morvik_libraries", "file": ":file:_files",
              "choice": ":%s:(%s)" % (option.names[-1].lstrip("-"), " ".join(option.choices())),
              "other": ":%s: " % option.argument.lower()}.get(kind(option), "")
    action = ":" + action if option.optional() else action
    for name in option.names:
        joint = ("=-" if option.optional() else "=") if action and name.startswith("--") else ""
        joint = "-" if action and not name.startswith("--") and len(option.names) == 1 else joint
        others = " ".join(option.names) if len(option.names) > 1 and kind(option) != "library" else ""
        many = "*" if kind(option) == "library" else ""
        yield "'%s%s%s%s[%s]%s'" % ("(%s)" % others if others else "", many, name, joint, zshquoted(summary(option)), action)


def zsh(program):
    specs = [spec for option in program.options for spec in zshspec(option)]
    if program.name in SCRIPTS:
        specs.append("'*:file:_files -g \"*.morvik(-.)\"'")
    return "#compdef %s\n# Completion of %s in zsh.\n%s\n_arguments \\\n  %s\n" % (
        program.name, program.name, ZSH_LIBRARIES if uses_libraries(program) else "", " \\\n  ".join(specs))


# ---- fish

def fishquoted(text):
    return "'%s'" % text.replace("\\", "\\\\").replace("'", "\\'")


def fishspec(program, option):
    parts = ["complete -c %s" % program.name]
    for name in option.names:
        parts.append(("-l " if name.startswith("--") else "-s " if len(name) == 2 else "-o ") + name.lstrip("-"))
    given = {"library": "-x -a '(__morvik_libraries)'", "file": "-r -F", "choice": "-a '%s'" % " ".join(option.choices()),
             "other": "-x" if option.names[-1].startswith("--") else ""}.get(kind(option), "")
    if kind(option) == "choice":
        given = ("-f " if option.optional() else "-x ") + given
    return " ".join(filter(None, [*parts, given, "-d " + fishquoted(summary(option))]))


def fish(program):
    lines = ["# Completion of %s in fish." % program.name]
    if uses_libraries(program):
        lines.append(FISH_LIBRARIES.rstrip())
    lines.append("complete -c %s -f%s" % (program.name, " -a '(__fish_complete_suffix .morvik)'" if program.name in SCRIPTS else ""))
    lines += [fishspec(program, option) for option in program.options]
    return "\n".join(lines) + "\n"
