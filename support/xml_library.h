// What the sources that call libxml2 share: how it is started, what it may do, and what it says of a
// document.
#ifndef TAVISYS_SUPPORT_XML_LIBRARY_H
#define TAVISYS_SUPPORT_XML_LIBRARY_H

#include <cstdlib>
#include <libxml/globals.h>
#include <libxml/parser.h>
#include <libxml/threads.h>
#include <memory>
#include <mutex>
#include <string_view>

#include "tavisystype.h"

namespace tavisys {

// Nothing is fetched, no DTD is loaded and no entity replaced; libxml2's limits on depth and size stay on.
constexpr int PARSE_OPTIONS = XML_PARSE_NONET | XML_PARSE_COMPACT | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

struct FREE_CONTEXT_T {
    void operator()(xmlParserCtxt *context) const { xmlFreeParserCtxt(context); }
};
using OWNED_CONTEXT_T = std::unique_ptr<xmlParserCtxt, FREE_CONTEXT_T>;

struct FREE_DOC_T {
    void operator()(xmlDoc *doc) const { xmlFreeDoc(doc); }
};
using OWNED_DOC_T = std::unique_ptr<xmlDoc, FREE_DOC_T>;

inline void refuse_entity(void *parser, const xmlChar *, int, const xmlChar *, const xmlChar *, xmlChar *) {
    xmlStopParser(static_cast<xmlParserCtxt *>(parser));
}

inline void refuse_unparsed_entity(void *parser, const xmlChar *, const xmlChar *, const xmlChar *,
                                   const xmlChar *) {
    xmlStopParser(static_cast<xmlParserCtxt *>(parser));
}

// Listens to this thread's failures and keeps them to itself: those of an encoding or of the tree reach
// neither the context nor its options, but go to the handler of the thread, which is the host's own.
class LISTENER_T {
public:
    LISTENER_T() { xmlSetStructuredErrorFunc(this, hear); }
    ~LISTENER_T() {
        if (xmlLastError.code != XML_ERR_OK)
            xmlResetLastError();
        xmlSetStructuredErrorFunc(context_, handler_);
    }
    LISTENER_T(const LISTENER_T &) = delete;
    LISTENER_T &operator=(const LISTENER_T &) = delete;
    bool is_memory_short() const { return is_memory_short_; }

private:
    static void hear(void *self, xmlError *error) {
        if (error != nullptr && error->code == XML_ERR_NO_MEMORY)
            static_cast<LISTENER_T *>(self)->is_memory_short_ = true;
    }

    xmlStructuredErrorFunc handler_ = xmlStructuredError;
    void *context_ = xmlStructuredErrorContext;
    bool is_memory_short_ = false;
};

// libxml2 keeps a state for each thread but the first and goes on without it, into a crash, when memory is
// short: whoever finds no room for it must stay out. That there is room is seen first, in a block that
// malloc() gives back to all sizes, since without any libxml2 never comes back from saying so.
inline bool has_thread_state() {
#if LIBXML_VERSION < 21200
    if (xmlIsMainThread() != 0)
        return true;
    constexpr size_t ROOM = 4 * sizeof(xmlGlobalState);
    void *const volatile room = malloc(ROOM); // volatile: a compiler may leave out what nobody looks at
    free(room);
    return room != nullptr && xmlGetGlobalState() != nullptr;
#else
    return true;
#endif
}

// Before anything else of libxml2, whose own start is not safe for threads; nor is the making of a thread's
// state, which takes a mutex that the first to come makes. A start that was short of memory is undone, for
// another attempt: libxml2 would take it for done and lack encodings from then on.
inline bool start_library() {
    static std::mutex s_mutex;
    static bool s_is_started = false;
    const std::lock_guard<std::mutex> lock(s_mutex);
    if (!has_thread_state())
        return false;
    if (s_is_started)
        return true;
    const LISTENER_T listener;
    xmlInitParser();
    s_is_started = !listener.is_memory_short();
    if (!s_is_started)
        xmlCleanupParser();
    return s_is_started;
}

// A stopped parser hands out the tree as far as it came, as if the document ended there.
inline bool stopped(const xmlParserCtxt &context) {
    return context.errNo == XML_ERR_USER_STOP || context.errNo == XML_ERR_NO_MEMORY;
}

constexpr bool continues_character(INT8_T byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Bytes of the text that fit into the room, whole UTF-8 characters only.
inline size_t fitting_length(std::string_view text, size_t room) {
    if (text.size() <= room)
        return text.size();
    size_t cut = room;
    while (cut > 0 && continues_character(text[cut]))
        cut--;
    return cut;
}

} // namespace tavisys

#endif
