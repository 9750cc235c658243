#include "support/xml_reader.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <libxml/parserInternals.h>
#include <memory_resource>
#include <new>
#include <utility>

#include "support/xml_library.h"

using namespace tavisys;

// A document with its parser, whose dictionary holds the names of the elements.
struct XML_DOCUMENT_T {
    OWNED_CONTEXT_T context;
    XML_ELEMENT_T top{}; // above the root
    XML_ELEMENT_T *current = &top;
    bool is_memory_short = false;
    bool is_ordinary = false; // its parser may be used again
    std::array<std::byte, size_t{32} * 1024> room;
    std::pmr::monotonic_buffer_resource memory{room.data(), room.size()};
};

namespace {

// What a parser may remember: the names of ordinary documents are few. What a document that is out of the
// ordinary makes of its parser doesn't stay.
constexpr unsigned long MOST_NAMES_KEPT = 64 * 1024; // bytes
constexpr INT32_T LARGEST_ORDINARY = 64 * 1024;

using OWNED_DOCUMENT_T = std::unique_ptr<XML_DOCUMENT_T>;

XML_DOCUMENT_T &document_of(void *parser) {
    return *static_cast<XML_DOCUMENT_T *>(static_cast<xmlParserCtxt *>(parser)->_private);
}

// Runs inside libxml2, which exceptions must not pass.
template <class RECORD>
RECORD *keep(void *parser, size_t more = 0) {
    try {
        return new (document_of(parser).memory.allocate(sizeof(RECORD) + more, alignof(RECORD))) RECORD{};
    } catch (const std::bad_alloc &) {
        document_of(parser).is_memory_short = true;
        xmlStopParser(static_cast<xmlParserCtxt *>(parser));
        return nullptr;
    }
}

void start_element(void *parser, const xmlChar *name, const xmlChar *, const xmlChar *, int, const xmlChar **,
                   int, int, const xmlChar **) {
    auto *element = keep<XML_ELEMENT_T>(parser);
    if (element == nullptr)
        return;
    XML_ELEMENT_T *&current = document_of(parser).current;
    element->name = reinterpret_cast<const INT8_T *>(name);
    element->parent = current;
    (current->children == nullptr ? current->children : current->last_child->next) = element;
    current->last_child = element;
    current = element;
}

void end_element(void *parser, const xmlChar *, const xmlChar *, const xmlChar *) {
    XML_ELEMENT_T *&current = document_of(parser).current;
    current = current->parent;
}

void add_text(void *parser, const xmlChar *bytes, int length) {
    const auto count = static_cast<size_t>(length);
    XML_ELEMENT_T &current = *document_of(parser).current;
    current.text_length += count;
    if (current.text_length > XML_MAX_TEXT_LENGTH) { // libxml2 leaves this one to whoever keeps the text
        xmlStopParser(static_cast<xmlParserCtxt *>(parser));
        return;
    }
    auto *text = keep<XML_TEXT_T>(parser, count);
    if (text == nullptr)
        return;
    auto *copy = reinterpret_cast<INT8_T *>(text + 1);
    memcpy(copy, bytes, count);
    text->bytes = {copy, count};
    (current.text == nullptr ? current.text : current.last_text->next) = text;
    current.last_text = text;
}

OWNED_DOCUMENT_T create_document() {
    OWNED_DOCUMENT_T document{new (std::nothrow) XML_DOCUMENT_T};
    if (document == nullptr)
        return nullptr;
    document->context.reset(xmlNewParserCtxt());
    if (document->context == nullptr)
        return nullptr;
    document->context->_private = document.get();
    xmlSAXHandler &told = *document->context->sax;
    told = {}; // the others make the tree
    told.initialized = XML_SAX2_MAGIC;
    told.startElementNs = start_element;
    told.endElementNs = end_element;
    told.characters = add_text;
    told.ignorableWhitespace = add_text;
    told.cdataBlock = add_text;
    told.entityDecl = refuse_entity;
    told.unparsedEntityDecl = refuse_unparsed_entity;
    return document;
}

// The documents that wait for another text. None is anybody's own: what a thread leaves to be freed at its
// end needs memory to be said, and glibc ends the process for want of it.
class IDLE_DOCUMENTS_T {
public:
    IDLE_DOCUMENTS_T() = default;
    IDLE_DOCUMENTS_T(const IDLE_DOCUMENTS_T &) = delete;
    IDLE_DOCUMENTS_T &operator=(const IDLE_DOCUMENTS_T &) = delete;
    ~IDLE_DOCUMENTS_T() {
        while (take() != nullptr) {
        }
    }
    OWNED_DOCUMENT_T take() {
        for (auto &slot : slots_)
            if (XML_DOCUMENT_T *document = slot.exchange(nullptr); document != nullptr)
                return OWNED_DOCUMENT_T{document};
        return nullptr;
    }
    // One too many is freed.
    void put(OWNED_DOCUMENT_T document) {
        for (auto &slot : slots_) {
            document.reset(slot.exchange(document.release()));
            if (document == nullptr)
                return;
        }
    }

private:
    std::array<std::atomic<XML_DOCUMENT_T *>, 8> slots_{};
};
IDLE_DOCUMENTS_T s_idle;

// Not when it failed, maybe for want of memory.
bool may_be_used_again(const XML_DOCUMENT_T &document, INT32_T length) {
    return length <= LARGEST_ORDINARY && xmlDictGetUsage(document.context->dict) <= MOST_NAMES_KEPT;
}

} // namespace

XML_DOCUMENT_T *read_xml_document(const void *document, INT32_T length) {
    if (document == nullptr || length < 1 || !start_library())
        return nullptr;
    const LISTENER_T listener;
    OWNED_DOCUMENT_T read = s_idle.take();
    if (read == nullptr)
        read = create_document();
    if (read == nullptr)
        return nullptr;
    xmlParserCtxt &context = *read->context;
    // There is no tree, unless a declaration that is refused has begun one.
    const OWNED_DOC_T tree{xmlCtxtReadMemory(&context, static_cast<const char *>(document), length, nullptr,
                                             nullptr, PARSE_OPTIONS)};
    if (context.wellFormed == 0 || stopped(context) || listener.is_memory_short() || read->is_memory_short)
        return nullptr;
    read->is_ordinary = may_be_used_again(*read, length);
    return read.release();
}

void free_xml_document(XML_DOCUMENT_T *document) {
    OWNED_DOCUMENT_T owned{document};
    if (owned == nullptr || !owned->is_ordinary)
        return;
    owned->memory.release();
    owned->top = {};
    owned->current = &owned->top;
    s_idle.put(std::move(owned));
}

const XML_ELEMENT_T *get_root_of_xml_document(const XML_DOCUMENT_T *document) {
    return document->top.children;
}

RTSTATUS get_value_of_xml_element(const XML_ELEMENT_T *element, INT8_T *buffer, INT32_T size) {
    if (element == nullptr || buffer == nullptr || size < 1)
        return -1;
    size_t room = static_cast<size_t>(size) - 1;
    for (const XML_TEXT_T *text = element->text; text != nullptr; text = text->next) {
        const size_t count = fitting_length(text->bytes, room);
        memcpy(buffer, text->bytes.data(), count);
        buffer += count;
        room -= count;
        if (count < text->bytes.size())
            break;
    }
    *buffer = '\0';
    return 0;
}
