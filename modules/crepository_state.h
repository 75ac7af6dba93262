#pragma once
// Two process-wide tables. start/startup.cpp calls these functions, so that both tables are created
// before the static objects of programs, and destroyed after them.

namespace cat {
void start_shared_table(); // creates the table of counted pointers, if it does not exist
bool has_shared_table();   // for tests
void start_repositories(); // creates the set of lists, if it does not exist
} // namespace cat
