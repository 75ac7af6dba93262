#pragma once
// One change of a value by the library, with its result and its errors.

#include "qrv/core/cobj.h"
#include "qrv/text/read/creadreport.h"
#include "tools/qrv/output/raised.h"

#include <functional>
#include <string>
#include <vector>

struct cAttemptError {
    std::string text;
    unsigned code;
    cat::ErrorKind kind;
    cat::ErrorNames names;
};

// Runs a change. Stores its return value and the errors that it raises, which are not printed.
struct cAttempt {
    bool done = false;
    std::vector<cAttemptError> errors;

    explicit cAttempt(std::function<bool()> const &change) {
        cRaisedErrors const raised([this](cErr const &error) {
            errors.push_back({error.as_string(), error.code(), error.kind(), error.names()});
        });
        cat::ReadReport report;
        done = change();
        for (cat::ReadError const &error : report.entries())
            errors.push_back({error.text, error.code, error.kind, error.names});
    }
};
