// Work under a watchdog: one sign of life for each step. The program also works without a
// watchdog. Usage: watched [hang]. With hang it stops working in the middle.
#include "qrv/diagnostics/cconsole.h"
#include "qrv/util/cwatchdog.h"

#include <chrono>
#include <iostream>
#include <string_view>
#include <thread>

int main(int argc, char **argv) {
    sig_idle();
    cConsoleDisplay display;
    bool const hangs = argc > 1 && std::string_view(argv[1]) == "hang";

    sig_init(); // from here on the library knows whether a watchdog started us
    std::cout << (qrv_take_watchdog_id() ? "watched" : "not watched") << std::endl;

    for (int step = 1; step <= 3; ++step) {
        std::cout << "step " << step << std::endl;
        sig_progstep(); // a sign of life
        while (hangs && step == 2) std::this_thread::sleep_for(std::chrono::hours(1));
    }
}
