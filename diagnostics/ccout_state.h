#pragma once
// Shared declarations of the message output.

#include "qrv/base/csignal.h"
#include "qrv/cvers.h"

#include <array>
#include <cstdarg>
#include <iosfwd>
#include <string_view>

namespace cat {

// The first line of a message file.
constexpr char const *start_time_format = "%Y:%m:%d %H:%M";

// Printed when the library is loaded and unloaded.
constexpr std::string_view start_text = QRV_VERSION_TEXT "\n";
constexpr std::string_view end_text = "Quorvanta unloaded\n";

struct cStandardStreams {
    std::istream &in;
    std::ostream &out;
    std::ostream &err;
};

// std::cin, std::cout and std::cerr, usable at any time; defined in start/startup.cpp, the only
// file that includes <iostream>.
cStandardStreams standard_streams();

// sig_idle, declared here for this folder.
cSignal &idle_signal();

using cMessageText = std::array<char, 2048>;

// Formats up to 2047 characters. Returns the length, or -1 if the text was cut or the format is
// faulty.
int format_message(cMessageText &text, char const *format, va_list args)
    __attribute__((format(printf, 2, 0)));

// Writes to the global buffer, after its contents, and flushes it, in any state of std::cerr.
// Writes to std::cerr while the global buffer does not exist. RE-ENTERS
void put_message(std::string_view text);

// Whether the display of use_console() exists.
bool has_console() noexcept;

// Removes the display of use_console(), if it exists. RE-ENTERS: delivers the last output.
void end_console();

// The function that debugout calls for each piece.
void pass_to_debug_output(char const *text);

} // namespace cat
