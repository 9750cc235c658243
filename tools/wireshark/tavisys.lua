-- Shows the messages of movie cabinets in Wireshark and tshark, field by field: those on TCP port 40001, and
-- those behind a head of text, which are recognised on any port. See README.md beside this file.
--
-- RECORDS and MESSAGES below state the vocabulary and the order of the wire, once and as data; everything behind
-- them reads by these tables.

local PORT = 40001
local HEAD_LENGTH = 12
local TEXT_HEAD_LENGTH = 19
local INTEGER_LENGTH = 4
local MESSAGE_LIMIT = 2147483647 -- bytes that a receiver can count, the head's among them
local REQUEST_LIMIT = 1048576    -- bytes of body that a server takes

---- What a record is made of. A field has a kind, by which READ knows it, and a name.

local function field(kind, more)
    return function(name)
        local made = { kind = kind, name = name }
        for key, value in pairs(more or {}) do
            made[key] = value
        end
        return made
    end
end
local int = field("int")
local uint = field("int", { is_unsigned = true })
local str = field("str")
local ids = field("ids")
local text = field("text")              -- characters up to the end of the body
local text_and_nul = field("text", { has_nul = true })
local function one_of(name, values, first, last) -- an integer that has names; outside the range, where there is one,
    return { kind = "int", name = name, values = values, first = first, last = last } -- a server refuses it
end
local function within(name, first, last)
    return { kind = "int", name = name, first = first, last = last }
end
local function room(name, size) -- a name in a field of fixed size, NULs behind it
    return { kind = "room", name = name, size = size }
end
local function list(name, record)
    return { kind = "list", name = name, record = record }
end
local function optional(name, record) -- behind a flag
    return { kind = "optional", name = name, record = record }
end
local function sized(name, record) -- behind the number of bytes that it takes, or 0 and nothing
    return { kind = "sized", name = name, record = record }
end
local function inner(name, record) -- as it is
    return { kind = "inner", name = name, record = record }
end

-- A record's fields are filtered by as tavisys.RECORD.FIELD, those that it shares with another by that one's name.
-- Where it is the element of a list, it is titled by one of them.
local function record(name, fields, title)
    for _, one in ipairs(fields) do
        one.owner = one.owner or name
    end
    return { name = name, fields = fields, title = title }
