#pragma once
// One change of a value by the library, with what it says.

#include "qrv/core/cobj.h"
#include "qrv/text/read/creadreport.h"
#include "tools/qrv/output/raised.h"

#include <functional>
#include <string>
#include <vector>

struct cSaid {
    std::string text;
    unsigned code;
};

// Both results of a change: what it answers, and the errors on the way, which are not printed.
struct cAttempt {
    bool done = false;
    std::vector<cSaid> errors;

    explicit cAttempt(std::function<bool()> const &change) {
        cRaisedErrors const raised([this](cErr const &error) {
            errors.push_back({error.as_string(), error.code()});
        });
        cat::ReadReport report;
        done = change();
        for (cat::ReadError const &error : report.entries())
            errors.push_back({error.text, error.code});
    }
};
