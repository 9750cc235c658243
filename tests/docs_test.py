#!/usr/bin/env python3
"""What the documents tell a reader to type works: commands of the two programs are run against a server on the
sample library, all others have to be run by a script or another test. Manual pages know every command and option.

usage: docs_test.py SOURCE_DIRECTORY CLIENT SERVER"""
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import time

source = pathlib.Path(sys.argv[1]).resolve()
programs = {"tavisys": sys.argv[2], "tavisys-server": sys.argv[3]}
documents = [*source.glob("*.md"), *source.glob("docs/*.md"), *source.glob("docs/man/tavisys*"),
             source / "samples/README.md", source / "tools/wireshark/README.md"]
# What else is typed, and where it is run.
RUN_BY = {
    r"cmake --preset \w+ && cmake --build --preset \w+( && ctest --test-dir build/\w+.*)?": "scripts/test.sh",
    r"ctest --test-dir build/\w+ .*": "scripts/test.sh",
    r"cmake --install .*": "tests/install_test.py",
    r"cc browse.c .*pkg-config.*|cmake -B build && cmake --build build && build/browse": "tests/install_test.py",
    r"build/release/bench/(load|hostile) .*": "scripts/soak.sh",
    r"cmake/update-export-map": "tests/exports_test.py",
    r"(wireshark|tshark) .*": "tests/dissector_test.py",
}
FOR_THE_SYSTEM = re.compile(r"systemctl |editor |apt |sudo |mkdir -p ~|cp .* ~")  # nothing that a test may touch
PLACES = {"/srv/movies": str(source / "samples/library"), "192.168.1.10": "127.0.0.1", "客厅影柜": "x"}
complaints = []


def commands_of(text):
    """Lines of code blocks and text in backquotes that begin like a command."""
    text = re.sub(r"\\\n\s*", "", text)
    lines = re.findall(r"^(?:    |\.Dl )(\S.*)$", text, re.M) + re.findall(r"`([^`\n]+)`", text)
    for block in re.findall(r"^```(?:sh)?\n(.*?)^```", text, re.M | re.S):
        lines += re.findall(r"^\$ (.*)$", block, re.M)
    for line in lines:
        command = re.sub(r"\s+#.*| &$| >\S+$", "", line.split(" | ")[0]).strip()
        if re.match(r"scripts/\w+\.sh|build/\S+ |cmake/\w+-|(cmake|ctest|cc|tavisys(-server)?|(t|wire)shark|systemctl|sudo|"
                    r"editor|apt) (?!-*install$)\D", command):
            yield command


def run(words, **options):
    return subprocess.run(words, capture_output=True, text=True, timeout=60, **options)


def try_command(command, folder):
    if command.startswith("scripts/"):
        script = source / command.split()[0]
        return "" if os.access(script, os.X_OK) else "no such script"
    words = shlex.split(command)
    if words[0] not in programs:
        by = [where for form, where in RUN_BY.items() if re.fullmatch(form, command)]
        return "" if by and (source / by[0]).is_file() or FOR_THE_SYSTEM.match(command) else "nobody runs it"
    if re.search(r"[A-Z]{2,}(?!\w*=)|\.\.\.|\[", command):
        return ""  # a form, not a command
    words = [programs[words[0]], *(PLACES.get(word, word) for word in words[1:])]
    if words[0] == programs["tavisys-server"] and not {"--check", "--help"} & set(words):
        words.append("--check")
    if "--check" in words and "--library" not in words:
        words += ["--library", PLACES["/srv/movies"]]
    if "--watch" in words and "status" not in words:
        return ""  # until Ctrl-C
    done = run(words, cwd=folder)
    # Of the sample library two documents are left out.
    return "" if done.returncode == (1 if "--check" in words else 0) else f"{done.returncode} {done.stderr}"


def check_manual(program, section):
    """Every command, and every option of each, stands in the page, and the program knows the project's version."""
    version = re.search(r"^project\(tavisys VERSION (\S+)", (source / "CMakeLists.txt").read_text(), re.M)[1]
    if (told := run([programs[program], "--version"]).stdout) != f"{program} {version}\n":
        complaints.append(f"{program} --version: {told}")
    page = (source / f"docs/man/{program}.{section}").read_text()
    words = re.sub(r"[-.,\s]+", " ", re.sub(r"^\.", "", page, flags=re.M)).split()
    english = ["--lang", "en"] if program == "tavisys" else []
    shown = run([programs[program], *english, "--help"]).stdout
    commands = re.findall(r"^  ([a-z]+) {2,}", shown, re.M) if english else []
    for command in commands:
        shown += run([programs[program], command, *english, "--help"]).stdout
    wanted = set(commands) | set(re.findall(r"--([a-z-]+)", shown))
    known = set(words) | set(re.findall(r"-([a-z]+(?:-[a-z]+)+)", page))
    complaints.extend(f"docs/man/{program}.{section} doesn't tell {word}" for word in sorted(wanted - known))


def main():
    library = ["--library", str(source / "samples/library"), "--log-level", "ERROR"]
    server = subprocess.Popen([programs["tavisys-server"], *library], stderr=subprocess.DEVNULL)
    try:
        while run([programs["tavisys"], "status", "--watch"]).returncode != 0:
            assert server.poll() is None, "the server has ended"
            time.sleep(0.05)  # until it listens
        tried = 0
        with tempfile.TemporaryDirectory() as folder:
            os.symlink(source / "samples", f"{folder}/samples")
            os.makedirs(f"{folder}/build/demo")
            for document in documents:
                for command in commands_of(document.read_text()):
                    tried += 1
                    if failure := try_command(command, folder):
                        complaints.append(f"{document.relative_to(source)}: {command}: {failure}")
        check_manual("tavisys", 1)
        check_manual("tavisys-server", 8)
    finally:
        server.terminate()
        server.wait()
    print(*complaints or [f"{tried} commands"], sep="\n")
    return 1 if complaints or tried < 30 else 0


sys.exit(main())
