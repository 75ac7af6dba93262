#pragma once
// Two tables for the life of the process, created on first use. start/startup.cpp calls these
// functions, so that both exist before any ordinary static object and are destroyed after it.

namespace cat {
void start_shared_table(); // creates the table of counted pointers, if it does not exist
bool has_shared_table();   // for tests
void start_repositories(); // creates the set of lists, if it does not exist
} // namespace cat
