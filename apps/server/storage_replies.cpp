// The replies about disks and partitions, and the whole records of their movies for other servers.
#include <algorithm>
#include <cstring>
#include <memory>
#include <unordered_set>

#include "codec_harddisk_information.h"
#include "question.h"
#include "support_codec.h"
#include "transfer_records.h"

namespace server {

namespace {

using POSITION_REQUEST_T = TP_TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIES_ARGS_T;
using CODES_REQUEST_T = TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T;

// A disk with its partitions, on loan from the catalogue.
struct DISK_RECORD_T {
    std::vector<TP_TAVISYS_PARTITION_INFORMATION_T> partitions;
    std::vector<TP_TAVISYS_PARTITION_INFORMATION_LIST_T> nodes;
    TP_TAVISYS_HARDDISK_INFORMATION_T disk;

    explicit DISK_RECORD_T(const DBDATA_HARDDISK_INFORMATION_LIST_T &from)
        : disk{from.info->devname, from.info->serialno} {
        for (const auto *node = from.list; node != nullptr; node = next_of(node))
            partitions.push_back(
                {node->info->seqno, node->info->devname, node->info->uuid, node->info->mntp});
        for (TP_TAVISYS_PARTITION_INFORMATION_T &partition : partitions)
            nodes.push_back({nullptr, &partition});
    }
};

// A disk without partitions can't be told: it is left out.
RTSTATUS reply_disk_records(std::vector<DISK_RECORD_T> *disks, const REPLY_T &reply) {
    std::vector<TP_TAVISYS_HARDDISK_INFORMATION_LIST_T> nodes;
    for (DISK_RECORD_T &disk : *disks)
        if (!disk.nodes.empty())
            nodes.push_back({nullptr, &disk.disk, chain(&disk.nodes)});
    if (nodes.empty())
        return reply_empty_list(reply);
    return encoded(
        encode_tavisys_harddisk_information_list_to_message(chain(&nodes), reply.body, reply.length));
}

// A name field of a request, which need not have a terminator.
template <size_t SIZE>
std::string name_of(const INT8_T (&field)[SIZE]) {
    return {field, strnlen(field, SIZE)};
}

const DBDATA_PARTITION_INFORMATION_LIST_T *partition_of(const CATALOGUE_T &catalogue,
                                                        const REQUEST_T &request) {
    const auto args = request.as<POSITION_REQUEST_T>();
    return catalogue.storage().partition(name_of(args.hddevname).c_str(), name_of(args.ptdevname).c_str());
}

struct DELETE_REQUEST_T {
    void operator()(CODES_REQUEST_T *request) const {
        delete_tp_tavisys_movieinfo_request_information(&request);
    }
};

// Whether a request names the device; one that names none means any.
bool names(const INT8_T *wanted, const INT8_T *device) {
    return wanted == nullptr || *wanted == '\0' || strcmp(wanted, device) == 0;
}

} // namespace

RTSTATUS reply_disks(const REQUEST_T &request, const REPLY_T &reply) {
    const SNAPSHOT_PTR catalogue = request.store.snapshot();
    std::vector<DISK_RECORD_T> disks;
    for (const auto *node = catalogue->storage().disks(); node != nullptr; node = next_of(node))
        disks.emplace_back(*node);
    return reply_disk_records(&disks, reply);
}

RTSTATUS reply_partitions(const REQUEST_T &request, const REPLY_T &reply) {
    const SNAPSHOT_PTR catalogue = request.store.snapshot();
    const std::string name = name_of(request.as<POSITION_REQUEST_T>().hddevname);
    const auto *disk = catalogue->storage().disk(name.c_str());
    if (disk == nullptr)
        return TAVISYS_RESULT_NO_SUCH_POSITION;
    std::vector<DISK_RECORD_T> disks;
    disks.emplace_back(*disk);
    return reply_disk_records(&disks, reply);
}

// As many as reply_partition_movies() sends.
RTSTATUS reply_movie_count(const REQUEST_T &request, const REPLY_T &reply) {
    const SNAPSHOT_PTR catalogue = request.store.snapshot();
    const auto *partition = partition_of(*catalogue, request);
    if (partition == nullptr)
        return TAVISYS_RESULT_NO_SUCH_POSITION;
    INT8_T count[sizeof(INT32_T)];
    encode_int_data_to_buffer(static_cast<INT32_T>(partition->movstat.parseok_movies), count, sizeof count);
    return reply_bytes(count, sizeof count, reply);
}

RTSTATUS reply_partition_movies(const REQUEST_T &request, const REPLY_T &reply) {
    const SNAPSHOT_PTR catalogue = request.store.snapshot();
    const auto *partition = partition_of(*catalogue, request);
    if (partition == nullptr)
        return TAVISYS_RESULT_NO_SUCH_POSITION;
    TRANSFER_BODY_T movies(partition->movstat.parseok_movies);
    for (const auto *node = partition->list; node != nullptr; node = next_of(node))
        movies.append(*node->info);
    *reply.body = movies.release(reply.length);
    return 0;
}

// In the order of the codes, each movie once: a reply is never longer than the whole catalogue, however
// often a request repeats itself.
RTSTATUS reply_movies_by_code(const REQUEST_T &request, const REPLY_T &reply) {
    CODES_REQUEST_T *decoded = nullptr;
    const INT32_T read =
        decode_movinfo_request_information_from_buffer(request.body, request.length, &decoded);
    const std::unique_ptr<CODES_REQUEST_T, DELETE_REQUEST_T> args(decoded);
    if (read != request.length || args == nullptr)
        return TAVISYS_RESULT_BAD_REQUEST;

    const SNAPSHOT_PTR catalogue = request.store.snapshot();
    TRANSFER_BODY_T movies(1);
    std::unordered_set<POSITION_T> sent;
    for (const auto *code = args->list; code != nullptr; code = next_of(code)) {
        if (code->info == nullptr || code->info->movcode == nullptr)
            continue;
        for (const POSITION_T position : catalogue->movies_of(code->info->movcode)) {
            const DBDATA_MOVIE_INFORMATION_T &movie = *catalogue->movies()[position]->record;
            if (names(args->hddevname, movie.hddevname) && names(args->ptdevname, movie.ptdevname) &&
                sent.insert(position).second)
                movies.append(movie);
        }
    }
    *reply.body = movies.release(reply.length);
    return 0;
}

} // namespace server
