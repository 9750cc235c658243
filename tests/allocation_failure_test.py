#!/usr/bin/env python3
"""Every exported call that takes memory, again and again while its first, second, third ... allocation fails,
until it meets no failure: each time the call fails as its header says and says what the header says, leaves its
out-arguments alone and nothing behind, and works right afterwards. The allocations of the C and C++ runtime and
of libxml2 count, too. How a function is called follows from its declaration.

usage: allocation_failure_test.py SOURCE_DIRECTORY SHARED_LIBRARY, with failing_allocations.so preloaded"""
import ctypes
import os
import pathlib
import re
import socket
import struct
import sys
import tempfile
import threading

SOURCE = pathlib.Path(sys.argv[1])
LIBRARY = ctypes.CDLL(sys.argv[2])
SHORTAGE = ctypes.CDLL(None)  # failing_allocations.cpp
SHORTAGE.warnings.restype = ctypes.c_char_p
OUTPUT = tempfile.TemporaryFile()  # what the library prints
TELL = os.fdopen(os.dup(1), "w")
PORT = 40001


# ---- Calling by declaration

def declarations():
    """{function: (type that it returns, [types of its parameters])}"""
    text = "".join(header.read_text() for header in sorted(SOURCE.glob("include/*.h")))
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    found = {}
    for returned, name, parameters in re.findall(r"^TAVISYS_API\s+([^;()]*?)(\w+)\(([^;]*?)\);", text, re.M):
        types = [re.sub(r"\s*\w+$", "", " ".join(p.split())) for p in parameters.split(",") if p.strip() != "void"]
        found[name] = returned.strip(), types
    return found


DECLARED = declarations()
# What frees a T, by its name: the whole of it, where there are several.
FREES = {}
for name in sorted(DECLARED, key=lambda n: (n.startswith("release"), n.endswith("_list"), n)):
    if re.match("delete_(?!node_from)|release_", name) and DECLARED[name][1][0].endswith("**"):
        FREES[DECLARED[name][1][0][:-3]] = name


class Call(ctypes.Structure):
    _fields_ = [("function", ctypes.c_void_p), ("arguments", ctypes.c_void_p), ("result", ctypes.c_long)]


def call(name, *arguments, by="make_plain_call"):
    """Pointers and integers of any width go through as they are."""
    values = (ctypes.c_long * 8)(*[a if isinstance(a, int) else ctypes.addressof(a) for a in arguments])
    of = Call(ctypes.cast(getattr(LIBRARY, name), ctypes.c_void_p).value, ctypes.addressof(values))
    getattr(SHORTAGE, by)(ctypes.byref(of))
    return of.result if "*" in DECLARED[name][0] else ctypes.c_int(of.result).value


def text(string):
    return ctypes.create_string_buffer(string.encode() if isinstance(string, str) else string)


def at(address, offset=0):
    return ctypes.c_void_p.from_address(address + offset).value or 0


def string_at(address):
    return ctypes.string_at(address) if address else b"?"


def free(kind, address):
    """Frees a T at the address with all that it holds, also what its family's delete leaves."""
    if kind == "TP_TAVISYS_HARDDISK_INFORMATION_T" and address:
        call("safe_free", at(address, 8))
    if re.match("DBDATA_(HARDDISK|PARTITION)_INFORMATION_T", kind):
        address = call(f"create_{kind[:-2].lower()}_list_node", address, 0, 0)
        kind = kind[:-1] + "LIST_T"
    call(FREES[kind], ctypes.c_void_p(address))


# ---- Bodies

def wire(*items):
    body = b""
    for item in items:
        body += item if isinstance(item, bytes) else struct.pack("<i", item) if isinstance(item, int) else \
            struct.pack("<i", -1) if item is None else struct.pack("<i", len(item.encode())) + item.encode()
    return body


