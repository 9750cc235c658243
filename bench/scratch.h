// A library folder that the load generators may change, removed with its object.
#ifndef TAVISYS_BENCH_SCRATCH_H
#define TAVISYS_BENCH_SCRATCH_H

#include <filesystem>
#include <map>
#include <string>

namespace bench {

class SCRATCH_T {
public:
    SCRATCH_T();
    SCRATCH_T(const SCRATCH_T &) = delete;
    SCRATCH_T &operator=(const SCRATCH_T &) = delete;
    ~SCRATCH_T();

    const std::filesystem::path &path() const { return path_; }
    void copy_documents_of(const std::filesystem::path &library) const;
    // Writes so many movies whose texts are long: a page of 1000 is larger than a socket's buffers.
    void write_large_movies(int count) const;
    // The folder of the document that this path lies beside, relative to the library; empty for none.
    std::string folder_of(const std::string &path) const;
    // Puts a new file in the place of a document, which says the same in different bytes.
    void rewrite(const std::string &folder, size_t round);

private:
    std::filesystem::path path_;
    std::map<std::string, std::string> texts_; // of the documents that have been rewritten, by folder
};

} // namespace bench

#endif
