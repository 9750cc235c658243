#include "support_xml.h"

#include <climits>
#include <cstring>

#include "support/xml_library.h"

using namespace tavisys;

namespace {

// A context of its own for every document: a shared one would share its dictionary of names, too, which
// grows with every strange name and must not be used by the threads that hold the documents.
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

// Copies the element's own text, without that of its children, until the buffer is full.
void copy_text(const xmlNode *element, INT8_T *buffer, size_t size) {
    size_t used = 0;
    for (const xmlNode *node = element->children; node != nullptr; node = node->next) {
        if ((node->type != XML_TEXT_NODE && node->type != XML_CDATA_SECTION_NODE) || node->content == nullptr)
            continue;
        const auto *text = reinterpret_cast<const INT8_T *>(node->content);
        const size_t count = fitting_length({text, strnlen(text, size - used)}, size - 1 - used);
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
    if (!start_library())
        return nullptr;
    const LISTENER_T listener;
    const OWNED_CONTEXT_T context = create_parser();
    if (context == nullptr)
        return nullptr;
    OWNED_DOC_T doc{xmlCtxtReadMemory(context.get(), static_cast<const char *>(document), length, nullptr,
                                      nullptr, PARSE_OPTIONS)};
    return stopped(*context) || listener.is_memory_short() ? nullptr : doc.release();
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
    if (buffer == nullptr || size < 1)
        return -1;
    const xmlNode *element = get_object_from_next_layer_xml_object_by_tagname(parent, tagname, index);
    if (element == nullptr)
        return -1;
    copy_text(element, buffer, static_cast<size_t>(size));
    return 0;
}