VIDEOS = wire(2, 31, 1, "上", "/a.mp4", 32, 2, None, "/b.mp4")
MOVIE = wire(1001, "TV-1", "霸王别姬", 93, 1, 2, "/n", "/b", "BWBJ", 6, 1993, 1, 11, 2, 12, 13, 0, 1, 4, "SN", 4)
TRANSFER = wire(1, 7, "TV-1", "霸王别姬", "Farewell", "9.3", "BWBJ", 1, "3D", 1, "4K", 1, "电影", 2, "剧情", "爱情", 1,
                "中国", 1, "P1", "陈", 1, "P2", "张", 1, 1993, 1994, 1, 2, 171, 1, "/b", "/m", "/s", "戏", 1, 1, 31, 1,
                "上", "/a.ts", "/a.mp4")
BODIES = {  # of each decoder
    "decode_tavisys_version_information_from_message": wire("1.0", "影柜", "D1"),
    "decode_tavisys_system_information_from_message": wire(2, 30),
    "decode_tavisys_sysrun_status_information_from_message": wire(2, 10, 8, 1, 1),
    "decode_tavisys_player_status_information_from_message": wire(1, "a.ts", "/盘/", -1, 2, 3, 4, 5, 6, 7, 8),
    "decode_tavisys_category_information_list_from_message": wire(2, 1, "电影", 2, 2, "电视剧", 3),
    "decode_tavisys_kind_information_from_message": wire(1, 1, "剧情", 2),
    "decode_tavisys_filter_information_list_from_message": wire(1, 1, "1993"),
    "decode_tavisys_basic_movie_information_list_from_message": wire(1, MOVIE),
    "decode_touchscreen_basic_movie_information_list_from_message": wire(1, MOVIE, 4, 9),
    "decode_touchscreen_basic_movie_ext_information_from_message": wire(1, 2, 3, 4, 1, 1, MOVIE, 4, 9),
    "decode_tavisys_basic_movie_ext_information_from_message": wire(1, 2, 3, 4, 1, 1, MOVIE),
    "decode_tavisys_video_information_list_from_buffer": VIDEOS,
    "decode_tavisys_detail_movie_information_from_message":
        wire("霸王别姬", 1993, 1, 3, "2D", "/p", 1, "导演", 1, "陈", 1, "主演", 2, "张", "葛", 1, "类型", 1, "剧情", 1,
             "时长", "171", 1, "简介", "戏", 2, VIDEOS),
    "decode_tavisys_harddisk_information_list_from_message":  # the last is a repeat, which goes
        wire(2, "sda", "SN1", 2, 1, "sda1", "u", "/m", 2, "sda2", "v", None, "sda", "SN2", 1, 1, "sda1", "u", "/m"),
    "decode_tp_tavisys_dbdata_movie_information_list_from_message": TRANSFER,
    "decode_movinfo_request_information_from_buffer": wire(46, "dev", "sdb", "sdb1", 3, 8, "TV-1", 0, 4, None),
    "decode_hdvideo_list_information_from_message": wire(2, "TV-1", 2, 1, "SN1", "一", 2, "SN2", "二", "TV-2", 1, 3,
                                                         "SN1", "三"),
    "decode_tavisys_movie_id_information_to_message": wire(2, 1, 10, 2, 20),
    "decode_movid_info_to_buffer": wire("uuid", 7, 2, 1, 10, 2, 20),
    "decode_mid_vid_to_buffer": wire(10, "1", "2"),
    "decode_basic_movie_to_buffer": wire(33, 1, 171, "SN", "a", "M1", "2D"),
    "decode_ffmpegc_movie_path_from_buffer": wire("sda1", "/a.ts"),
    "decode_ptr_data_from_buffer": wire("text"),
}
DECODES = {DECLARED[name][1][-1][:-3]: name for name in BODIES if name != "decode_ptr_data_from_buffer"}
REPLIES = {  # of each agent call: the type, and the decoder whose body it is or the bytes
    "tavisysapi_get_software_version_information": (1000, "decode_tavisys_version_information_from_message"),
    "tavisysapi_get_system_running_status": (1001, "decode_tavisys_sysrun_status_information_from_message"),
    "tavisysapi_get_system_information": (1002, "decode_tavisys_system_information_from_message"),
    "tavisysapi_get_category_information_list": (1003, "decode_tavisys_category_information_list_from_message"),
    "tavisysapi_get_movie_filter_information_list": (1005, "decode_tavisys_filter_information_list_from_message"),
    "tavisysapi_get_movie_basic_ext_information": (1006, "decode_tavisys_basic_movie_ext_information_from_message"),
    "touchscreen_get_movie_basic_ext_information": (5006,
                                                    "decode_touchscreen_basic_movie_ext_information_from_message"),
    "tavisysapi_get_movie_detail_information": (1007, "decode_tavisys_detail_movie_information_from_message"),
    "touch_screenapi_get_movie_detail_information": (1007, "decode_tavisys_detail_movie_information_from_message"),
    "tavisysapi_get_vod_harddisk_information": (3000, "decode_tavisys_harddisk_information_list_from_message"),
    "tavisysapi_get_movie_metadata_from_server": (3003,
                                                  "decode_tp_tavisys_dbdata_movie_information_list_from_message"),
    "tavisysapi_get_movies_from_server": (3002, wire(12)),
    "tavisysapi_get_uuid_infomation": (3004, b"uuid\0"),
    "tavisysapi_random_get_movie_poster": (1008, b"path"),
}

