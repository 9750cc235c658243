// Completion: what may stand at a place of the command line, for the shells.
#ifndef TAVISYS_CLIENT_COMPLETE_H
#define TAVISYS_CLIENT_COMPLETE_H

namespace client {

// The word that asks for completion. It is no command: what follows it is a command line of its own.
constexpr const char *COMPLETION_WORD = "complete";

// `tavisys complete -- WORDS...` writes the candidates for the last word, which may be empty, a line each.
// Names are asked from the server. The line ":folders" or ":hosts" stands for those. Words are taken as bash
// splits them, with a "=" on its own, or whole. Silent when nothing can be had, and never longer than a
// second.
void complete(int argc, const char *const *argv);

} // namespace client

#endif
