#pragma once
// The commands of the tool: what each is given, and what all answer.

#include <string>
#include <vector>

// Exit codes. Of several files the worst counts.
enum exit_code : int {
    exit_done = 0,   // done, found, clean
    exit_found = 1,  // absent, different, with findings
    exit_failed = 2, // the work could not be done
};

struct cCommon {
    int max_errors = 100; // messages for one file
    bool canonical = false;
};

struct cFmtOptions : cCommon {
    std::vector<std::string> files;
    bool check = false;
    bool in_place = false;
    bool force = false;
};

struct cGetOptions : cCommon {
    std::string file;
    std::vector<std::string> paths;
    bool text = false;
    bool has_default = false;
    std::string default_value;
};

struct cCheckOptions : cCommon {
    std::vector<std::string> files;
};

struct cTokensOptions : cCommon {
    std::string file;
    bool all = false;
};

int run_fmt(cFmtOptions const &options);
int run_get(cGetOptions const &options);
int run_check(cCheckOptions const &options);
int run_tokens(cTokensOptions const &options);