# ---- What comes of a call when memory is short: regular expressions of its result and of what it says

REASON = "字节的内存出错,错误原因: Cannot allocate memory\n"
NODE = r"分配\d+" + REASON
WARNED = "WARN 创建内存失败..\n"
BODY_LOST = r"-3WARN \(-3\) failed to receive_data_from_tavisys_msg_channel\n"


def failures_of(name):
    own = {
        "create_tavisys_movie_id_information": ["0" + NODE],
        "create_hard_disk_videonode": ["0" + NODE],
        "create_video_node": ["0WARN " + NODE],
        "create_tp_movcode_information_list_node": ["0"],
        "create_tp_movcode_information_list_node_ex": ["0"],
        "create_dbdata_movie_information_list_node": ["0分配16 " + REASON[:-1]],
        "create_dbdata_movie_information": ["0, 0 ids"],
        "create_dbdata_video_information": ["0, 0 ids"],
        "create_dbdata_video_information_list_node_ex": ["0, 0 ids", "0, 1 ids" + NODE],
        "create_dbdata_host_information_list_node_ex": ["0创建主机信息节点出错.主机IP地址为text\n",
                                                        "0" + NODE + "创建主机信息链表节点出错\n"],
        "create_dbdata_harddisk_information_list_node_ex": ["0创建硬盘信息节点出错.硬盘序列号为text\n", "no text 2",
                                                            "0" + NODE + "创建硬盘信息链表节点出错\n"],
        "create_dbdata_partition_information_list_node_ex": ["0创建分区信息出错\n", "no text 2", "no text 3",
                                                             "0" + NODE + "创建分区信息链表节点出错\n"],
        "create_dbdata_harddisk_information": ["0", "no text 2"],
        "create_dbdata_partition_information": ["0", "no text 2", "no text 3"],
        "create_tavisys_partition_information_ex": ["0", "no text 3"],
        "create_tavisys_partition_information_list_node_ex": ["0", "no text 3", "0" + NODE],
        "encode_tp_tavisys_dbdata_movie_information_list_to_message":
            [rf"-1编码后信息长度为{len(TRANSFER)}\n分配{len(TRANSFER)}字节内存空间出错.错误原因: Cannot allocate memory\n"],
        "encode_ffmpegc_movie_path_to_buffer": ["-1创建内存失败.."],
        "decode_ffmpegc_movie_path_from_buffer": ["-1failed to decode_ptr_data_from_buffer"],
        "decode_hdvideo_list_information_from_message": ["-1", "-1" + NODE, "-1WARN " + NODE],
        "decode_tavisys_movie_id_information_to_message": ["-1" + NODE],
        "exchange_data_in_tavisys_msg_channel": [BODY_LOST],
        "exchange_data_in_net_communication_channel": ["-1WARN 创建失败!\n"],
        "safe_strdup": ["0"],
    }
    if name in own:
        return own[name]
    if name in REPLIES:
        decoder = REPLIES[name][1]
        if isinstance(decoder, bytes):
            return [BODY_LOST]
        return [BODY_LOST] + (["0"] if "version" in name else failures_of(decoder))
    if name.startswith("create"):
        return ["0", "0" + NODE] if name.endswith("_ex") and "node" in name else \
            ["0" + NODE] if name.endswith("_list_node") else ["0"]
    if name.startswith("encode"):
        return ["-1" + WARNED] if re.search("ext_information|movie?_id|movid_info|hdvideo", name) else ["-1"]
    if name.startswith("decode"):
        return ["-1", "-1" + NODE] if re.search("list|kind|ext_|detail|movid_info", name) else ["-1"]
    return ["-3"]


