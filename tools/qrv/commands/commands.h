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

// Where a value that was written anew goes: to standard output unless told otherwise.
struct cWriteOptions : cCommon {
    bool check = false; // nowhere
    bool in_place = false;
    bool force = false; // a file is replaced even where something is lost
    std::string output; // a file of that name
};

struct cFmtOptions : cWriteOptions {
    std::vector<std::string> files;
};

struct cSetOptions : cWriteOptions {
    std::string file;
    std::string statements;
    bool create = true;   // missing levels
    bool convert = false; // values that a conversion changes are stored
};

struct cMergeOptions : cWriteOptions {
    std::string target;
    std::string source;
    std::string commands = "-xx";
    bool convert = false;
};

struct cGetOptions : cCommon {
    std::string file;
    std::vector<std::string> paths;
    bool text = false;
    bool has_default = false;
    std::string default_value;
};

struct cFindOptions : cCommon {
    std::string file;
    std::string pattern;
    bool first = false; // of the ways to match, not the longest
};

struct cExplainOptions : cCommon {
    std::string file;
    std::string path;
};

struct cCheckOptions : cCommon {
    std::vector<std::string> files;
};

struct cTokensOptions : cCommon {
    std::string file;
    bool all = false;
};

struct cTypesOptions : cCommon {
    std::string file; // none if empty
    std::string format = "text";
};

struct cFromJsonOptions : cCommon {
    std::string file = "-";
    std::string output; // a file, instead of standard output
};

struct cToJsonOptions : cCommon {
    std::string file = "-";
    std::string output;
    int indent = 2;
    bool compact = false;
    bool strict = false; // a loss is an error
};

int run_fmt(cFmtOptions const &options);
int run_set(cSetOptions const &options);
int run_merge(cMergeOptions const &options);
int run_get(cGetOptions const &options);
int run_find(cFindOptions const &options);
int run_explain(cExplainOptions const &options);
int run_check(cCheckOptions const &options);
int run_tokens(cTokensOptions const &options);
int run_types(cTypesOptions const &options);
int run_from_json(cFromJsonOptions const &options);
int run_to_json(cToJsonOptions const &options);
