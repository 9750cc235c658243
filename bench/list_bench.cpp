// What it costs to build a list of n nodes: with the exported append, which walks to the end each time; at
// the tail; and by decoding it from a message. The time for one node stays the same but for the first.
#include <benchmark/benchmark.h>
#include <cstdlib>

#include "tavisys.h"

namespace {

using LIST_T = TP_TAVISYS_CATEGORY_INFORMATION_LIST_T;

LIST_T *create_node(int number) {
    return create_tavisys_category_information_list_node_ex(number, "name", number);
}

void finish(benchmark::State &state) {
    state.counters["node_ns"] =
        benchmark::Counter(static_cast<double>(state.range(0)) * 1e-9,
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.SetComplexityN(state.range(0));
}

void append(benchmark::State &state) {
    for (auto _ : state) {
        LIST_T *list = nullptr;
        for (int i = 0; i < state.range(0); i++)
            add_node_to_tavisys_category_information_list(&list, create_node(i));
        delete_tavisys_category_information_list(&list);
    }
    finish(state);
}

LIST_T *build_at_tail(int64_t nodes) {
    LIST_T *list = create_node(0);
    LIST_T *last = list;
    for (int i = 1; i < nodes; i++) {
        LIST_T *node = create_node(i);
        last->next = node;
        last = node;
    }
    return list;
}

void at_tail(benchmark::State &state) {
    for (auto _ : state) {
        LIST_T *list = build_at_tail(state.range(0));
        delete_tavisys_category_information_list(&list);
    }
    finish(state);
}

void decode(benchmark::State &state) {
    LIST_T *list = build_at_tail(state.range(0));
    PVOID body = nullptr;
    INT32_T length = 0;
    if (encode_tavisys_category_information_list_to_message(list, &body, &length) < 0)
        abort();
    delete_tavisys_category_information_list(&list);
    for (auto _ : state) {
        decode_tavisys_category_information_list_from_message(body, length, &list);
        delete_tavisys_category_information_list(&list);
    }
    safe_free(body);
    finish(state);
}

BENCHMARK(append)->RangeMultiplier(2)->Range(1000, 16000)->Complexity(benchmark::oNSquared);
BENCHMARK(at_tail)->RangeMultiplier(2)->Range(1000, 16000)->Complexity(benchmark::oN);
BENCHMARK(decode)->RangeMultiplier(2)->Range(1000, 16000)->Complexity(benchmark::oN);

} // namespace

BENCHMARK_MAIN();
