// The language and the colors, which have to be known before the command line is read: what it says about
// itself is shown in them, too.
#ifndef TAVISYS_CLIENT_SETTINGS_H
#define TAVISYS_CLIENT_SETTINGS_H

namespace client {

// By --lang and --color, the locale, the environment and what standard output and standard error are. A value
// that is none of the option's is passed over here and told when the command line is read.
void apply_settings(int argc, const char *const *argv);

} // namespace client

#endif
