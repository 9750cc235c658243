// Singly linked lists of nodes {next, ...}: the one set of templates behind every list of the library.
// A list is held by the address of its head pointer; an empty list is a NULL head.
#ifndef TAVISYS_SUPPORT_LIST_H
#define TAVISYS_SUPPORT_LIST_H

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <type_traits>

#include "support/owner.h"
#include "tavisystype.h"

namespace tavisys {

template <class NODE>
NODE *next_of(const NODE *node) {
    return static_cast<NODE *>(node->next);
}

// Lets a list be walked with a range-based for: for (NODE *node : nodes_of(list)). The current node may
// be freed inside the loop.
template <class NODE>
class nodes_of {
public:
    explicit nodes_of(NODE *head) : head_(head) {}

    class iterator {
    public:
        explicit iterator(NODE *node) : node_(node), next_(node == nullptr ? nullptr : next_of(node)) {}
        NODE *operator*() const { return node_; }
        iterator &operator++() {
            *this = iterator(next_);
            return *this;
        }
        bool operator!=(const iterator &other) const { return node_ != other.node_; }

    private:
        NODE *node_;
        NODE *next_;
    };

    iterator begin() const { return iterator(head_); }
    iterator end() const { return iterator(nullptr); }

private:
    NODE *head_;
};
template <class NODE>
nodes_of(NODE *) -> nodes_of<NODE>;

// Builds a list at its tail without walking it, for whoever adds many nodes.
template <class NODE>
class TAIL_T {
public:
    void append(NODE *node) {
        if (head_ == nullptr)
            head_ = node;
        else
            tail_->next = node;
        tail_ = node;
    }
    NODE *head() const { return head_; }

private:
    NODE *head_ = nullptr;
    NODE *tail_ = nullptr;
};

// Walks the list to its end: appending n nodes one by one costs n squared.
template <class NODE>
void append_node(NODE **list, NODE *node) {
    if (list == nullptr || node == nullptr)
        return;
    if (*list == nullptr) {
        *list = node;
        return;
    }
    NODE *last = *list;
    while (last->next != nullptr)
        last = next_of(last);
    last->next = node;
}

template <class NODE, class MATCH>
NODE *find_node(const NODE *list, MATCH match) {
    for (const NODE *node = list; node != nullptr; node = next_of(node))
        if (match(node))
            return const_cast<NODE *>(node);
    return nullptr;
}

// Unlinks the first node that matches and hands it to the caller.
template <class NODE, class MATCH>
NODE *take_node(NODE **list, MATCH match) {
    if (list == nullptr)
        return nullptr;
    NODE *previous = nullptr;
    for (NODE *node = *list; node != nullptr; previous = node, node = next_of(node)) {
        if (!match(node))
            continue;
        if (previous == nullptr)
            *list = next_of(node);
        else
            previous->next = node->next;
        node->next = nullptr;
        return node;
    }
    return nullptr;
}

template <class NODE, class MATCH, class DELETE_NODE>
void delete_first_node(NODE **list, MATCH match, DELETE_NODE delete_node) {
    NODE *node = take_node(list, match);
    delete_node(&node);
}

// Deletes every node; the caller's head pointer stays as it is, as in every list family.
template <class NODE, class DELETE_NODE>
void delete_nodes(NODE **list, DELETE_NODE delete_node) {
    if (list == nullptr)
        return;
    for (NODE *node : nodes_of(*list))
        delete_node(&node);
}

// Says on standard output that memory is short, in the words that every node creator uses.
inline void print_allocation_failure(size_t size) {
    printf("分配%zu字节的内存出错,错误原因: %s\n", size, strerror(errno));
}

// A zeroed node, or NULL with a line.
template <class NODE>
NODE *allocate_node() {
    auto *node = allocate<NODE>();
    if (node == nullptr)
        print_allocation_failure(sizeof(NODE));
    return node;
}

// A zeroed node that holds the record, which stays the caller's when memory is short.
template <class NODE, class RECORD>
NODE *create_node(RECORD *info) {
    auto *node = allocate_node<NODE>();
    if (node != nullptr)
        node->info = info;
    return node;
}

} // namespace tavisys

#endif
