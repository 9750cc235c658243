/** @file support_xml.h
 *  Access to an XML document by tag names. Documents are data that anyone may have written: nothing is
 *  fetched, no DTD is read, and a document that declares an entity is refused, as is one that is nested more
 *  deeply or has a larger text than libxml2 takes by itself.
 *
 *  Documents may be parsed, and a document and its nodes read, by any number of threads at once. Nothing is
 *  said about a document that is refused, but that libxml2 itself may tell on standard error of a thread for
 *  which it finds no memory. */
#ifndef TAVISYS_SUPPORT_XML_H
#define TAVISYS_SUPPORT_XML_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

struct _xmlDoc;
struct _xmlNode;

/** Parse a document.
 *  @param string [in] the document's text, NUL-terminated.
 *  @return the document, which the caller frees with free_doc_object(), or NULL: NULL argument, not
 *          well-formed or refused, more than 2147483647 bytes, memory short. */
TAVISYS_API struct _xmlDoc *get_doc_object_from_string(const INT8_T *string);

/** Parse a document of a known length, which may thus be in an encoding whose text holds NULs.
 *  @param document [in] the document's bytes, in any encoding that its declaration or byte order mark
 *                       names.
 *  @param length   [in] bytes in the document.
 *  @return as get_doc_object_from_string(); NULL also for a length below 1. */
TAVISYS_API struct _xmlDoc *get_doc_object_from_memory(const void *document, INT32_T length);

/** @return the root element, which belongs to the document, or NULL: NULL argument, no root. */
TAVISYS_API struct _xmlNode *get_root_object_from_doc_object(struct _xmlDoc *doc);

/** Free a document with its tree; NULL is ignored. */
TAVISYS_API void free_doc_object(struct _xmlDoc *doc);

/** Find a child element.
 *  @param parent  [in] the element whose direct children are looked at.
 *  @param tagname [in] name of the child.
 *  @param index   [in] which of the children of that name, from 0. The search begins with the first child: to
 *                      read n children by their index costs n squared, see
 *                      get_next_object_of_same_tagname().
 *  @return the child, which belongs to the document, or NULL: NULL argument, no such child. */
TAVISYS_API struct _xmlNode *get_object_from_next_layer_xml_object_by_tagname(struct _xmlNode *parent,
                                                                              const INT8_T *tagname,
                                                                              INT32_T index);

/** @return number of direct child elements of that name; 0 for a NULL argument. */
TAVISYS_API INT32_T get_objects_number_from_next_layer_xml_object_by_tagname(struct _xmlNode *parent,
                                                                             const INT8_T *tagname);

/** Find the next sibling element of the same name, so that a list of any length is read in one walk.
 *  @return the sibling, which belongs to the document, or NULL: NULL argument, none left. */
TAVISYS_API struct _xmlNode *get_next_object_of_same_tagname(struct _xmlNode *object);

/** Copy the text of a child element.
 *  @param parent  [in]  the element whose direct children are looked at.
 *  @param tagname [in]  name of the child.
 *  @param index   [in]  which of the children of that name, from 0.
 *  @param buffer  [out] receives the text (character data and CDATA sections that stand directly in the
 *                       child), NUL-terminated, cut at a whole UTF-8 character when it doesn't fit.
 *  @param size    [in]  bytes in the buffer, at least 1.
 *  @return 0, or -1 with the buffer untouched: NULL argument, no room, no such child. */
TAVISYS_API RTSTATUS get_value_from_next_layer_object_by_tagname_and_index(struct _xmlNode *parent,
                                                                           const INT8_T *tagname,
                                                                           INT32_T index, INT8_T *buffer,
                                                                           INT32_T size);

#ifdef __cplusplus
}
#endif

#endif
