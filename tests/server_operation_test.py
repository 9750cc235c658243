#!/usr/bin/env python3
"""tavisys-server as whoever looks after it meets it: its configuration, its check, what it tells systemd, and
its metrics.

usage: server_operation_test.py SERVER SOURCE_DIRECTORY"""
import ctypes
import os
import pathlib
import re
import shutil
import signal
import socket
import struct
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


def exchange(kind, body=b"", source="127.0.0.1"):
    """All that the server sends, nothing when it refuses."""
    try:
        with socket.create_connection(("127.0.0.1", 40001), 20, (source, 0)) as peer:
            peer.sendall(struct.pack("<iii", kind, 0, len(body)) + body)
            return b"".join(iter(lambda: peer.recv(65536), b""))
    except (ConnectionResetError, BrokenPipeError):
        return b""


NAME = "[a-zA-Z_:][a-zA-Z0-9_:]*"
LABEL = r'([a-zA-Z_]\w*)="((?:[^"\\\n]|\\["\\n])*)"'


def parse_metrics(text):
    """{sample with its labels: value} of a text that keeps to all rules of the format."""
    assert text.endswith("\n")
    samples, kinds, family, buckets = {}, {}, None, {}
    for line in text[:-1].split("\n"):
        if start := re.fullmatch(f"# HELP ({NAME}) .+", line):
            family = start[1]
            assert family not in kinds, line
            kinds[family] = None
        elif kind := re.fullmatch(f"# TYPE ({NAME}) (counter|gauge|histogram|summary)", line):
            assert kind[1] == family and kinds[family] is None, line
            kinds[family] = kind[2]
        else:
            name, _, labels, value = re.fullmatch(rf"({NAME})({{({LABEL}(?:,{LABEL})*)}})? ([0-9.]+)", line).group(1, 2, 3, 8)
            ending = {"histogram": "(_bucket|_sum|_count)", "summary": "(_sum|_count)"}.get(kinds[family], "")
            assert re.fullmatch(family + ending, name) and (kinds[family] != "counter" or name.endswith("_total")), line
            key = f"{name}{{{labels or ''}}}"
            assert key not in samples, line
            samples[key] = float(value)
            if name.endswith("_bucket"):
                rest, limit = re.fullmatch('(.*),le="(.*)"', labels).groups()
                buckets.setdefault((family, rest), []).append((float(limit), float(value)))
    for (family, rest), counts in buckets.items():
        assert counts == sorted(counts) and [count for _, count in counts] == sorted(count for _, count in counts)
        assert counts[-1] == (float("inf"), samples[f"{family}_count{{{rest}}}"]) and f"{family}_sum{{{rest}}}" in samples
    return samples


class Operation(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)

    def start(self, *arguments, **environment):
        words = [SERVER, "--config", "/dev/null", "--log-level", "NOTICE", *map(str, arguments)]
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
            ("nonsense = 1", "第1行: nonsense: 没有这个设置"), ('\nthreads = "08"', "第2行: threads: 应为1到1024的整数"),
            ("check = 1", "check: 没有这个设置"), ("name = 4.5", "name: 值应为文字或整数"),
            ('name = ""', "name: 应为1到255个字节"), ('allow = ["10.0.0.0/8", "x"]', 'allow: "x"不是IPv4地址段'),
            ("[server]", "server: 值应为文字或整数"), ("x" * (1 << 20), "超过1 MiB"),
            *((wrong, "第1行: 不合TOML语法") for wrong in ('name = "', "[", "name = é")),
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
                     r"文档30个: 可提供影片28部, 未收入2个; 有问题的目录0个"):
            self.assertRegex(done.stdout, rf"(?m)^{line}$")
        library = self.folder / "library"
        steps = (
            (1, "/: 其中没有影片文档", library.mkdir),
            (0, "可提供影片12部, 未收入0个", lambda: shutil.copytree(SAMPLES / "sda/sda1", library / "sda/sda1")),
            (1, "/x: 目录层次过深", lambda: (library / "sda/sda1" / "/".join("x" * 70)).mkdir(parents=True)),
            (2, "", lambda: shutil.rmtree(library)),
        )
        for status, said, change in steps:
            change()
            done = run("--config", "/dev/null", "--library", library, "--check")
            self.assertEqual(status, done.returncode, done.stdout + done.stderr)
            self.assertIn(said, done.stdout)
        for file in (self.folder / "no/file", "/dev/null"):
            done = run("--config", "/dev/null", "--library", SAMPLES, "--check", "--metrics", file)
            self.assertIn("指标文件将无法写入: ", done.stdout)

    def test_metrics_are_written_whole_again_and_again_and_at_the_end(self):
        libc = ctypes.CDLL(None)
        watch = libc.inotify_init1(os.O_CLOEXEC)
        self.addCleanup(os.close, watch)
        libc.inotify_add_watch(watch, str(self.folder).encode(), 0x80)  # IN_MOVED_TO: a rename has ended here
        file = self.folder / "metrics.prom"
        server = self.start("--library", SAMPLES, "--metrics", file, "--allow", "127.0.0.1")
        scans = 0
        while scans < 1:
            self.assertIn(b"metrics.prom\0", os.read(watch, 4096))
            scans = parse_metrics(file.read_text())["tavisys_scan_duration_seconds_count{}"]
        sent = sum(len(exchange(*request)) for request in ((1000,), (1000,), (1006, b"x"), (999,), (-1,)))
        self.assertEqual(b"", exchange(1000, source="127.0.0.2"))
        with socket.create_connection(("127.0.0.1", 40001)) as peer:
            peer.sendall(b"half")
        while parse_metrics(file.read_text())["tavisys_dropped_connections_total{}"] < 1:
            os.read(watch, 4096)  # the next one is due in some seconds
        self.end(server)
        metrics = parse_metrics(file.read_text())
        for name, value in {
            'requests_total{type="1000",result="ok"}': 2, 'requests_total{type="1006",result="bad_request"}': 1,
            'requests_total{type="other",result="unknown_type"}': 2, 'requests_total{type="1006",result="ok"}': 0,
            'request_duration_seconds_count{type="1000"}': 2, 'movies{category="电影"}': 16, "documents_left_out{}": 2,
            "connections_total{}": 7, "refused_peers_total{}": 1, "dropped_connections_total{}": 1,
            "connections_held{}": 0, "broken_exchanges_total{}": 0, "sent_bytes_total{}": sent,
        }.items():
            self.assertEqual(value, metrics["tavisys_" + name], name)
        self.assertEqual(0o644, file.stat().st_mode & 0o777)
        self.assertEqual([file], list(self.folder.iterdir()))

    def test_metrics_that_cannot_be_written_are_told_of_once(self):
        server = self.start("--library", SAMPLES, "--metrics", self.folder / "none/metrics.prom")
        log = ""
        while "扫描完成" not in log:
            log += server.stderr.readline()
        server.terminate()  # there is a write at the start, one after the scan and one at the end
        self.assertEqual(1, (log + server.stderr.read()).count("无法写指标文件"))

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
