// `fmt`: the values of files in the writer's layout.

#include "tools/qrv/editing/rewrite.h"

#include <algorithm>

int run_fmt(cFmtOptions const &options) {
    int status = exit_done;
    for (std::string const &name : options.files)
        status = std::max(status, rewrite(name, options, nullptr));
    return status;
}
