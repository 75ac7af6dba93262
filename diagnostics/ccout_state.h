#pragma once
// What the files of message output share.

#include "qrv/base/csignal.h"
#include "qrv/cvers.h"

#include <array>
#include <cstdarg>
#include <iosfwd>
#include <string_view>

namespace cat {

// The head line of a message file.
constexpr char const *start_time_format = "%Y:%m:%d %H:%M";

// What the library says about itself when it is loaded and when it goes.
constexpr std::string_view start_text = QRV_VERSION_TEXT "\n";
constexpr std::string_view end_text = "Quorvanta unloaded\n";

struct cStandardStreams {
    std::istream &in;
    std::ostream &out;
    std::ostream &err;
};

// std::cin, std::cout and std::cerr, usable at any time; in start/startup.cpp, which alone includes
// <iostream>.
cStandardStreams standard_streams();

// sig_idle, for this folder.
cSignal &idle_signal();

using cMessageText = std::array<char, 2048>;

// Formats up to 2047 characters. The length, or -1 when the text was cut or the format is faulty.
int format_message(cMessageText &text, char const *format, va_list args)
    __attribute__((format(printf, 2, 0)));

// Writes to the message route and flushes, after what waits in the global buffer and whatever state
// std::cerr is in; to std::cerr while there is no global buffer. RE-ENTERS
void put_message(std::string_view text);

// Does the display of use_console() live?
bool has_console() noexcept;

// Removes the display of use_console(), if there is one. RE-ENTERS: the last text is delivered.
void end_console();

// What debugout calls for each text.
void pass_to_debug_output(char const *text);

} // namespace cat
