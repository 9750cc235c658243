#!/usr/bin/env python3
"""tavisys-server as whoever looks after it meets it: its configuration, its check, and what it tells systemd.

usage: server_operation_test.py SERVER SOURCE_DIRECTORY"""
import os
import pathlib
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import unittest

SERVER, SOURCE = sys.argv[1:3]
SAMPLES = pathlib.Path(SOURCE) / "samples/library"
CONFIGURATION = pathlib.Path(SOURCE) / "packaging/tavisys-server.toml"


def run(*arguments):
    words = [SERVER, *map(str, arguments)]
    return subprocess.run(words, capture_output=True, text=True, timeout=60, check=False)


class Operation(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)

    def start(self, *arguments, **environment):
        words = [SERVER, "--config", "/dev/null", "--log-level", "WARN", *map(str, arguments)]
        server = subprocess.Popen(words, env={**os.environ, **environment}, stderr=subprocess.PIPE, text=True)
        self.addCleanup(server.stderr.close)
        self.addCleanup(server.wait)
        self.addCleanup(server.terminate)
        return server

    def end(self, server):
        server.terminate()
        self.assertEqual(0, server.wait(timeout=20))

    def written(self, text):
        file = self.folder / "server.toml"
        file.write_text(text)
        return file

    def test_the_sample_configuration_has_every_setting_and_is_valid(self):
        page = run("--help").stdout
        options = set(re.findall(r"^  (?:-h,)?--([a-z-]+)", page, re.M)) - {"help", "version", "config", "check"}
        text = re.sub(r"^# (?=[a-z-]+ = )", "", CONFIGURATION.read_text(), flags=re.M)
        self.assertEqual(options, set(re.findall(r"^([a-z-]+) = ", text, re.M)))
        self.assertGreater(len(options), 4)
        done = run("--config", self.written(text), "--library", SAMPLES, "--check", "--metrics", "")
        self.assertEqual(1, done.returncode, done.stderr)
        self.assertIn("允许查询: 127.0.0.0/8,10.0.0.0/8,172.16.0.0/12,192.168.0.0/16\n线程: 8个", done.stdout)

    def test_the_command_line_wins_over_the_file(self):
        file = self.written(f'library = "{SAMPLES}"\nname = "客厅 #1, 影柜"\nthreads = 3\n')
        done = run("--config", file, "--check", "--threads", "5")
        self.assertIn("设备名称: 客厅 #1, 影柜\n", done.stdout)
        self.assertIn("线程: 5个\n", done.stdout)

    def test_what_is_wrong_with_a_configuration_is_said_with_file_and_key(self):
        for text, want in (
            ("nonsense = 1", "第1行: nonsense: 没有这个设置"), ("\nthreads = 0", "第2行: threads: 应为1到1024的整数"),
            ("check = 1", "check: 没有这个设置"), ("name = 4.5", "name: 值应为文字或整数"),
            ('name = ""', "name: 应为1到255个字节"), ('allow = ["10.0.0.0/8", "x"]', 'allow: "x"不是IPv4地址段'),
            ("[server]", "server: 值应为文字或整数"), ('name = "', "第1行: 不合TOML语法"), ("x" * (1 << 20), "超过1 MiB"),
        ):
            file = self.written(text + "\n")
            done = run("--config", file, "--library", SAMPLES)
            self.assertEqual(2, done.returncode)
            self.assertRegex(done.stderr, rf"^tavisys-server: [^\n]*{file}[^\n]*{re.escape(want)}[^\n]*\n$")
        for path in (self.folder / "missing", self.folder):
            done = run("--config", path, "--library", SAMPLES)
            self.assertEqual(2, done.returncode)
            self.assertIn(f"无法读取配置文件 {path}: ", done.stderr)

    def test_a_check_tells_what_would_be_served_and_why_the_rest_not(self):
        done = run("--config", "/dev/null", "--library", SAMPLES, "--check")
        self.assertEqual(1, done.returncode, done.stderr)
        for line in (r"配置文件: /dev/null", r"  分区 sda2: UUID \S+, 挂载点\S+/sda/sda2, 文档9个, 影片8部, 未收入1个",
                     r"分类 电影: 影片16部", r"未收入 \S+/sda2/TV1994-0017/metadata.xml: 影片属于禁止的类型",
                     r"文档30个: 可提供影片28部, 未收入2个; 无法读取的目录0个"):
            self.assertRegex(done.stdout, rf"(?m)^{line}$")
        library = self.folder / "library"
        steps = (
            (1, "影片库中没有文档", library.mkdir),
            (0, "可提供影片12部, 未收入0个", lambda: shutil.copytree(SAMPLES / "sda/sda1", library / "sda/sda1")),
            (1, "/x: 目录层次过深", lambda: (library / "sda/sda1" / "/".join("x" * 70)).mkdir(parents=True)),
            (2, "", lambda: shutil.rmtree(library)),
        )
        for status, said, change in steps:
            change()
            done = run("--config", "/dev/null", "--library", library, "--check")
            self.assertEqual(status, done.returncode, done.stdout + done.stderr)
            self.assertIn(said, done.stdout)
        done = run("--config", "/dev/null", "--library", SAMPLES, "--check", "--metrics", self.folder / "no/file")
        self.assertIn("指标文件将无法写入: ", done.stdout)

    def test_systemd_is_told_when_it_is_ready_reloads_lives_and_stops(self):
        manager = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.addCleanup(manager.close)
        manager.settimeout(20)
        manager.bind(str(self.folder / "notify"))
        server = self.start("--library", SAMPLES, NOTIFY_SOCKET=str(self.folder / "notify"), WATCHDOG_USEC="100000")
        said = []

        def until(wanted):
            while wanted not in said[-1:]:
                said.extend(manager.recv(4096).decode().split("\n"))

        until("STATUS=提供影片28部, 未收入2部")
        self.assertEqual("STATUS=查找影片文档", next(line for line in said if line != "WATCHDOG=1"))
        self.assertEqual("READY=1", said[-2])
        until("WATCHDOG=1")  # it waits for nobody now: the next one is due to the clock
        server.send_signal(signal.SIGHUP)
        until("STATUS=重新查找影片文档")
        self.assertEqual("RELOADING=1", said[-3])
        self.assertRegex(said[-2], r"^MONOTONIC_USEC=\d+$")
        until("STATUS=提供影片28部, 未收入2部")
        self.assertEqual("READY=1", said[-2])
        server.terminate()
        until("STATUS=正在结束")
        self.assertEqual("STOPPING=1", said[-2])
        self.assertEqual(0, server.wait(timeout=20))


unittest.main(argv=sys.argv[:1], verbosity=2)
