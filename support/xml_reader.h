// Documents that are read once and given up at once: their elements and texts, without the tree of libxml2,
// which takes as long to make and to free as the text takes to parse. Parsers are used again.
#ifndef TAVISYS_SUPPORT_XML_READER_H
#define TAVISYS_SUPPORT_XML_READER_H

#include <cstddef>
#include <cstring>
#include <string_view>

#include "tavisystype.h"

// A text or a part of one, which comments, children and references divide.
struct XML_TEXT_T {
    std::string_view bytes;
    XML_TEXT_T *next;
};

struct XML_ELEMENT_T {
    const INT8_T *name; // without a prefix
    XML_ELEMENT_T *parent;
    XML_ELEMENT_T *next;
    XML_ELEMENT_T *children;
    XML_ELEMENT_T *last_child;
    XML_TEXT_T *text; // its own, without that of its children
    XML_TEXT_T *last_text;
    size_t text_length;
};

struct XML_DOCUMENT_T;

// The element itself or its next sibling of that name, or NULL.
inline const XML_ELEMENT_T *first_of_name(const XML_ELEMENT_T *element, const INT8_T *name) {
    while (element != nullptr && strcmp(element->name, name) != 0)
        element = element->next;
    return element;
}

extern "C" {

// Reads a document as get_doc_object_from_memory() does. NULL: not well-formed, refused, memory short. One
// thread at a time may use the document.
XML_DOCUMENT_T *read_xml_document(const void *document, INT32_T length);
void free_xml_document(XML_DOCUMENT_T *document);
const XML_ELEMENT_T *get_root_of_xml_document(const XML_DOCUMENT_T *document);

// Copies the element's text as get_value_from_next_layer_object_by_tagname_and_index() does.
RTSTATUS get_value_of_xml_element(const XML_ELEMENT_T *element, INT8_T *buffer, INT32_T size);
}

#endif
