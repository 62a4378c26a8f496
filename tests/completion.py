"""Has bash, zsh and fish complete command lines of krohost, with the completions that it prints for them."""

import os
import pathlib
import pty
import re
import select
import subprocess
import sys
import tempfile

# What is typed after "krohost ", and the word that is at its end then.
CASES = {
    "tra": "trace",
    "wi": "wing.vtu",
    "trace --demand wi": "wing.vtu",
    "fol": "folder/",
    "--time-s": "--time-source",
    "info --app": "--append",
    "info --time-source AU": "AUTO",
    "info --append wing.vtu ot": "other.pvd",
    "bench --node-bits 6": "64",
    "replay la": "layout.json",
    "trace --record la": "layout.json",
    "trace --lis": "--lists",
    "completion z": "zsh",
}

# Ctrl-G shows the line and clears it.
BASH = r"""PS1='ready> '; bind 'set enable-bracketed-paste off'; source ./krohost.bash
bind -x '"\C-g": printf "<<%s>>" "$READLINE_LINE"; READLINE_LINE='"""
ZSH = r"""PS1='ready> '; fpath=($PWD/functions $fpath); autoload -U compinit; compinit -u -D
show() { print -rn -- "<<$BUFFER>>"; BUFFER= }; zle -N show; bindkey '^G' show"""


def read_until(terminal, pattern):
    seen = b""
    while not re.search(pattern, seen, re.DOTALL):
        assert select.select([terminal], [], [], 20)[0], f"the shell is silent after {seen}"
        seen += os.read(terminal, 65536)
    return re.search(pattern, seen, re.DOTALL)


def completed_in_terminal(shell, folder):
    process, terminal = pty.fork()
    if process == 0:
        os.chdir(folder)
        os.environ.update(TERM="dumb", ZDOTDIR=str(folder), INPUTRC="/dev/null")
        os.execvp(shell[0], shell)
    read_until(terminal, b"ready> ")
    for typed in CASES:
        os.write(terminal, f"krohost {typed}\t\a".encode())
        word = read_until(terminal, rb"<<(.*?)>>")[1].decode().split()[-1]
        yield typed, word.rstrip("=")  # zsh goes on to the value
    os.close(terminal)
    os.waitpid(process, 0)


def completed_by_fish(folder):
    for typed in CASES:
        script = f"source krohost.fish; complete -C 'krohost {typed}'"
        lines = subprocess.run(["fish", "-N", "-c", script], cwd=folder, check=True, text=True, capture_output=True)
        assert not lines.stderr, lines.stderr
        yield typed, " ".join(line.split("\t")[0] for line in lines.stdout.splitlines())


def prepare(krohost, folder):
    for name in ["wing.vtu", "wing.txt", "other.pvd", "other.png", "layout.json"]:
        (folder / name).touch()
    (folder / "folder").mkdir()
    (folder / "functions").mkdir()
    for shell, name in [("bash", "krohost.bash"), ("zsh", "functions/_krohost"), ("fish", "krohost.fish")]:
        script = subprocess.run([krohost, "completion", shell], check=True, capture_output=True).stdout
        (folder / name).write_bytes(script)
        subprocess.run([shell, "-n", folder / name], check=True)
    (folder / "bashrc").write_text(BASH)
    (folder / ".zshrc").write_text(ZSH)


with tempfile.TemporaryDirectory() as name:
    folder = pathlib.Path(name)
    os.environ.update(HOME=name, XDG_CONFIG_HOME=name)
    os.environ.pop("KROHOST_ADDON_PATH", None)
    prepare(pathlib.Path(sys.argv[1]).resolve(), folder)
    shells = {
        "bash": completed_in_terminal(["bash", "--noprofile", "--rcfile", "bashrc", "-i"], folder),
        "zsh": completed_in_terminal(["zsh", "-d", "-i"], folder),
        "fish": completed_by_fish(folder),
    }
    wrong = [
        f"{shell}: krohost {typed}: {word}"
        for shell, completed in shells.items()
        for typed, word in completed
        if word != CASES[typed]
    ]
print("\n".join(wrong))
sys.exit(1 if wrong else 0)
