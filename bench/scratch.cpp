#include "scratch.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace bench {

namespace {

constexpr const char *DOCUMENT = "metadata.xml";

void write_file(const fs::path &path, const std::string &text) {
    std::ofstream(path, std::ios::binary) << text;
}

// Everything that a document has to have.
std::string document_of(const std::string &code, const std::string &name, int number) {
    const std::string poster = "posters/" + std::string(900, 'p') + ".jpg";
    const std::string year = std::to_string(1950 + number % 70);
    return "<metadata><movie><movie_code>" + code + "</movie_code><movie_name_ch>" + name +
           "</movie_name_ch><movie_name_en/></movie><imdb_value>" + std::to_string(number % 10) +
           "</imdb_value><index>BIAO</index><dimension_info><dimension_id>1</dimension_id><dimension_name>" +
           (number % 5 == 0 ? "3D" : "2D") + "</dimension_name></dimension_info><category>" +
           (number % 3 == 0 ? "电视剧" : "电影") + "</category><kinds><kind><kind_name>" +
           (number % 2 == 0 ? "剧情" : "科幻") + "</kind_name></kind></kinds><areas><area><area_name>" +
           (number % 4 == 0 ? "美国" : "中国") +
           "</area_name></area></areas><directors/><actors/><put_time>" + year +
           "-02-03</put_time><publish_time>" + year +
           "-01-01</publish_time><duration>90</duration><poster><poster_b>" + poster +
           "</poster_b><poster_m>" + poster + "</poster_m><poster_s>s.jpg</poster_s></poster>" +
           "<description>长文</description><episodes>1</episodes><videos><video><video_seqno>1</"
           "video_seqno>" +
           "<video_name>" + code.substr(0, 9) +
           "</video_name><video_filepath>1.mkv</video_filepath></video></videos></metadata>\n";
}

} // namespace

SCRATCH_T::SCRATCH_T() {
    std::string path = (fs::temp_directory_path() / "tavisys-load-XXXXXX").string();
    if (mkdtemp(path.data()) == nullptr) {
        perror(path.c_str());
        exit(2);
    }
    path_ = path;
}

SCRATCH_T::~SCRATCH_T() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

void SCRATCH_T::copy_documents_of(const fs::path &library) const {
    for (const auto &entry : fs::recursive_directory_iterator(library)) {
        if (entry.path().filename() != DOCUMENT || !entry.is_regular_file())
            continue;
        const fs::path to = path_ / entry.path().lexically_relative(library);
        fs::create_directories(to.parent_path());
        fs::copy_file(entry.path(), to); // a link would change the times of the original
    }
}

void SCRATCH_T::write_large_movies(int count) const {
    const std::string filler(900, 'x');
    for (int i = 0; i < count; i++) {
        const std::string code = "TV" + std::to_string(10000 + i);
        const fs::path folder = path_ / "sda" / (i % 2 == 0 ? "sda1" : "sda2") / code;
        fs::create_directories(folder);
        write_file(folder / DOCUMENT,
                   document_of(code + filler, std::to_string(i * 7919 % 1000) + filler, i));
    }
}

std::string SCRATCH_T::folder_of(const std::string &path) const {
    for (fs::path folder = fs::path(path).parent_path(); folder.has_relative_path() && folder.is_relative();
         folder = folder.parent_path())
        if (fs::exists(path_ / folder / DOCUMENT))
            return folder.string();
    return "";
}

void SCRATCH_T::rewrite(const std::string &folder, size_t round) {
    const fs::path document = path_ / folder / DOCUMENT;
    const auto [text, fresh] = texts_.try_emplace(folder);
    if (fresh) {
        std::ifstream file(document, std::ios::binary);
        text->second.assign(std::istreambuf_iterator<char>(file), {});
    }
    // Never into the file itself, of which a scan might see one half.
    const fs::path written = path_ / folder / "metadata.new";
    write_file(written, text->second + "<!-- " + std::to_string(round) + " -->\n");
    fs::rename(written, document);
}

} // namespace bench