# ---- One attempt: the arguments, the call, and away with both. It returns "" when the call did what it should,
# else what came of it.

MARK = 0x1234567812345678  # in out-arguments, to see whether they are written
ATTRIBUTES = re.compile("create_dbdata_(area|dimension|resolution|kind|year)_information(_list_node_ex)?")
OPTIONAL = {"DBDATA_HARDDISK_INFORMATION": {16: 2}, "DBDATA_PARTITION_INFORMATION": {16: 2, 24: 3},
            "TP_TAVISYS_PARTITION_INFORMATION": {24: 3}}  # offsets of texts that may be missing, and their numbers
state = {"by": "make_call", "keys": 0, "is_fresh": False}


def kind_of(name):
    return DECLARED[name][0].rstrip(" *")


def creator_arguments(name, key="text"):
    return [text(key) if kind == "const INT8_T *" else 0 if kind.endswith("*") or kind == "PVOID" else
            int(key) if "year" in name else 1 for kind in DECLARED[name][1]]


def lack_of(kind, address):
    if kind.endswith("_LIST_T"):
        return lack_of(kind[:-6] + "T", at(address, 8))
    texts = OPTIONAL.get(kind[:-2], {}).items() if address else ()
    return ", ".join(f"no text {number}" for offset, number in texts if not at(address, offset))


def id_of(name, key):
    """The id of a fresh record, which goes again."""
    address = call(name, *creator_arguments(name, key))
    number = ctypes.c_int.from_address(address + (0 if "video" in name else 4)).value
    free(kind_of(name), address)
    return number


def create(name):
    """Ids: whatever failed, the same key gets the next id afterwards and keeps it, and a process begins with 1;
    a counter counts on only where the header says so."""
    state["keys"] += 1
    key = str(state["keys"]) if "year" in name else "text"
    is_attribute, is_counted = ATTRIBUTES.fullmatch(name), re.match("create_dbdata_(movie|video)_info(?!.*_node$)", name)
    record = name.replace("_list_node_ex", "")
    if is_attribute:
        other, key = [f"{state['keys']}{0 if 'year' in name else ' is a name of more than fifteen bytes'}{i}" for i in (1, 2)]
    last = 0 if state["is_fresh"] else id_of(record, other) if is_attribute else id_of(record, key) if is_counted else 0
    address = call(name, *creator_arguments(name, key), by=state["by"])
    outcome = "0" if not address else lack_of(kind_of(name), address) if len(DECLARED[name][1]) > 1 else ""
    if is_attribute:
        expect([id_of(record, key) for _ in range(2)] == [last + 1] * 2, f"{name}: the key has another id")
    if is_counted and outcome:
        outcome += f", {id_of(record, key) - last - 1} ids"
    if address:
        free(kind_of(name), address)
    return outcome


def slot(kind, value):
    return (ctypes.c_int if kind == "INT32_T *" else ctypes.c_long)(value)


def decode(name, by=None):
    """The body's length comes as a number or as its address; strings stay with the caller on failure, too."""
    body, arguments, slots = BODIES[name], [], []
    for kind in DECLARED[name][1]:
        if kind.startswith("const"):
            arguments.append(text(body) if kind == "const void *" else ctypes.c_int(len(body)))
        elif kind == "INT32_T":
            arguments.append(0 if len(arguments) > 1 else len(body))
        else:
            slots.append((kind, slot(kind, 0 if kind in ("INT8_T **", "INT32_T *") else MARK)))
            arguments.append(slots[-1][1])
    result = call(name, *arguments, by=by or state["by"])
    for kind, out in slots:
        if kind == "INT8_T **":
            call("safe_free", out.value)
        elif kind != "INT32_T *":
            expect((out.value == MARK) == (result < 0), f"{name}: out-argument")
            if by:
                return out.value
            if result >= 0:
                free(kind[:-3], out.value)
    return "" if result >= 0 else str(result)


