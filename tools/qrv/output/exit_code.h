#pragma once
// The exit codes. For several files the greatest counts.

enum exit_code : int {
    exit_done = 0,   // done, found, clean
    exit_found = 1,  // absent, different, with findings
    exit_failed = 2, // the work could not be done
};
