#!/usr/bin/env python3
"""The same for Python, without a build. The library is looked for where the system has it; LD_LIBRARY_PATH names
another folder."""
import ctypes
from ctypes import POINTER, Structure, c_char_p, c_int32, c_uint32

tavisys = ctypes.CDLL("libtavisys.so.1")


class Request(Structure):  # TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T
    _fields_ = [(name, c_int32) for name in ("cid", "tid", "aid", "yid", "did", "pagenum", "pagesize", "orderby")]


class Movie(Structure):  # TP_TAVISYS_BASIC_MOVIE_INFORMATION_T, as far as it is needed
    _fields_ = [("movid", c_int32), ("movcode", c_char_p), ("movname", c_char_p), ("score", c_uint32),
                ("puttime", c_int32), ("pubtime", c_int32)]


class Node(Structure):  # TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T
    pass


class Page(Structure):  # TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T
    _fields_ = [("pagenum", c_int32), ("pagesize", c_int32), ("totalpages", c_int32), ("totalmovies", c_int32),
                ("replymovies", c_int32), ("list", POINTER(Node))]


Node._fields_ = [("next", POINTER(Node)), ("info", POINTER(Movie))]

page = POINTER(Page)()
result = tavisys.tavisysapi_get_movie_basic_ext_information(
    ctypes.byref(Request(pagenum=1, pagesize=10)), ctypes.byref(page))
if result != 0:
    raise SystemExit(f"the server can't be asked: {result}")
node = page.contents.list
while node:
    movie = node.contents.info.contents
    print(movie.pubtime // 10000, movie.movname.decode())
    node = node.contents.next
tavisys.delete_tavisys_basic_movie_ext_information(ctypes.byref(page))
