#!/usr/bin/env python3
"""What is installed can be moved, and the sample clients of three languages are built with nothing else: by
pkg-config, by find_package() and not at all. Each of them browses the installed server.

usage: install_test.py SOURCE_DIRECTORY BUILD_DIRECTORY"""
import os
import pathlib
import subprocess
import sys
import tempfile
import time

source, build = map(pathlib.Path, sys.argv[1:])
samples = source / "samples"


def run(*command, **options):
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True, **options)
    assert done.returncode == 0, f"{command}: {done.returncode}\n{done.stdout}{done.stderr}"
    return done.stdout


def folder_of(root, name):
    return next(root.rglob(name)).parent


with tempfile.TemporaryDirectory() as scratch:
    work = pathlib.Path(scratch)
    run("cmake", "--install", build, "--prefix", work / "installed")
    root = (work / "installed").rename(work / "moved")
    libraries = folder_of(root, "libtavisys.so.1")
    found = {**os.environ, "PKG_CONFIG_PATH": str(folder_of(root, "tavisys.pc")), "CMAKE_PREFIX_PATH": str(root)}
    beside = {**os.environ, "LD_LIBRARY_PATH": str(libraries)}

    def flags(*options):
        return run("pkg-config", *options, "tavisys", env=found).split()

    strict = ["cc", "-std=c11", "-Wall", "-Wextra", "-Wpedantic", "-Werror", samples / "browse.c", "-o"]
    run(*strict, work / "shared", *flags("--cflags", "--libs"))
    archive = [libraries / "libtavisys.a" if word == "-ltavisys" else word for word in flags("--static", "--libs")]
    run(*strict, work / "static", *flags("--static", "--cflags"), *archive)
    for target in ("tavisys::tavisys", "tavisys::tavisys_static"):
        project = work / target.replace("::", "_")
        project.mkdir()
        (project / "browse.cpp").write_text((samples / "browse.cpp").read_text())
        text = (samples / "CMakeLists.txt").read_text()
        (project / "CMakeLists.txt").write_text(text.replace("PRIVATE tavisys::tavisys)", f"PRIVATE {target})"))
        run("cmake", "-S", project, "-B", project / "build", env=found)
        run("cmake", "--build", project / "build")

    server = subprocess.Popen([root / "bin/tavisys-server", "--library", samples / "library", "--log-level", "ERROR"])
    try:
        client = root / "bin/tavisys"
        while subprocess.run([client, "status", "--watch"], capture_output=True).returncode != 0:
            assert server.poll() is None, "the installed server has ended"
            time.sleep(0.05)  # until it listens
        pages = {str(words[0]): run(*words, env=beside) for words in (
            [work / "shared"], [work / "static"], [work / "tavisys_tavisys/build/browse"],
            [work / "tavisys_tavisys_static/build/browse"], [sys.executable, samples / "browse.py"])}
    finally:
        server.terminate()
        server.wait()
    want = "2017 国家宝藏\n2012 舌尖上的中国\n"
    for name, page in pages.items():
        assert page.startswith(want) and page.count("\n") == 10, f"{name} printed\n{page}"
    assert "libtavisys" not in run("readelf", "-d", work / "static")