def encode(name):
    arguments, records, slots = [], [], []
    for kind in DECLARED[name][1]:
        if kind in ("PVOID *", "INT32_T *"):
            slots.append(slot(kind, 77))
            arguments.append(slots[-1])
        elif kind.startswith("const TP"):
            records.append((kind[6:-2], decode(DECODES[kind[6:-2]], by="make_plain_call")))
            arguments.append(records[-1][1])
        else:
            arguments.append(text("text") if kind == "const INT8_T *" else 1)
    result = call(name, *arguments, by=state["by"])
    for kind, address in records:
        free(kind, address)
    expect((result == 0) == (slots[0].value != 77) == (slots[1].value != 77), f"{name}: out-arguments")
    if result == 0:
        call("safe_free", slots[0].value)
    return "" if result == 0 else str(result)


def encode_part(name, by=None):
    movies = decode("decode_tavisys_basic_movie_information_list_from_message", by="make_plain_call")
    part, length = slot("PVOID *", 77), slot("INT32_T *", 77)
    result = call(name, at(movies, 8), part, length, by=by or state["by"])
    free("TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T", movies)
    expect((result == 0) == (part.value != 77) == (length.value != 77), f"{name}: out-arguments")
    if by:
        return part.value, length.value
    if result == 0:
        call("safe_free", part.value)
    return "" if result == 0 else str(result)


def encode_parts(name):
    part, size = encode_part("encode_tavisys_basic_movie_information_to_part", by="make_plain_call")
    body, length = slot("PVOID *", 77), slot("INT32_T *", 77)
    page, parts = struct.pack("5i", 1, 1, 1, 1, 1), struct.pack("Pi4x", part, size)
    result = call(name, text(page), 1, text(parts), body, length, by=state["by"])
    expect((result == 0) == (body.value != 77) == (length.value != 77), f"{name}: out-arguments")
    for address in [part] + [body.value] * (result == 0):
        call("safe_free", address)
    return "" if result == 0 else str(result)


def ask(name):
    body = REPLIES[name][1]
    body = body if isinstance(body, bytes) else BODIES[body]
    state["reply"] = wire(REPLIES[name][0], 0, len(body)) + body
    arguments = [text("127.0.0.1") if kind == "const INT8_T *" else 8 if kind == "INT32_T" else slot(kind, MARK)
                 if kind.endswith("**") else ctypes.create_string_buffer(200) for kind in DECLARED[name][1]]
    result, out = call(name, *arguments, by=state["by"]), arguments[-1]
    if isinstance(out, ctypes.c_long):
        is_done = out.value != MARK
        if is_done:
            free(DECLARED[name][1][-1][:-3], out.value)
    else:
        room = next(a for a in arguments if not isinstance(a, int) and len(a) == 200)
        is_done = any(bytes(room))
        expect(is_done == (result == 0), f"{name}: room")
    return "" if is_done and result >= 0 else str(result)


def exchange(name):
    reply = b"1002|0000|00000004|text" if "net" in name else b"text" if "text" in name else wire(1002, 0, 4, 7)
    head, out, handler = ctypes.create_string_buffer(12), slot("PVOID *", MARK), LIBRARY.calc_codec_int_data_length
    ours, peer = socket.socketpair()
    peer.send(reply)
    more = {"exchange_data_in_tavisys_msg_channel": (1002, 0, 0, out, 0, 1),
            "exchange_data_in_net_communication_channel": (1002, 0, 0, out, 0, 1),
            "receive_text_from_tcp_socket": (out, 4, 1),
            "deal_data_from_tavisys_msg_channel": (ctypes.cast(handler, ctypes.c_void_p).value,)}
    result = call(name, ours.fileno(), *more.get(name, (head, 12, out, 1)), by=state["by"])
    ours.close()
    peer.close()
    expect("deal" in name or (out.value == MARK) == (result < 0), f"{name}: out-argument")
    if out.value != MARK:
        call("safe_free", out.value)
    return "" if result >= 0 else str(result)