end
local function extended(base, name, fields)
    local all = { table.unpack(base.fields) }
    for _, more in ipairs(fields) do
        all[#all + 1] = more
    end
    return record(name, all, base.title)
end

---- The vocabulary

local PHASES = {
    [0] = "SYSRUN_STATUS_INIT",
    [1] = "SYSRUN_STATUS_WAITING",
    [2] = "SYSRUN_STATUS_PARSING",
    [3] = "SYSRUN_STATUS_READY",
    [4] = "SYSRUN_STATUS_RUNNING",
}
local FILTER_TYPES = {
    [1] = "TP_FILTER_TYPE_KIND",
    [2] = "TP_FILTER_TYPE_AREA",
    [3] = "TP_FILTER_TYPE_YEAR",
    [4] = "TP_FILTER_TYPE_DIMENSION",
}
local ORDERS = {
    [0] = "TP_ORDER_BY_PUT_TIME",
    [1] = "TP_ORDER_BY_PUBLISH_TIME",
    [2] = "TP_ORDER_BY_SCORE",
    [3] = "TP_ORDER_BY_NAME",
}
local RESULTS = {
    [-101] = "TAVISYS_RESULT_UNKNOWN_TYPE",
    [-102] = "TAVISYS_RESULT_BAD_REQUEST",
    [-103] = "TAVISYS_RESULT_NO_SUCH_MOVIE",
    [-104] = "TAVISYS_RESULT_SERVER_ERROR",
    [-105] = "TAVISYS_RESULT_NO_SUCH_POSITION",
}

---- The records

local EMPTY = record("empty", {})

-- Requests
local FILTERS_REQUEST = record("filters_request", { one_of("type", FILTER_TYPES, 1, 4), int "cid" })
local KINDS_REQUEST = record("kinds_request", { one_of("type", FILTER_TYPES, 1, 1), int "cid" })
local PAGE_REQUEST = record("page_request", {
    int "cid", int "tid", int "aid", int "yid", int "did",
    within("pagenum", 1, MESSAGE_LIMIT), within("pagesize", 1, 1000), one_of("orderby", ORDERS, 0, 3),
})
local DETAIL_REQUEST = record("detail_request", { int "cid", int "mid" })
local POSITION_REQUEST = record("position_request", {
    room("deviceid", 128), room("hddevname", 16), room("ptdevname", 16),
})
local CODE = record("code", { str "movcode" }, "movcode")
local CODES_REQUEST = record("codes_request", {
    sized("request", record("codes_request", {
        str "deviceid", str "hddevname", str "ptdevname",
        list("list", record("codes", { sized("code", CODE) })),
    })),
})

-- Replies
local VERSION = record("version", { str "version", str "name", str "devid" })
local STATUS = record("status", {
    one_of("status", PHASES), int "total_movies", int "parseok_movies", int "parseerr_movies", int "left_movies",
})
local SYSTEM = record("system", { int "hdnum", int "movnum" })
local VALUE = record("value", { int "id", str "name" }, "name")
local COUNTED_VALUE = extended(VALUE, "counted_value", { int "movies" })
local MOVIE = record("movie", {
    int "movid", str "movcode", str "movname", uint "score", int "puttime", int "pubtime", str "nposter",
    str "bposter", str "acronym", int "category_id", int "year_id", ids "kind_ids", ids "area_ids",
    ids "dimension_ids", ids "resolution_ids", str "hdsn", int "index",
}, "movname")
local TOUCH_MOVIE = extended(MOVIE, "touch_movie", { int "totalvideo", int "duration" })
local PAGE_INFO = record("pageinfo", {
    int "pagenum", int "pagesize", int "totalpages", int "totalmovies", int "replymovies",
})
local LABELLED_LIST = record("labelled_list", {
    str "desc", list("list", record("labelled_value", { str "name" }, "name")),
})
local LABELLED_TEXT = record("labelled_text", { str "desc", str "value" })
local DETAIL = record("detail", {
    str "name", int "year", optional("dimension_info", VALUE), str "poster",
    optional("director_info", LABELLED_LIST), optional("actor_info", LABELLED_LIST),
    optional("kind_info", LABELLED_LIST), optional("duration_info", LABELLED_TEXT),
    optional("summary_info", LABELLED_TEXT), int "videos",
    list("video_list", record("video", { int "id", int "seqno", str "name", str "mp4" }, "name")),
})
local DISK = record("disk", {
    str "devname", str "serialno",
    list("list", record("partition", { int "seqno", str "devname", str "uuid", str "mntp" }, "devname")),
}, "devname")
local NAME = record("name", { str "name" }, "name")
local PERSON = record("person", { str "code", str "name" }, "name")
local WHOLE_MOVIE = record("whole_movie", {
    int "mid", str "movcode", str "movnamech", str "movnameen", str "imdbvalue", str "acronym",
    list("dimension_list", NAME), list("resolution_list", NAME), list("category_list", NAME),
    list("kind_list", NAME), list("area_list", NAME), list("director_list", PERSON), list("actor_list", PERSON),
    list("year_list", record("year", { int "year" })), int "puttime", int "pubtime", int "putintime",
    int "duration", optional("posters", record("posters", { str "big", str "middle", str "small" })),
    str "summary", int "episodes",
    list("video_list", record("whole_video", {
        int "vid", int "seqno", str "name", str "filepath", str "mp4",
    }, "name")),
}, "movnamech")

local function page_of(movie)
    return record("page", { inner("pageinfo", PAGE_INFO), list("list", movie) })
end
local DISKS = record("disks", { list("list", DISK) })
local WHOLE_MOVIES = record("whole_movies", { list("list", WHOLE_MOVIE) })

---- The messages. Those without a reply are reserved: servers answer them as they answer an unknown type.

local MESSAGES = {
    [1000] = { name = "TAVISYS_MSGTYPE_REQUEST_SOFTWARE_VERSION", request = EMPTY, reply = VERSION },
    [1001] = { name = "TAVISYS_MSGTYPE_REQUEST_SERVER_RUNNING_STATUS", request = EMPTY, reply = STATUS },
    [1002] = { name = "TAVISYS_MSGTYPE_REQUEST_SYSTEM_INFORMATION", request = EMPTY, reply = SYSTEM },
    [1003] = { name = "TAVISYS_MSGTYPE_REQUEST_CATEGORY_LIST", request = EMPTY,
               reply = record("categories", { list("list", COUNTED_VALUE) }) },
    [1004] = { name = "TAVISYS_MSGTYPE_REQUEST_KIND_LIST", request = KINDS_REQUEST, may_be_empty = true,
               reply = record("kinds", { list("list", COUNTED_VALUE) }) },
    [1005] = { name = "TAVISYS_MSGTYPE_REQUEST_FILTER_INFO_LIST", request = FILTERS_REQUEST,
               reply = record("filters", { list("list", VALUE) }) },
    [1006] = { name = "TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO", request = PAGE_REQUEST, reply = page_of(MOVIE) },
    [1007] = { name = "TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO", request = DETAIL_REQUEST, reply = DETAIL },
    [1008] = { name = "TAVISYS_MSGTYPE_REQUEST_RANDOM_BASIC_MOVIE_INFO", request = EMPTY,
               reply = record("random_poster", { text "poster" }) },
    [1010] = { name = "TAVISYS_MSGTYPE_REQUEST_SEARCH_MOVIE_INFO" },
    [3000] = { name = "TAVISYS_MSGTYPE_REQUEST_HARDDISK_INFO", request = EMPTY, reply = DISKS },
    [3001] = { name = "TAVISYS_MSGTYPE_REQUEST_PARTITION_INFO", request = POSITION_REQUEST, reply = DISKS },
    [3002] = { name = "TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIES", request = POSITION_REQUEST,
               reply = record("count", { int "movies" }) },
    [3003] = { name = "TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIE_INFO", request = POSITION_REQUEST,
               reply = WHOLE_MOVIES },
    [3004] = { name = "TAVISYS_MSGTYPE_REQUEST_GET_UUID_INFO", request = EMPTY,
               reply = record("server_uuid", { text_and_nul "uuid" }) },
    [3005] = { name = "AVISYS_MSGTYPE_REQUEST_MOVIE_INFO_BY_MOVCODE", request = CODES_REQUEST,
               reply = WHOLE_MOVIES },
    [3006] = { name = "TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_BY_MID_AND_VID" },
    [3007] = { name = "TAVISYS_MSGTYPE_REQUEST_SEARCH_MOVCODE_DETAIL_MOVIE_INFO" },
    [5006] = { name = "TOUCHSCREEM_MSGTYPE_REQUEST_BASIC_MOVIE_INFO", request = PAGE_REQUEST,
               reply = page_of(TOUCH_MOVIE) },
    [5007] = { name = "TOUCHSCREEM_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO", request = DETAIL_REQUEST, reply = DETAIL },
    [5008] = { name = "TOUCHSCREEM_TAVISYS_REQUEST_SEARCH_MOVIE_INFO" },
    [5009] = { name = "TOUCHSCREEM_TAVISYS_REQUEST_SEARCH_MOVIE_LIST" },
    [10010] = { name = "SERVER_BASIC_INFO" },
}

---- Protocols, fields and marks

local tavisys = Proto("tavisys", "Movie cabinet message")
local tavisys_text = Proto("tavisys_text", "Movie cabinet message with a head of text")

local TYPE_NAMES = {}
for number, message in pairs(MESSAGES) do
    TYPE_NAMES[number] = message.name
end
RESULTS[0] = "done"

local HEAD = {
    type = ProtoField.int32("tavisys.type", "type", base.DEC, TYPE_NAMES),
    result = ProtoField.int32("tavisys.result", "result", base.DEC, RESULTS),
    length = ProtoField.int32("tavisys.length", "length"),
    body = ProtoField.bytes("tavisys.body", "body"),
    data = ProtoField.bytes("tavisys.data", "bytes that are no field"),
    text = ProtoField.string("tavisys.text", "text"),
    request_in = ProtoField.framenum("tavisys.request_in", "request in", base.NONE, frametype.REQUEST),
    time = ProtoField.relative_time("tavisys.time", "time since the request"),
}
local protocol_fields = {}
for _, made in pairs(HEAD) do
    protocol_fields[#protocol_fields + 1] = made
end

-- A field's ProtoField is made once for each name that it is filtered by.
local made_fields = {}
local function proto_field(make, name, ...)
    local filter = "tavisys." .. name
    if made_fields[filter] == nil then
        made_fields[filter] = make(filter, name:match("%.(.*)$"):gsub("%.", " "), ...)
        protocol_fields[#protocol_fields + 1] = made_fields[filter]
    end
    return made_fields[filter]
end

local declare_record

-- Gives the field what its kind shows, and says how many bytes it takes at the least.
local DECLARE = {
    int = function(one, name)
        one.proto = proto_field(one.is_unsigned and ProtoField.uint32 or ProtoField.int32, name, base.DEC, one.values)
        return INTEGER_LENGTH
    end,
    str = function(one, name)
        one.proto = proto_field(ProtoField.string, name)
        return INTEGER_LENGTH
    end,
    ids = function(one, name)
        one.proto = proto_field(ProtoField.int32, name)
        one.count = proto_field(ProtoField.int32, name .. ".count")
        return INTEGER_LENGTH
    end,
    text = function(one, name)
        one.proto = proto_field(ProtoField.string, name)
        return 0
    end,
    room = function(one, name)
        one.proto = proto_field(ProtoField.string, name)
        return one.size
    end,
    list = function(one, name)
        one.count = proto_field(ProtoField.int32, name .. ".count")
        declare_record(one.record)
        return INTEGER_LENGTH
    end,
    optional = function(one, name)
        one.flag = proto_field(ProtoField.int32, name .. ".flag")
        declare_record(one.record)
        return INTEGER_LENGTH
    end,
    sized = function(one, name)
        one.totalen = proto_field(ProtoField.int32, name .. ".totalen")
        declare_record(one.record)
        return INTEGER_LENGTH
    end,
    inner = function(one)
        return declare_record(one.record)
    end,
}

function declare_record(declared)
    if declared.smallest == nil then
        declared.smallest = 0
        for _, one in ipairs(declared.fields) do
            declared.smallest = declared.smallest + DECLARE[one.kind](one, one.owner .. "." .. one.name)
        end
    end
    return declared.smallest
end
for _, message in pairs(MESSAGES) do
    declare_record(message.request or EMPTY)
    declare_record(message.reply or EMPTY)
end
tavisys.fields = protocol_fields

local function mark(name, title, group, severity)
    return ProtoExpert.new("tavisys." .. name, title, expert.group[group], expert.severity[severity])
end
local MARK = {
    bad_head = mark("bad_head", "Head that can't be read", "MALFORMED", "ERROR"),
    negative = mark("negative_length", "Negative length in the head", "MALFORMED", "ERROR"),
    overlong = mark("overlong", "Length above what receivers take", "MALFORMED", "ERROR"),
    unknown_type = mark("unknown_type", "Message type that servers don't answer", "UNDECODED", "WARN"),
    request_result = mark("request_result", "Request with a result", "PROTOCOL", "WARN"),
    refused = mark("refused", "The peer has said no", "RESPONSE_CODE", "NOTE"),
    refused_with_body = mark("refused_with_body", "Body behind a result other than 0", "PROTOCOL", "NOTE"),
    other_type = mark("other_type", "Reply of another type than its request", "MALFORMED", "ERROR"),
    more_requests = mark("more_requests", "A connection serves one request", "PROTOCOL", "WARN"),
    out_of_step = mark("out_of_step", "Bytes behind a message whose end isn't known", "UNDECODED", "WARN"),
    cut_short = mark("cut_short", "The connection ended before the message did", "MALFORMED", "ERROR"),
    short = mark("short", "Body that ends too early", "MALFORMED", "ERROR"),
    trailing = mark("trailing", "Bytes behind the last field", "MALFORMED", "WARN"),
    count = mark("bad_count", "Count that can't be", "MALFORMED", "ERROR"),
    negative_list = mark("negative_list", "Negative count, read as an empty list", "PROTOCOL", "WARN"),
    flag = mark("odd_flag", "Flag other than 0 and 1, read as 1", "PROTOCOL", "WARN"),
    totalen = mark("bad_totalen", "A totalen that isn't the number of bytes behind it", "MALFORMED", "WARN"),
    nul = mark("nul", "NUL inside a string", "MALFORMED", "ERROR"),
    no_nul = mark("no_nul", "Text without the NUL behind it", "MALFORMED", "WARN"),
    encoding = mark("not_utf8", "Text that isn't UTF-8", "MALFORMED", "WARN"),
    range = mark("out_of_range", "Value that servers refuse", "PROTOCOL", "WARN"),
}
local marks = {}
for _, made in pairs(MARK) do
    marks[#marks + 1] = made
end
tavisys.experts = marks

---- Reading a body. A place is {tvb, offset, stop}; a reader returns false where the body can't be read any further.

local function note(item, which, message, ...)
    item:add_proto_expert_info(which, message:format(...))
end

-- The next bytes, or nil with a mark in the tree.
local function take(at, tree, one, count)
    local left = at.stop - at.offset
    if count > left then
        note(tree, MARK.short, "%s needs %d bytes, %d are left", one.name, count, left)
        return nil
    end
    local range = at.tvb(at.offset, count)
    at.offset = at.offset + count
    return range
end

local function take_integer(at, tree, one)
    local range = take(at, tree, one, INTEGER_LENGTH)
    if range == nil then
        return nil
    end
    return range:le_int(), range
end

-- Adds a text that lies in the range behind `skipped` bytes.
local function add_text(tree, one, range, skipped)
    local shown = range:len() > skipped and range(skipped, range:len() - skipped) or nil
    local raw = shown and shown:raw() or ""
    local value = shown and shown:string(ENC_UTF_8) or ""
    local item = tree:add(one.proto, range, value)
    if raw:find("\0", 1, true) then
        note(item, MARK.nul, "%s has a NUL inside", one.name)
        return nil
    end
    if raw ~= value then
        note(item, MARK.encoding, "%s isn't UTF-8", one.name)
    end
    return value
end

local read_record

-- Reads the elements of a list, each of them into a tree of its own.
local function read_elements(at, tree, one, count)
    for i = 1, count do
        local start = at.offset
        local title = ("%s %d"):format(one.record.name, i)
        local element = tree:add(at.tvb(start, 0), title)
        local is_whole, value = read_record(at, element, one.record)
        element:set_len(at.offset - start)
        if value ~= nil then
            element:set_text(title .. ": " .. value)
        end
        if not is_whole then
            return false
        end
    end
    return true
end

local READ = {}

function READ.int(at, tree, one)
    local value, range = take_integer(at, tree, one)
    if value == nil then
        return false
    end
    local item = tree:add_le(one.proto, range)
    if one.first ~= nil and (value < one.first or value > one.last) then
        note(item, MARK.range, "%s has to be %d to %d", one.name, one.first, one.last)
    end
    return true, tostring(value)
end

function READ.str(at, tree, one)
    local count, range = take_integer(at, tree, one)
    if count == nil then
        return false
    end
    if count == -1 then
        tree:add(one.proto, range, ""):set_text(one.name .. ": NULL")
        return true
    end
    if count < 0 then
        note(tree, MARK.count, "%s has the count %d", one.name, count)
        return false
    end
    if take(at, tree, one, count) == nil then
        return false
    end
    local value = add_text(tree, one, at.tvb(range:offset(), INTEGER_LENGTH + count), INTEGER_LENGTH)
    return value ~= nil, value
end

function READ.ids(at, tree, one)
    local count, range = take_integer(at, tree, one)
    if count == nil then
        return false
    end
    local item = tree:add_le(one.count, range)
    if count < 0 or count > (at.stop - at.offset) / INTEGER_LENGTH then
        note(item, MARK.count, "%d ids can't be in %d bytes", count, at.stop - at.offset)
        return false
    end
    item:set_len(INTEGER_LENGTH * (1 + count))
    for _ = 1, count do
        item:add_le(one.proto, take(at, item, one, INTEGER_LENGTH))
    end
    return true
end

function READ.text(at, tree, one)
    local count = at.stop - at.offset
    local has_nul = one.has_nul and count > 0 and at.tvb(at.stop - 1, 1):uint() == 0
    if one.has_nul and not has_nul then
        note(tree, MARK.no_nul, "%s has no NUL behind it", one.name)
    end
    if count > 0 then
        add_text(tree, one, at.tvb(at.offset, has_nul and count - 1 or count), 0)
        at.offset = at.stop
    end
    return true
end

function READ.room(at, tree, one)
    local range = take(at, tree, one, one.size)
    if range == nil then
        return false
    end
    local value = range:raw():match("^[^%z]*")
    local item = tree:add(one.proto, range, #value > 0 and range(0, #value):string(ENC_UTF_8) or "")
    if #value == one.size then
        note(item, MARK.no_nul, "%s fills its field, without a NUL", one.name)
    end
    return true
end

function READ.list(at, tree, one)
    local count, range = take_integer(at, tree, one)
    if count == nil then
        return false
    end
    local item = tree:add_le(one.count, range)
    if count < 0 then
        note(item, MARK.negative_list, "%s has the count %d", one.name, count)
        return true
    end
    if count > (at.stop - at.offset) / one.record.smallest then
        note(item, MARK.count, "%d elements can't be in %d bytes", count, at.stop - at.offset)
        return false
    end
    local is_whole = read_elements(at, item, one, count)
    item:set_len(at.offset - range:offset())
    return is_whole
end

function READ.optional(at, tree, one)
    local flag, range = take_integer(at, tree, one)
    if flag == nil then
        return false
    end
    local item = tree:add_le(one.flag, range)
    item:set_text(("%s: %s"):format(one.name, flag == 0 and "absent" or "present"))
    if flag == 0 then
        return true
    end
    if flag ~= 1 then
        note(item, MARK.flag, "%s has the flag %d", one.name, flag)
    end
    local is_whole = read_record(at, item, one.record)
    item:set_len(at.offset - range:offset())
    return is_whole
end

function READ.sized(at, tree, one)
    local totalen, range = take_integer(at, tree, one)
    if totalen == nil then
        return false
    end
    local item = tree:add_le(one.totalen, range)
    if totalen == 0 then
        return true
    end
    local is_whole, value = read_record(at, tree, one.record)
    local behind = at.offset - range:offset() - INTEGER_LENGTH
    if is_whole and behind ~= totalen then
        note(item, MARK.totalen, "totalen is %d, %d bytes are behind it", totalen, behind)
    end
    return is_whole, value
end

function READ.inner(at, tree, one)
    return read_record(at, tree, one.record)
end

-- The second value is that of the field which titles the record.
function read_record(at, tree, read)
    local title = nil
    for _, one in ipairs(read.fields) do
        local is_whole, value = READ[one.kind](at, tree, one)
        if one.name == read.title or one.kind == "sized" then
            title = value
        end
        if not is_whole then
            return false, title
        end
    end
    return true, title
end

-- What is behind the last field, or behind the one that couldn't be read.
local function add_rest(at, tree, is_whole)
    if at.offset >= at.stop then
        return
    end
    local item = tree:add(HEAD.data, at.tvb(at.offset, at.stop - at.offset))
    if is_whole then
        note(item, MARK.trailing, "%d bytes behind the last field", at.stop - at.offset)
    end
end

---- What is known of a connection. It is known by its two ends: the number that Wireshark gives it can't be had in
-- every pass. So what a pass adds has to be the same in every other.

local SETTLING_TIME = 2 -- seconds in which a request has to arrive: what comes later from the same ends is another one
local connections = {}

local function end_of(address, port)
    return tostring(address) .. ":" .. port
end

local function key_of_connection(pinfo)
    local one, other = end_of(pinfo.src, pinfo.src_port), end_of(pinfo.dst, pinfo.dst_port)
    return one < other and one .. " " .. other or other .. " " .. one
end

local function connection_of(pinfo)
    local key = key_of_connection(pinfo)
    connections[key] = connections[key] or { requests = {}, replies = 0, of_message = {}, sides = {} }
    return connections[key]
end

-- One of the two ends: since and until when it had sent an incomplete message, and where its bytes are out of step.
local function side_of(connection, pinfo)
    local key = end_of(pinfo.src, pinfo.src_port)
    connection.sides[key] = connection.sides[key] or { waits = {}, lost_in = {} }
    return connection.sides[key]
end

-- Who sends to the cabinet's port asks; on other ports who speaks first.
local function is_request(connection, pinfo)
    if (pinfo.dst_port == PORT) ~= (pinfo.src_port == PORT) then
        return pinfo.dst_port == PORT
    end
    local side = side_of(connection, pinfo)
    connection.asker = connection.asker or side
    return connection.asker == side
end

local function start_waiting(side, pinfo)
    if not pinfo.visited then
        side.waits[#side.waits + 1] = { from = pinfo.number }
    end
end

local function stop_waiting(side, pinfo)
    local last = side.waits[#side.waits]
    if last ~= nil and last.to == nil and not pinfo.visited then
        last.to = pinfo.number
    end
end

local function is_waiting(side, frame)
    for _, wait in ipairs(side.waits) do
        if wait.from <= frame and (wait.to == nil or wait.to > frame) then
            return true
        end
    end
    return false
end

local function lose(side, pinfo)
    if not pinfo.visited then
        side.lost_at = pinfo.rel_ts
    end
end

local function is_lost(side, pinfo, place)
    local key = pinfo.number .. ":" .. place
    if not pinfo.visited and side.lost_at ~= nil and pinfo.rel_ts - side.lost_at < SETTLING_TIME then
        side.lost_in[key] = true
    end
    return side.lost_in[key]
end

-- Replies belong to the requests in their order. A request behind a reply begins anew: the port has come back.
local function pair(connection, message, history)
    if message.is_request then
        local requests = connection.requests
        local last = requests[#requests]
        if connection.replies > 0 or last == nil or history.time - last.time > SETTLING_TIME then
            connection.requests, connection.replies = { history }, 0
        else
            requests[#requests + 1] = history
        end
        history.number = #connection.requests
    else
        connection.replies = connection.replies + 1
        history.request = connection.requests[connection.replies]
    end
end

-- What was noted of a message when it was seen first.
local function history_of(connection, pinfo, place, message)
    local key = pinfo.number .. ":" .. place
    if connection.of_message[key] == nil then
        connection.of_message[key] = { type = message.type, frame = pinfo.number, time = pinfo.rel_ts }
        pair(connection, message, connection.of_message[key])
    end
    return connection.of_message[key]
end

---- One message

local function add_pairing(tree, message, history)
    if message.is_request and history.number > 1 then
        note(tree, MARK.more_requests, "request %d of this connection, which serves one", history.number)
    end
    local request = history.request
    if request == nil then
        return
    end
    local microseconds = math.max(math.floor((history.time - request.time) * 1e6 + 0.5), 0)
    local time = NSTime.new(math.floor(microseconds / 1e6), microseconds % 1e6 * 1000)
    tree:add(HEAD.request_in, request.frame):set_generated()
    tree:add(HEAD.time, time):set_generated()
    if request.type ~= message.type then
        note(tree, MARK.other_type, "the request has the type %d, this reply %d", request.type, message.type)
    end
end

-- On the text-headed channel bodies are texts where they look like one: an encoded body has control characters.
local function is_plain_text(range)
    local raw = range:raw():gsub("%z$", "")
    return raw:find("^[^%z\1-\8\11\12\14-\31\127]+$") ~= nil and range(0, #raw):string(ENC_UTF_8) == raw
end

local function add_body(at, tree, message)
    local known = MESSAGES[message.type]
    local length = at.stop - at.offset
    local read = known and known[message.is_request and "request" or "reply"]
    local body = length > 0 and tree:add(HEAD.body, at.tvb(at.offset, length)) or tree
    if length > 0 then
        body:set_text(("body: %d bytes"):format(length))
    end
    if length > 0 and message.has_text_head and is_plain_text(at.tvb(at.offset, length)) then
        body:add(HEAD.text, at.tvb(at.offset, length), at.tvb(at.offset, length):string(ENC_UTF_8))
        return
    end
    if message.result ~= 0 and not message.is_request then
        if length > 0 then
            note(body, MARK.refused_with_body, "receivers drop this body")
        end
        return
    end
    if read == nil or (length == 0 and known.may_be_empty and message.is_request) then
        return
    end
    add_rest(at, body, read_record(at, body, read))
end

local function add_head_marks(items, message)
    if MESSAGES[message.type] == nil then
        note(items.type, MARK.unknown_type, "there is no message type %d", message.type)
    elseif MESSAGES[message.type].reply == nil then
        note(items.type, MARK.unknown_type, "the message type %d is reserved", message.type)
    end
    if message.result ~= 0 then
        local which = message.is_request and MARK.request_result or MARK.refused
        note(items.result, which, "result %d: %s", message.result, RESULTS[message.result] or "not known")
    end
    if message.length < 0 then
        note(items.length, MARK.negative, "the length is %d", message.length)
    elseif message.length > message.limit then
        note(items.length, MARK.overlong, "receivers take %d bytes of body at most", message.limit)
    end
end

local function summary_of(message)
    local known = MESSAGES[message.type]
    local line = ("%s %d %s"):format(message.is_request and "request" or "reply", message.type,
                                     known and known.name or "unknown type")
    if message.result ~= 0 then
        line = line .. (", result %d"):format(message.result)
    end
    return line .. (", %d bytes"):format(message.length)
end

-- The head's numbers, each with the range that it stands in.
local function read_head(tvb, offset)
    local head = {}
    for i, name in ipairs { "type", "result", "length" } do
        local range = tvb(offset + INTEGER_LENGTH * (i - 1), INTEGER_LENGTH)
        head[i] = { name = name, range = range, value = range:le_int() }
    end
    return head
end

-- Three numbers of 4, 4 and 8 characters, a separator behind each; nil where it is none.
local function read_text_head(tvb, offset)
    local fields = { tvb(offset, TEXT_HEAD_LENGTH):raw():match("^( *-?%d+)|( *-?%d+)|( *-?%d+)|$") }
    if #fields < 3 or #fields[1] ~= 4 or #fields[2] ~= 4 then
        return nil
    end
    local head = {}
    for i, name in ipairs { "type", "result", "length" } do
        head[i] = { name = name, range = tvb(offset + 5 * (i - 1), #fields[i]), value = tonumber(fields[i]) }
    end
    return head
end

-- Adds the message at the offset. Returns its end, or nil where it has none that could be told.
local function add_message(channel, tvb, offset, pinfo, root, head, is_asking, connection)
    local message = { is_request = is_asking, has_text_head = channel.proto == tavisys_text }
    local body_limit = MESSAGE_LIMIT - channel.head_length
    message.limit = is_asking and not message.has_text_head and REQUEST_LIMIT or body_limit
    for _, number in ipairs(head) do
        message[number.name] = number.value
    end
    local is_bad = message.length < 0 or message.length > message.limit
    local start = offset + channel.head_length
    local stop = is_bad and start or math.min(start + message.length, tvb:len())
    local line = summary_of(message)
    local tree = root:add(channel.proto, tvb(offset, stop - offset), "Movie cabinet, " .. line)
    local items = {}
    for _, number in ipairs(head) do
        items[number.name] = tree:add(HEAD[number.name], number.range, number.value)
    end
    add_pairing(tree, message, history_of(connection, pinfo, tvb:offset() + offset, message))
    add_head_marks(items, message)
    if not is_bad then
        add_body({ tvb = tvb, offset = start, stop = stop }, tree, message)
    end
    pinfo.cols.protocol = channel.name
    if offset == 0 then
        pinfo.cols.info:set(line)
    else
        pinfo.cols.info:append("; " .. line)
    end
    return not is_bad and stop or nil
end

---- The stream of messages

-- How many bytes the message at the offset lacks, 0 for none, where waiting for them makes sense.
local function missing_bytes(channel, tvb, offset, head, is_asking)
    local left = tvb:len() - offset
    if left < channel.head_length then
        return channel.head_length - left
    end
    local length = head and head[3].value or -1
    local is_bad = length < 0 or length > MESSAGE_LIMIT - channel.head_length or
        (is_asking and channel.proto == tavisys and length > REQUEST_LIMIT)
    return is_bad and 0 or math.max(channel.head_length + length - left, 0)
end

local function add_lost_bytes(channel, tvb, offset, root)
    local item = root:add(channel.proto, tvb(offset), "Movie cabinet, bytes out of step")
    item:add(HEAD.data, tvb(offset))
    note(item, MARK.out_of_step, "the message before has no end that could be told")
end

local function dissect(channel, tvb, pinfo, root)
    local connection = connection_of(pinfo)
    local side = side_of(connection, pinfo)
    local is_asking = is_request(connection, pinfo)
    local can_wait = pinfo.can_desegment > 0 and tvb:len() == tvb:reported_len()
    local offset = 0
    stop_waiting(side, pinfo)
    while offset < tvb:len() do
        if is_lost(side, pinfo, tvb:offset() + offset) then
            add_lost_bytes(channel, tvb, offset, root)
            return tvb:len()
        end
        local head = tvb:len() - offset >= channel.head_length and channel.read_head(tvb, offset) or nil
        local missing = missing_bytes(channel, tvb, offset, head, is_asking)
        if missing > 0 and can_wait then
            start_waiting(side, pinfo)
            pinfo.desegment_offset = offset
            pinfo.desegment_len = missing
            return tvb:len()
        end
        if head == nil then
            local item = root:add(channel.proto, tvb(offset), "Movie cabinet, no head")
            note(item, MARK.bad_head, "there should be a head of %d bytes", channel.head_length)
            lose(side, pinfo)
            return tvb:len()
        end
        local stop = add_message(channel, tvb, offset, pinfo, root, head, is_asking, connection)
        if stop == nil then
            lose(side, pinfo)
        end
        offset = stop or offset + channel.head_length
    end
    return offset
end

local BINARY_CHANNEL = { proto = tavisys, name = "TAVISYS", head_length = HEAD_LENGTH, read_head = read_head }
local TEXT_CHANNEL = {
    proto = tavisys_text, name = "TAVISYS-TEXT", head_length = TEXT_HEAD_LENGTH, read_head = read_text_head,
}

function tavisys.dissector(tvb, pinfo, root)
    return dissect(BINARY_CHANNEL, tvb, pinfo, root)
end

function tavisys_text.dissector(tvb, pinfo, root)
    return dissect(TEXT_CHANNEL, tvb, pinfo, root)
end

-- Text heads stand on ports of their programs' choice: they are recognised by their form.
tavisys_text:register_heuristic("tcp", function(tvb, pinfo, root)
    if tvb:len() < TEXT_HEAD_LENGTH or read_text_head(tvb, 0) == nil then
        return false
    end
    pinfo.conversation = tavisys_text
    tavisys_text.dissector(tvb, pinfo, root)
    return true
end)

DissectorTable.get("tcp.port"):add(PORT, tavisys)
DissectorTable.get("tcp.port"):add_for_decode_as(tavisys_text)

---- The end of a connection, which may come before that of a message. No dissector sees it but one behind all others.

local tavisys_end = Proto("tavisys_end", "Movie cabinet message that was cut short")

local fin_field = Field.new("tcp.flags.fin")
local reset_field = Field.new("tcp.flags.reset")

function tavisys_end.dissector(tvb, pinfo, root)
    local fin, reset = fin_field(), reset_field()
    local connection = connections[key_of_connection(pinfo)]
    if connection == nil or fin == nil or not (fin.value or reset.value) then
        return
    end
    for _, side in pairs(connection.sides) do
        if (reset.value or side == side_of(connection, pinfo)) and is_waiting(side, pinfo.number) then
            local item = root:add(tavisys_end, tvb(0, 0), "Movie cabinet, message cut short")
            note(item, MARK.cut_short, "the connection ends within a message")
        end
    end
end
register_postdissector(tavisys_end)

function tavisys.init()
    connections = {}
end
