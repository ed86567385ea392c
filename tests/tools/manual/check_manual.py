#!/usr/bin/env python3
"""Holds the manual page and the shells' completions to --help: all commands and options are in each, groff renders the page
without a warning, bash and zsh run the completions."""

import argparse
import re
import subprocess
import sys
import tempfile
from pathlib import Path

# Sets what bash would, calls the completion and prints its replies.
BASH = 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _mpatool; printf "%s\\n" "${COMPREPLY[@]}"'
# zsh's own helpers print what they are given.
ZSH = """
_arguments() { [[ $1 == -C ]] && state=$wanted; print -rl -- "$@" }
_describe() { print -rl -- "${(@P)2}" }
wanted=$2; words=($3); source $1
"""


def output_of(*command, **options):
    done = subprocess.run([str(part) for part in command], capture_output=True, text=True, check=False, **options)
    if done.returncode != 0 or done.stderr:
        sys.exit(f"{command}: exit status {done.returncode}\n{done.stderr}")
    return done.stdout


def require(good, message):
    if not good:
        sys.exit(message)


class Help:
    """What --help tells: options with their descriptions, commands."""

    def __init__(self, text):
        options, _, commands = text.partition("Subcommands:\n")
        self.options = {}
        for line in options.splitlines():
            found = re.match(r"  (-[-\w,]+)(?: [A-Z|]+)?(?: REQUIRED)?(?: \.\.\.)?(?: Excludes:.*)?\s*(.*)", line)
            if found:
                for name in found[1].split(","):
                    self.options[name] = found[2]
        self.commands = re.findall(r"^  (\w+)  ", commands.split("\n\n")[0], re.MULTILINE)


def section(page, heading):
    found = re.search(rf"^{re.escape(heading)}\n(.*?)(?=^\.S[HS] |\Z)", page, re.MULTILINE | re.DOTALL)
    require(found, f"the page has no {heading}")
    return found[1].replace("\\-", "-")


def check_page(path, program, commands):
    page = path.read_text()
    require(output_of("groff", "-man", "-ww", "-z", path) == "", "groff printed something")
    shown = output_of("groff", "-man", "-Tutf8", "-rLL=500n", path)
    for name, helps in [("OPTIONS", program), *commands.items()]:
        text = section(page, f".SH {name}" if name == "OPTIONS" else f".SS {name}")
        for option in helps.options:
            inherited = name != "OPTIONS" and option in ("-h", "--help")
            require(inherited or f"\\fB{option}\\fR" in text, f"the page lacks {name} {option}")
    statuses = re.findall(r"^\\fB(\d+)\\fR$", section(page, ".SH EXIT STATUS"), re.MULTILINE)
    require(statuses == ["0", "1", "2", "3", "130"], f"exit statuses are {statuses}")
    for status in ("damage", "Ctrl-C", "command line makes no sense"):
        require(status in shown.replace("‐", "-"), f"rendered, the page does not tell of {status}")


def bash(path, words, folder):
    return set(output_of("bash", "-c", BASH, "bash", path, "mpatool", *words, cwd=folder).split())


def check_bash(path, tool, program, commands, folder):
    (folder / "song.mp3").write_bytes(b"")
    require(bash(path, [""], folder) == set(commands) | set(program.options), "bash: other words than commands and options")
    require(bash(path, ["de"], folder) == {"decode"}, "bash: a command's beginning")
    require(bash(path, ["--module", "so"], folder) == {"song.mp3"}, "bash: the module's path")
    for name, helps in commands.items():
        wanted = set(helps.options) | {"--module"}
        require(bash(path, [name, "-"], folder) == wanted, f"bash: options of {name}")
        takes_files = name != "selftest"
        require(bash(path, [name, "so"], folder) == ({"song.mp3"} if takes_files else set()), f"bash: files of {name}")
        for option, description in helps.options.items():
            check_choices(tool, name, option, description, bash(path, [name, option, ""], folder), folder)


def check_choices(tool, name, option, description, offered, folder):
    """What is offered is what --help names, and the tool takes it."""
    if not re.fullmatch(r"(\w+, )*\w+ or \w+", description):
        return
    require(offered == set(re.split(r", | or ", description)), f"bash: {name} {option} offers {offered}")
    for choice in offered:
        time = ["--time", "40"] if name == "slices" else []
        said = subprocess.run([tool, name, "missing.mp3", *time, option, choice], cwd=folder, capture_output=True,
                              check=False)
        require(said.returncode == 1, f"{name} {option} {choice} gives {said.returncode}")


def check_zsh(path, program, commands):
    said = output_of("zsh", "-f", "-c", ZSH, "zsh", path, "command", "").splitlines()
    for name in commands:
        require([line for line in said if line.startswith(name + ":")], f"zsh: no {name}")
    for option in program.options:
        require([line for line in said if re.match(rf"(\(.*\))?{option}\[", line)], f"zsh: no {option}")
    for name, helps in commands.items():
        said = output_of("zsh", "-f", "-c", ZSH, "zsh", path, "argument", name).splitlines()
        said = said[said.index("*::argument:->argument") + 1:]
        for option in [*helps.options, "--module"]:
            require([line for line in said if re.match(rf"(\(.*\))?{option}\[", line)], f"zsh: {name} lacks {option}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split(":")[0])
    parser.add_argument("tool", type=Path)
    parser.add_argument("manual", type=Path)
    options = parser.parse_args()
    manual = options.manual.resolve()
    program = Help(output_of(options.tool, "--help"))
    commands = {name: Help(output_of(options.tool, name, "--help")) for name in program.commands}
    require(len(commands) >= 7 and "-o" in commands["decode"].options, "the words of --help are not found")
    check_page(manual / "man/man1/mpatool.1", program, commands)
    with tempfile.TemporaryDirectory() as name:
        check_bash(manual / "bash-completion/completions/mpatool", options.tool.resolve(), program, commands,
                   Path(name))
    check_zsh(manual / "zsh/site-functions/_mpatool", program, commands)
    print(f"{len(commands)} commands, {sum(len(text.options) for text in commands.values())} options")


main()