def serve():
    """Answers every question on the channel's port with the reply of the moment."""
    listener = socket.create_server(("", PORT), reuse_port=False)
    while True:
        sock, _ = listener.accept()
        head = sock.recv(12, socket.MSG_WAITALL)
        sock.recv(struct.unpack("<3i", head)[2], socket.MSG_WAITALL)
        sock.sendall(state["reply"])
        sock.close()


# ---- Documents

SAMPLE = (SOURCE / "samples/library/sda/sda1/TV2009-0024/metadata.xml").read_bytes()  # a 3D movie
UTF8 = "<!DOCTYPE a><a b='c' xmlns:d='urn:d'><?e f?><d:g h='&lt;'/><c>中<![CDATA[文]]></c></a>"
GBK = "<?xml version='1.0' encoding='GBK'?><a><c>中<![CDATA[文]]></c></a>".encode("gbk")


def load(name):
    document = text(UTF8 if name.endswith("string") else GBK)
    doc = call(name, document, len(GBK), by=state["by"])
    value = ctypes.create_string_buffer(16)
    call("get_value_from_next_layer_object_by_tagname_and_index", call("get_root_object_from_doc_object", doc),
         text("c"), 0, value, 16)
    call("free_doc_object", doc)
    return "0" if not doc else "" if value.value.decode() == "中文" else "not whole"


def required_part(movie):
    """What a movie has to have; the rest may be missing when memory is short for it."""
    def strings(record, *offsets):
        return [string_at(at(record, offset)) for offset in offsets]

    def listed(offset, *offsets):
        node, all_strings = at(movie, offset), []
        while node:
            all_strings += strings(at(node, 8), *offsets)
            node = at(node)
        return [string for string in all_strings if string != b"3D"]
    return [*strings(at(movie, 8), 0, 8, 16), *strings(movie, 16), *listed(48, 8), *listed(56, 8), *listed(64, 8),
            *listed(72, 8, 16), *listed(80, 8, 16), ctypes.string_at(movie + 96, 16), *strings(at(movie, 112), 0, 8, 16),
            *strings(movie, 120), *listed(144, 8, 16)]


def parse(name):
    out, reason = slot("", MARK), ctypes.c_int(0)
    arguments = (text(SAMPLE), out) if name.endswith("string") else (text(SAMPLE), len(SAMPLE), out, reason)
    result = call(name, *arguments, by=state["by"])
    expect((out.value == MARK) == (result == -1), f"{name}: out-argument")
    if result != 0:
        return "refused" if name.endswith("string") else \
            f"refused: {string_at(call('get_tavi_metadata_failure_text', reason.value)).decode()}\n"
    part = required_part(out.value)
    call("release_dbdata_movie_information", out)
    return "" if part == state.setdefault("whole", part) else f"not whole: {part}"


# ---- The rows, and what is done with each

def copy(name):
    address = call(name, text("text"), by=state["by"])
    call("safe_free", address)
    return "" if address else "0"


# ---- Calls that work without any memory: they move what there is, or write into the caller's room

# Where a node has the next one, if not in front.
LINKS = {"TP_TAVISYS_MOVIE_ID_INFORMATION_T": 8, "TP_VIDEO_LIST": 24, "TP_HARD_DISK_VIDEO_INFORMATION_T": 16}


def make(kind, key):
    """A T that a list tells from one with another key."""
    if kind == "DBDATA_MOVIE_INFORMATION_T":  # with all that it has to have
        out = slot("", 0)
        call("get_tavi_metadata_information_from_string", text(SAMPLE.replace(b"TV2009-0024", key.encode())), out)
        return out.value
    creator = max((name for name in DECLARED if name.startswith("create") and kind_of(name) == kind),
                  key=lambda name: name.endswith("_ex"))
    arguments = creator_arguments(creator, key)
    if re.match("DBDATA_(MOVIE|SHAREDIR)_INFORMATION_LIST_T", kind):  # nodes that are told by their records
        arguments[0] = make(kind[:-6] + "T", key)
    return call(creator, *arguments)


