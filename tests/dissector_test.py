#!/usr/bin/env python3
"""Holds the Wireshark dissector against real exchanges: what the client asks and the server answers, byte for byte,
becomes a capture, and tshark shows every field of it as the library's decoders read it. What is damaged is marked.
The capture is written here, by who stands between the two: nothing has to be sniffed.

Usage: dissector_test.py SOURCE_DIR CLIENT SERVER   (exit status 77: there is no tshark)
"""
import contextlib
import itertools
import json
import re
import shutil
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import xml.etree.ElementTree

SOURCE, CLIENT, SERVER = sys.argv[1:]
PORT, TEXT_PORT = 40001, 40002
SEGMENT = 700  # bytes; messages that are longer have to be put together again
POSITION = (bytes(128) + b"sda".ljust(16, b"\0") + b"sda1".ljust(16, b"\0")).hex()
CODES = struct.pack("<7i", 35, -1, 0, -1, 1, 15, 11) + b"TV1993-0015"

# Every type that the server answers, and refusals. Ids are numbers, so that each command asks one question.
COMMANDS = f"""version;status;info;uuid;categories;poster;filters 1 kind;filters 0 year;disks;
movies --category 1 --size 5;movies --page 9;touch --size 1000;movie 0 1;movie 0 2147483647;
count sda sda1;count sda none;fetch sda sda1 --out FOLDER;
raw kinds;raw kinds --body 0100000001000000;raw touch-movie --body 0000000002000000;
raw disk --body {POSITION};raw codes --body {CODES.hex()}"""
UNREPEATABLE = ("poster", "fetch")  # what these show is another poster, or not the reply

failures = []


def check(what, want, got):
    if want != got:
        failures.append(f"{what}\n  want {want}\n  got  {got}")


def message(kind, body=b"", result=0, length=None):
    return struct.pack("<3i", kind, result, len(body) if length is None else length) + body


def read_message(peer, head_length=12):
    with peer.makefile("rb") as stream:
        head = stream.read(head_length)
        return head + stream.read(int(head[10:18]) if head_length == 19 else struct.unpack("<3i", head)[2])


def document_of(*arguments, body=None):
    shown = subprocess.run([CLIENT, *arguments, "--json"], input=body, capture_output=True, timeout=60).stdout
    return json.loads(shown) if shown else None


@contextlib.contextmanager
def listening(port):
    with socket.create_server(("127.0.0.1", port)) as listener:
        listener.settimeout(60)
        yield listener


def question_of(listener, arguments, head_length=12, reply=b""):
    """What the client sends to whoever listens here and gives it this reply."""
    process = subprocess.Popen([CLIENT, *arguments], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    with listener.accept()[0] as peer:
        question = read_message(peer, head_length)
        peer.sendall(reply)
    process.wait(60)
    return question


def ask(question):
    with socket.create_connection(("127.0.0.1", PORT), timeout=60) as peer:
        peer.sendall(question)
        return read_message(peer)


@contextlib.contextmanager
def serving():
    process = subprocess.Popen([SERVER, "--library", SOURCE + "/samples/library"], stderr=subprocess.PIPE, text=True)
    check("the library is read", True, any("扫描完成" in line for line in process.stderr))
    threading.Thread(target=process.stderr.read, daemon=True).start()
    yield
    process.terminate()
    check("the server's end", 0, process.wait(60))


def write_capture(path, connections):
    """A TCP connection for each (server's port, request, reply), closed by both sides."""
    clock = itertools.count()
    with open(path, "wb") as file:
        file.write(struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, 101))  # of plain IPv4 packets
        for number, (port, request, reply) in enumerate(connections):
            for source, target, data in ((50000 + number, port, request), (port, 50000 + number, reply)):
                for at in range(0, max(len(data), 1), SEGMENT):
                    flags = 0x19 if at + SEGMENT >= len(data) else 0x18  # FIN with the last one
                    tcp = struct.pack(">HHIIBBHHH", source, target, 1 + at, 1, 0x50, flags, 65535, 0, 0)
                    tcp += data[at:at + SEGMENT]
                    ip = struct.pack(">BBHHHBBH4s4s", 0x45, 0, 20 + len(tcp), 0, 0, 64, 6, 0, *[b"\x7f\0\0\1"] * 2)
                    file.write(struct.pack("<4I", 0, next(clock), 20 + len(tcp), 20 + len(tcp)) + ip + tcp)


