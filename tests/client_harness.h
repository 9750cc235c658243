// What the tests of the command-line client share: a cabinet inside the test, and the built client with what
// it writes.
#ifndef TAVISYS_TESTS_CLIENT_HARNESS_H
#define TAVISYS_TESTS_CLIENT_HARNESS_H

#include <sys/types.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tavisystype.h"

namespace harness {

using REQUEST_T = std::pair<INT32_T, std::string>; // type and body
using ANSWER_T = std::pair<RTSTATUS, std::string>; // result and body
using ANSWERER_T = std::function<ANSWER_T(const REQUEST_T &)>;

// Those of the last server, which are read when it has ended or while it waits.
extern std::vector<REQUEST_T> requests;

// Answers on port 40001 for as long as it lives.
class SERVER_T {
public:
    explicit SERVER_T(ANSWERER_T answers);
    ~SERVER_T();
    SERVER_T(const SERVER_T &) = delete;
    SERVER_T &operator=(const SERVER_T &) = delete;

private:
    INT32_T listener_;
    std::atomic<bool> stopping_ = false;
    std::thread thread_;
};

// A movie of a page, and a movie of a partition around its code.
extern const std::string FAREWELL, RECORD, RECORD_TAIL;

// A cabinet of two movies; its filter lists are the same for every category.
ANSWER_T answer(const REQUEST_T &request);
ANSWERER_T always(const ANSWER_T &fixed);

struct CLIENT_T {
    pid_t pid;
    int errors; // the reading end of its standard error
};

constexpr const char *PLAIN_ENVIRONMENT = "LC_ALL=C NO_COLOR=1";

// Starts the client with these arguments and that standard output, which it takes over.
CLIENT_T start(const std::string &arguments, int output, const std::string &environment = PLAIN_ENVIRONMENT);

struct RUN_T {
    int status; // exit status, or the negated signal that ended it
    std::string output, errors;
};
RUN_T finish(const CLIENT_T &client, int output);
RUN_T run(const std::string &arguments, const std::string &environment = PLAIN_ENVIRONMENT);

struct TERMINAL_T {
    int screen, client;
};
// What is written to its client's end is read, unchanged, from the screen.
TERMINAL_T open_terminal(unsigned short width);
RUN_T run_on_terminal(const std::string &arguments, unsigned short width,
                      const std::string &environment = PLAIN_ENVIRONMENT);
std::string read_to_end(int file); // and close
std::string read_until(int file, const std::string &end);

// An answer is looked at whole, a failure by what its message contains.
void expect_run(const std::string &arguments, int status, const std::string &want);

} // namespace harness

#endif