def append(name):
    """First to the empty list, then to what is there."""
    kind, nodes, linked, head = DECLARED[name][1][1][:-2], [], [], slot("", 0)
    for key in "12":
        nodes.append(make(kind, key))
        call(name, head, nodes[-1], by=state["by"])
    node = head.value
    while node:
        linked.append(node)
        node = at(node, LINKS.get(kind, 0))
    free(kind, head.value)
    return "" if linked in (nodes, nodes[::-1]) else f"{linked} instead of {nodes}"


def duplicate(name):
    kind = kind_of(name)
    record = make(kind, "1")
    same = call(name, record, by=state["by"])
    for _ in range(2):
        free(kind, record)
    return "" if same == record else "another"


def fill(name):
    room, arguments, records = ctypes.create_string_buffer(1000), [], []
    for kind in DECLARED[name][1]:
        if kind.startswith("const TP"):
            of = kind[6:-2]
            records.append((of, decode(DECODES[of], by="make_plain_call") if of in DECODES else make(of, "1")))
        arguments.append(records[-1][1] if kind.startswith("const TP") else text("text") if "INT8_T" in kind else
                         room if kind == "PVOID" else len(room))
    result = call(name, *arguments, by=state["by"])
    for kind, address in records:
        free(kind, address)
    return "" if 0 < result < len(room) and any(room) else str(result)


# At its start libxml2 does without two locks, and the C library has more than one way to a converter: a document
# is whole then.
OPEN_FORMS = {
    "get_doc_object_from_string": "0?",
    "get_doc_object_from_memory": "0?",
    "get_tavi_metadata_information_from_document": f"|refused: [^:]*\n({NODE})?",
    "get_tavi_metadata_information_from_string":
        f"|refused(从字符串获取DOC对象失败|创建影片元数据信息缓存失败)\n|refused({NODE})?(过滤影片类型\n)?({NODE})?"
        "(([^:\n]*: )?解析[^:]*时出错\n?)?分析并提取XML数据失败\n"}
ATTEMPTS = (("create_tcp", None), ("create", create), ("decode", decode),
            ("encode.*_to_part", encode_part), ("encode.*_parts_to_message", encode_parts), ("encode(?!.*_part)", encode), ("get_tavi", parse),
            ("get_doc", load), ("tavisysapi|touch", ask), ("exchange|deal|receive", exchange), ("safe_strdup", copy))
# The calls that take no memory. Those of sockets are inside the exchanges and the agent's calls.
WITHOUT_MEMORY = (("add|insert", append), ("duplicate", duplicate),
                  ("encode_(int|ptr|video_list|(mid_vid|basic_movie)_argument|tavisys_video_information_list_to_buffer)",
                   fill))
FRUGAL = re.compile("create_tcp|decode_int|get_tavi_metadata_failure_text|receive_data_from_tcp_socket|"
                    "encode_basic_movie_return|"  # fails with memory, too
                    + "|".join(prefix for prefix, _ in WITHOUT_MEMORY))
A_PARSER = 30  # that waits for the next document: blocks
KEPT = {"get_doc_object_from_memory": 8,  # libxml2 loses a converter for whose name it finds no memory
        "get_tavi_metadata_information_from_document": A_PARSER, "get_tavi_metadata_information_from_string": A_PARSER}
ANY = 100  # blocks may stay when a process does something for the first time
complaints = []


def expect(is_so, complaint):
    if not is_so:
        complaints.append(complaint)


def kept_by(name):
    return 3 if ATTRIBUTES.fullmatch(name) else KEPT.get(name, 0)  # of a map: an entry, its name, a table of buckets


def try_call(name, attempt, nth, is_lasting, kept):
    """What came of an attempt and, unless that is success, what was said; and whether an allocation failed."""
    SHORTAGE.begin_shortage(nth, is_lasting)
    outcome = attempt(name)
    SHORTAGE.fflush(None)
    OUTPUT.seek(0)
    # A process's first movie says where ids begin, on a machine whose eth0 has an address.
    said = re.sub(r"s_id_base :.*\n", "", OUTPUT.read().decode()) + SHORTAGE.warnings().decode()
    OUTPUT.seek(0)
    OUTPUT.truncate()
    expect(SHORTAGE.live_blocks() <= kept, f"{name}, allocation {nth}: {SHORTAGE.live_blocks()} blocks are lost")
    return outcome + said if outcome else "", SHORTAGE.has_allocation_failed()