def tshark(*arguments):
    script = f"lua_script:{SOURCE}/tools/wireshark/tavisys.lua"
    result = subprocess.run(["tshark", *arguments, "-X", script], capture_output=True, errors="replace", timeout=120)
    check("tshark's status", (0, []), (result.returncode, re.findall("Lua Error.*|tavisys.lua:.*", result.stdout + result.stderr)))
    return result.stdout


def fields_of(item):
    """(name, value) of each field in it, None for what isn't there, without what says how much follows."""
    for one in item:
        name, _, last = one.get("name").rpartition(".")
        if last == "flag" and one.get("show") == "0":
            yield name.rpartition(".")[2], None
        elif one.get("name").startswith("tavisys.") and last not in ("count", "totalen", "flag"):
            yield last, None if one.get("showname").endswith(": NULL") else one.get("show")
        if one.get("name") != "_ws.expert":
            yield from fields_of(one)


def dissect(path, *options):
    """By connection: the fields of each message's body, the marks, and the lines shown."""
    connections = {}
    for packet in xml.etree.ElementTree.fromstring(tshark("-r", path, "-T", "pdml", *options)):
        stream = int(packet.find(".//field[@name='tcp.stream']").get("show"))
        bodies, marks, lines = connections.setdefault(stream, ([], set(), []))
        for proto in packet.iterfind("proto"):
            if not proto.get("name").startswith("tavisys"):
                continue
            bodies.append([field for body in proto.iterfind("field[@name='tavisys.body']") for field in fields_of(body)])
            marks.update(one[0].get("name")[8:] for one in proto.iterfind(".//field[@name='_ws.expert']"))
            lines.extend(one.get("showname") or "" for one in proto.iter("field"))
    return [connections[stream] for stream in sorted(connections)]


def leaves(document, name=None):
    if isinstance(document, dict):
        return [leaf for key, value in document.items() for leaf in leaves(value, key)]
    if isinstance(document, list):
        return [leaf for value in document for leaf in leaves(value)]  # elements without a name of their own
    return [(name, document if document is None else str(document))]


def check_body(what, document, fields):
    want = [] if document is None else leaves(document)
    names = [name for name, _ in want] + [None] * len(fields)
    check(what, want, [(name if known else None, value) for known, (name, value) in zip(names, fields)])


def check_names():
    """The dissector has the numbers and names of the headers."""
    headers = "".join(open(f"{SOURCE}/include/{name}").read() for name in ("tavisystype.h", "codec_sysrun_status_info.h"))
    want = {(int(number), name) for name, number in re.findall(r"^    ([A-Z_]+) = (-?\d+)", headers, re.M)}
    got = set()
    for line in tshark("-G", "values").splitlines():
        if line.startswith("V\ttavisys."):
            number, name = line.split("\t")[2:]
            got.add((int(number) - (int(number) >> 31 << 32), name))
    got.discard((0, "done"))
    check("names of types, results and values", sorted(want), sorted(got))


def check_exchanges(folder):
    commands = [command.split() for command in COMMANDS.replace("FOLDER", folder).replace("\n", "").split(";")]
    with listening(PORT) as listener:
        questions = [question_of(listener, command) for command in commands]
    with serving():
        replies = [ask(question) for question in questions]
        shown = [document_of(*command) for command in commands]
    write_capture(folder + "/good.pcap", [(PORT, *exchange) for exchange in zip(questions, replies)])
    exchanges = dissect(folder + "/good.pcap")
    check("exchanges", len(commands), len(exchanges))
    for command, question, reply, answer, (bodies, marks, lines) in zip(commands, questions, replies, shown, exchanges):
        kind, result, _ = struct.unpack("<3i", reply[:12])
        check(f"{command}: marks", set() if result == 0 else {"refused"}, marks)
        check(f"{command}: unknown values", [], [line for line in lines if "Unknown" in line])
        check_body(f"{command}: request", document_of("decode", str(kind), "-", "--request", body=question[12:]), bodies[0])
        document = None if result else document_of("decode", str(kind), "-", body=reply[12:])
        check_body(f"{command}: reply", document, bodies[1])
        if command[0] not in UNREPEATABLE:
            check(f"{command}: what the client shows", document, answer and answer.get("decoded", answer))
    return dict(zip(map(" ".join, commands), replies))


