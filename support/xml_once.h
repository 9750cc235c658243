// Documents that are read once and given up at once: parsed by parsers that are used again, with their
// dictionaries of names, and without the blanks that nobody is going to read.
#ifndef TAVISYS_SUPPORT_XML_ONCE_H
#define TAVISYS_SUPPORT_XML_ONCE_H

#include <cstddef>

#include "support_xml.h"

extern "C" {

// As get_doc_object_from_memory(), but one thread at a time uses the document, and
// free_doc_object_read_once() frees it. `containers` are the names of elements, NULL at the end, whose own
// text is left out, as is that of the root: mostly the blanks that indent their children, half of a
// document's nodes.
struct _xmlDoc *get_doc_object_to_read_once(const void *document, INT32_T length,
                                            const INT8_T *const *containers);
// Frees the document and leaves its parser to the next one.
void free_doc_object_read_once(struct _xmlDoc *doc);

// Finds the first child of each name in one walk over the children. `names`: NULL at the end; `children` has
// room for as many and receives NULL for a name that no child has. A NULL parent has no children.
void get_first_objects_from_next_layer_by_tagnames(struct _xmlNode *parent, const INT8_T *const *names,
                                                   struct _xmlNode **children);

// As get_value_from_next_layer_object_by_tagname_and_index() of an element that has been found.
RTSTATUS get_value_of_object(const struct _xmlNode *object, INT8_T *buffer, INT32_T size);
}

#endif
