#include "support_xml.h"

#include <array>
#include <atomic>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <libxml/SAX2.h>
#include <libxml/dict.h>
#include <libxml/globals.h>
#include <libxml/parser.h>
#include <libxml/threads.h>
#include <memory>
#include <mutex>
#include <utility>

#include "support/xml_once.h"

namespace {

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

void refuse_entity(void *parser, const xmlChar *, int, const xmlChar *, const xmlChar *, xmlChar *) {
    xmlStopParser(static_cast<xmlParserCtxt *>(parser));
}

void refuse_unparsed_entity(void *parser, const xmlChar *, const xmlChar *, const xmlChar *,
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
bool has_thread_state() {
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

// Before anything else of libxml2, whose own start is not safe for threads. A start that was short of memory
// is undone, for another attempt: libxml2 would take it for done and lack encodings from then on.
bool start_library() {
    static std::mutex s_mutex;
    static bool s_is_started = false;
    const std::lock_guard<std::mutex> lock(s_mutex);
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
bool stopped(const xmlParserCtxt &context) {
    return context.errNo == XML_ERR_USER_STOP || context.errNo == XML_ERR_NO_MEMORY;
}

// A document that is handed out has a context of its own: a shared one would share its dictionary of names,
// too, which must not be used by the threads that hold the documents.
OWNED_CONTEXT_T create_parser() {
    OWNED_CONTEXT_T context{xmlNewParserCtxt()};
    if (context != nullptr) {
        context->sax->entityDecl = refuse_entity;
        context->sax->unparsedEntityDecl = refuse_unparsed_entity;
    }
    return context;
}

bool has_name(const xmlNode *node, const INT8_T *tagname) {
    return node->type == XML_ELEMENT_NODE && strcmp(reinterpret_cast<const char *>(node->name), tagname) == 0;
}

// The node itself or its next sibling of that name.
xmlNode *first_of_name(xmlNode *node, const INT8_T *tagname) {
    while (node != nullptr && !has_name(node, tagname))
        node = node->next;
    return node;
}

// What has been parsed, if nothing of it is missing.
OWNED_DOC_T parse(xmlParserCtxt *context, const void *document, INT32_T length, const LISTENER_T &listener) {
    if (context == nullptr)
        return nullptr;
    OWNED_DOC_T doc{xmlCtxtReadMemory(context, static_cast<const char *>(document), length, nullptr, nullptr,
                                      PARSE_OPTIONS)};
    if (stopped(*context) || listener.is_memory_short())
        doc.reset();
    return doc;
}

// The context's own data are the names of the containers.
bool is_in_container(const xmlParserCtxt &context) {
    if (context.nodeNr < 2)
        return true;
    const auto *name = static_cast<const INT8_T *const *>(context._private);
    while (*name != nullptr && !has_name(context.node, *name))
        name++;
    return *name != nullptr;
}

bool is_blank(const xmlChar *text, int length) {
    int at = 0;
    while (at < length && (text[at] == ' ' || (text[at] >= '\t' && text[at] <= '\r')))
        at++;
    return at == length;
}

// A container has no other text but blanks, if it is as it should be: a text that isn't blank is kept without
// asking whose it is.
void keep_text_of_values(void *parser, const xmlChar *text, int length) {
    if (!is_blank(text, length) || !is_in_container(*static_cast<xmlParserCtxt *>(parser)))
        xmlSAX2Characters(parser, text, length);
}

OWNED_CONTEXT_T create_parser_of_values() {
    OWNED_CONTEXT_T context = create_parser();
    if (context != nullptr) {
        context->sax->characters = keep_text_of_values;
        context->sax->ignorableWhitespace = keep_text_of_values;
    }
    return context;
}

// The parsers that wait for another document. None is anybody's own: what a thread leaves to be freed at its
// end needs memory to be said, and glibc ends the process for want of it.
class IDLE_PARSERS_T {
public:
    IDLE_PARSERS_T() = default;
    IDLE_PARSERS_T(const IDLE_PARSERS_T &) = delete;
    IDLE_PARSERS_T &operator=(const IDLE_PARSERS_T &) = delete;
    ~IDLE_PARSERS_T() {
        for (SLOT_T &slot : slots_)
            const OWNED_CONTEXT_T freed{slot.exchange(nullptr)};
    }
    OWNED_CONTEXT_T take() {
        for (SLOT_T &slot : slots_)
            if (xmlParserCtxt *context = slot.exchange(nullptr); context != nullptr)
                return OWNED_CONTEXT_T{context};
        return nullptr;
    }
    // One too many is freed.
    void put(OWNED_CONTEXT_T context) {
        for (SLOT_T &slot : slots_) {
            context.reset(slot.exchange(context.release()));
            if (context == nullptr)
                return;
        }
    }

private:
    using SLOT_T = std::atomic<xmlParserCtxt *>;
    std::array<SLOT_T, 8> slots_{};
};
IDLE_PARSERS_T s_idle_parsers;

// What a parser may remember: the names of ordinary documents are few. What a document that is out of the
// ordinary makes of its parser doesn't stay.
constexpr size_t MOST_NAMES_KEPT = 64 * 1024; // bytes
constexpr INT32_T LARGEST_ORDINARY = 64 * 1024;

constexpr bool continues_character(INT8_T byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Bytes of the text that fit into the room, whole UTF-8 characters only.
size_t fitting_length(const INT8_T *text, size_t room) {
    const size_t length = strnlen(text, room + 1);
    if (length <= room)
        return length;
    size_t cut = room;
    while (cut > 0 && continues_character(text[cut]))
        cut--;
    return cut;
}

// Copies the element's own text, without that of its children, until the buffer is full.
void copy_text(const xmlNode *element, INT8_T *buffer, size_t size) {
    size_t used = 0;
    for (const xmlNode *node = element->children; node != nullptr; node = node->next) {
        if ((node->type != XML_TEXT_NODE && node->type != XML_CDATA_SECTION_NODE) || node->content == nullptr)
            continue;
        const auto *text = reinterpret_cast<const INT8_T *>(node->content);
        const size_t count = fitting_length(text, size - 1 - used);
        memcpy(buffer + used, text, count);
        used += count;
        if (text[count] != '\0')
            break;
    }
    buffer[used] = '\0';
}

} // namespace

xmlDoc *get_doc_object_from_string(const INT8_T *string) {
    if (string == nullptr)
        return nullptr;
    const size_t length = strlen(string);
    return length > INT_MAX ? nullptr : get_doc_object_from_memory(string, static_cast<INT32_T>(length));
}

xmlDoc *get_doc_object_from_memory(const void *document, INT32_T length) {
    if (document == nullptr || length < 1)
        return nullptr;
    if (!has_thread_state() || !start_library())
        return nullptr;
    const LISTENER_T listener;
    return parse(create_parser().get(), document, length, listener).release();
}

xmlDoc *get_doc_object_to_read_once(const void *document, INT32_T length, const INT8_T *const *containers) {
    if (document == nullptr || length < 1 || !has_thread_state() || !start_library())
        return nullptr;
    const LISTENER_T listener;
    OWNED_CONTEXT_T context = length <= LARGEST_ORDINARY ? s_idle_parsers.take() : nullptr;
    if (context == nullptr)
        context = create_parser_of_values();
    if (context == nullptr)
        return nullptr;
    context->_private = const_cast<const INT8_T **>(containers);
    OWNED_DOC_T doc = parse(context.get(), document, length, listener);
    // The document shares the parser's dictionary, which one thread at a time may use.
    if (doc != nullptr && length <= LARGEST_ORDINARY && xmlDictGetUsage(context->dict) <= MOST_NAMES_KEPT)
        doc->_private = context.release();
    return doc.release();
}

void free_doc_object_read_once(xmlDoc *doc) {
    if (doc == nullptr)
        return;
    OWNED_CONTEXT_T context{static_cast<xmlParserCtxt *>(doc->_private)};
    xmlFreeDoc(doc);
    if (context != nullptr)
        s_idle_parsers.put(std::move(context));
}

xmlNode *get_root_object_from_doc_object(xmlDoc *doc) {
    return xmlDocGetRootElement(doc);
}

void free_doc_object(xmlDoc *doc) {
    xmlFreeDoc(doc);
}

xmlNode *get_object_from_next_layer_xml_object_by_tagname(xmlNode *parent, const INT8_T *tagname,
                                                          INT32_T index) {
    if (parent == nullptr || tagname == nullptr || index < 0)
        return nullptr;
    xmlNode *node = first_of_name(parent->children, tagname);
    for (INT32_T i = 0; i < index && node != nullptr; i++)
        node = first_of_name(node->next, tagname);
    return node;
}

INT32_T get_objects_number_from_next_layer_xml_object_by_tagname(xmlNode *parent, const INT8_T *tagname) {
    INT32_T count = 0;
    for (xmlNode *node = get_object_from_next_layer_xml_object_by_tagname(parent, tagname, 0);
         node != nullptr; node = get_next_object_of_same_tagname(node))
        count++;
    return count;
}

xmlNode *get_next_object_of_same_tagname(xmlNode *object) {
    if (object == nullptr || object->type != XML_ELEMENT_NODE)
        return nullptr;
    return first_of_name(object->next, reinterpret_cast<const INT8_T *>(object->name));
}

RTSTATUS get_value_from_next_layer_object_by_tagname_and_index(xmlNode *parent, const INT8_T *tagname,
                                                               INT32_T index, INT8_T *buffer, INT32_T size) {
    return get_value_of_object(get_object_from_next_layer_xml_object_by_tagname(parent, tagname, index),
                               buffer, size);
}

RTSTATUS get_value_of_object(const xmlNode *object, INT8_T *buffer, INT32_T size) {
    if (object == nullptr || buffer == nullptr || size < 1)
        return -1;
    copy_text(object, buffer, static_cast<size_t>(size));
    return 0;
}

// Children mostly come in the order of the names: the search for one begins behind the name of the one
// before.
void get_first_objects_from_next_layer_by_tagnames(xmlNode *parent, const INT8_T *const *names,
                                                   xmlNode **children) {
    size_t count = 0;
    for (; names[count] != nullptr; count++)
        children[count] = nullptr;
    size_t next = 0;
    for (xmlNode *child = parent == nullptr ? nullptr : parent->children; child != nullptr;
         child = child->next)
        for (size_t tried = 0; tried < count; tried++) {
            const size_t at = (next + tried) % count;
            if (!has_name(child, names[at]))
                continue;
            if (children[at] == nullptr)
                children[at] = child;
            next = at + 1;
            break;
        }
}
