#pragma once
// What lives as long as the process: made on first use, and named by start/startup.cpp, so that
// both stand before any ordinary static object and go after it.

namespace cat {
void start_shared_table(); // makes the table of counted pointers, if there is none
bool has_shared_table();   // for tests
void start_repositories(); // makes the set of lists, if there is none
} // namespace cat