def check_text_channel(folder, version):
    replies = [b"1000|0000|00000005|1.0.0", b"1000|0000|%08d|" % len(version) + version]
    with listening(0) as listener:
        command = ["raw", "1000", "--text", "--port", str(listener.getsockname()[1])]
        questions = [question_of(listener, command, 19, reply) for reply in replies]
    write_capture(folder + "/text.pcap", [(TEXT_PORT, *exchange) for exchange in zip(questions, replies)])
    exchanges = dissect(folder + "/text.pcap")
    check("text-headed requests", [b"1000|0000|00000000|"] * 2, questions)
    check("marks behind heads of text", [set()] * 2, [marks for _, marks, _ in exchanges])
    check("a text", [("text", "1.0.0")], exchanges[0][0][1])
    check_body("an encoded body behind a head of text", document_of("decode", "1000", "-", body=version), exchanges[1][0][1])


def check_damage(folder, version):
    ask_1000 = message(1000)

    def reply(*integers, kind=1000):
        return PORT, message(kind), message(kind, struct.pack(f"<{len(integers)}i", *integers))

    cases = [
        ("short", (PORT, ask_1000, message(1000, version[:-1]))),
        ("short", (PORT, message(1006), b"")),
        ("trailing", (PORT, ask_1000, message(1000, version + b"x"))),
        ("trailing", (PORT, message(1000, b"x"), b"")),
        ("bad_count", reply(-2)),
        ("bad_count", reply(2, 0, kind=1003)),
        ("negative_list", reply(-1, kind=1003)),
        ("nul", reply(4, 65, -1)),
        ("not_utf8", reply(4, -1, -1, -1)),
        ("odd_flag short", reply(-1, 1993, 2, 7, -1, kind=1007)),
        ("no_nul", (PORT, message(3004), message(3004, b"uuid"))),
        ("bad_totalen", (PORT, message(3005, b"\x24" + CODES[1:]), b"")),
        ("out_of_range", (PORT, message(1006, struct.pack("<8i", 0, 0, 0, 0, 0, 1, 1001, 0)), b"")),
        ("request_result", (PORT, message(1000, result=1), b"")),
        ("refused refused_with_body", (PORT, ask_1000, message(1000, b"x", result=-104))),
        ("unknown_type", (PORT, message(1010), b"")),
        ("unknown_type", (PORT, message(4711, b"x"), b"")),
        ("other_type", (PORT, ask_1000, message(1002, bytes(8)))),
        ("more_requests", (PORT, ask_1000 * 2, message(1000, version) * 2)),
        ("negative_length out_of_step", (PORT, ask_1000, message(1000, b"x" * 20, length=-1))),
        ("overlong out_of_step", (PORT, message(1000, b"x" * 1000, length=1048577), b"")),
        ("overlong", (PORT, ask_1000, message(1000, length=2147483636))),
        ("cut_short", (PORT, ask_1000, message(1000, version[:-1], length=len(version)))),
        ("cut_short", (PORT, ask_1000[:11], b"")),
        ("bad_head", (TEXT_PORT, b"1000|0000|00000000|", b"1000|00000|0000000|")),
    ]
    write_capture(folder + "/bad.pcap", [connection for _, connection in cases])
    for options in ([], ["-2"]):  # seen once, and once more as in a window
        got = [marks for _, marks, _ in dissect(folder + "/bad.pcap", *options)]
        check("marks", [set(marks.split()) for marks, _ in cases], got)


def main():
    if shutil.which("tshark") is None:
        print("skipped: there is no tshark")
        return 77
    check_names()
    with tempfile.TemporaryDirectory() as folder:
        replies = check_exchanges(folder)
        check_text_channel(folder, replies["version"][12:])
        check_damage(folder, replies["version"][12:])
    print("\n".join(failures) or "the dissector reads what the library reads")
    return 1 if failures else 0


sys.exit(main())
