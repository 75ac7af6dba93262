#pragma once
// Reports the findings in files in formats for other programs:
//
//   text     the same text as for a person
//   json     {"files": [{"file": ..., "diagnostics": [...], ...}, ...]}; columns in bytes
//   github   commands of a workflow, which show each finding at its line; columns in characters
//   sarif    SARIF 2.1.0, one run; columns in characters
//
// In json and sarif U+FFFD replaces bytes that are not UTF-8.

#include "tools/qrv/output/diagnostic.h"

#include <string>
#include <vector>

class cReport {
  public:
    // The name of a kind of diagnostics, and what it means.
    struct cRule {
        std::string name;
        std::string summary;
    };

    // `format` is one of formats(). The rules are borrowed.
    cReport(std::string const &format, std::vector<cRule> const &rules);
    static std::vector<std::string> formats();

    // The part of the report for one file; needs the file's bytes to count columns.
    std::string part(cFindings const &findings, std::string const &bytes) const;

    // A report consists of its begin, all parts in turn, and its end.
    std::string begin() const;
    std::string next(std::string const &part);
    std::string end() const;

  private:
    enum cFormat : unsigned char { text, json, github, sarif };

    cFormat format_;
    std::vector<cRule> const &rules_;
    bool has_parts_ = false;
};