def visit(name, attempt, nth, met):
    """One failure point: one allocation fails, then it and all behind it, and each time the same call works right
    afterwards. False when the call comes through without a failure."""
    form, kept = OPEN_FORMS.get(name), kept_by(name)
    at_first = ANY if state["is_fresh"] else kept
    outcome, has_failed = try_call(name, attempt, nth, 0, at_first)
    state["is_fresh"] = False
    if not has_failed:
        expect(outcome == "", f"{name} fails with memory: {outcome}")
        return False
    forms = [form] if form else failures_of(name)
    met.update([f for f in forms if re.fullmatch(f, outcome)] or [outcome])
    expect(met <= set(forms), f"{name}, allocation {nth}: {outcome}")
    expect(try_call(name, attempt, 0, 0, at_first)[0] == "", f"{name}, allocation {nth}: fails afterwards")
    if state["by"] == "make_call":  # libxml2 never comes back from making a thread's state without any memory
        outcome, has_failed = try_call(name, attempt, nth, 1, kept)
        expect(outcome or form or not has_failed, f"{name} works without memory from {nth} on")
        expect(try_call(name, attempt, 0, 0, kept)[0] == "", f"{name}, allocation {nth}: fails after no memory at all")
    return True


def visit_each(name, attempt):
    try_call(name, attempt, 0, 0, ANY)
    points, met = 0, set()
    while visit(name, attempt, points + 1, met):
        points += 1
    expect(points > 0, f"{name} takes no memory")
    expect(name in OPEN_FORMS or met == set(failures_of(name)), f"{name} never gave {set(failures_of(name)) - met}")
    return points


def visit_each_in_fresh_processes(name, attempt):
    """Each failure point in a process of its own, which has not made the call before."""
    for points in range(100000):
        child = os.fork()
        if child == 0:
            state["is_fresh"], before = True, len(complaints)
            is_visited = visit(name, attempt, points + 1, set())
            print(*complaints[before:], sep="\n", end="", file=TELL, flush=True)
            os._exit(2 if complaints[before:] else is_visited)
        status = os.waitpid(child, 0)[1]
        expect(status in (0, 256), f"{name}, allocation {points + 1} in a fresh process: {status}")
        if status == 0:
            return points


def call_each_without_memory():
    """How many calls are seen to work while no allocation succeeds."""
    rows = [(name, attempt) for name in DECLARED for prefix, attempt in WITHOUT_MEMORY if re.match(prefix, name)]
    for name, attempt in rows:
        outcome, has_failed = try_call(name, attempt, 1, 1, 0)
        expect(not has_failed and outcome == "", f"{name} takes memory or fails: {outcome}")
    return len(rows)


def main():
    os.dup2(OUTPUT.fileno(), 1)
    rows = [(name, attempt) for name in sorted(DECLARED) for prefix, attempt in ATTEMPTS
            if re.match(prefix, name) and not FRUGAL.match(name)]
    fresh = sum(visit_each_in_fresh_processes(name, attempt) for name, attempt in rows
                if ATTRIBUTES.fullmatch(name) or name.endswith("from_document"))
    threading.Thread(target=serve, daemon=True).start()
    points = {}
    for name, attempt in rows:
        points.setdefault(attempt, []).append(visit_each(name, attempt))
    state["by"] = "make_call_in_new_thread"
    points["in new threads"] = [visit_each(name, attempt) for name, attempt in rows if name in OPEN_FORMS]
    for group, of in points.items():
        print(f"{sum(of)} failure points in {len(of)} calls:", getattr(group, "__name__", group), file=TELL)
    print(f"{call_each_without_memory()} calls work without memory", file=TELL)
    print(f"{sum(map(sum, points.values()))} failure points, {fresh} of first calls in fresh processes", file=TELL)
    print(*complaints, sep="\n", file=TELL, flush=True)
    os._exit(1 if complaints else 0)


main()
