#include "value/reading.h"

#include "qrv/text/file/creadtext.h"

#include <utility>

namespace qrv::detail {

namespace {

// The library's filter is a plain function: this one asks that of the innermost reading.
options const *innermost = nullptr;

bool allows(std::string const &module) { return innermost->modules(module); }

class asked {
  public:
    explicit asked(options const &how) : before_(std::exchange(innermost, &how)) {}
    asked(asked const &) = delete;
    asked &operator=(asked const &) = delete;
    ~asked() { innermost = before_; }

  private:
    options const *const before_;
};

cat::ReadOptions options_of(options const &how, std::string const &file) {
    return {how.comments, how.depth, how.modules ? allows : nullptr, file};
}

// What a reading that fills object and report gives.
template <class Read>
value result_of(options const &how, std::vector<cat::ReadError> &errors, Read const &read) {
    asked const filter(how);
    cat::ReadReport report;
    objref object;
    read(object, report); // RUNS USER CODE
    errors = report.entries();
    return cObj::is_good(object) ? value(std::move(object)) : value();
}

} // namespace

value read_value(std::string_view text, std::string const &file, options const &how,
                 std::vector<cat::ReadError> &errors) {
    return result_of(how, errors, [&](objref &object, cat::ReadReport &report) {
        cat::read_text(text, object, report, options_of(how, file));
    });
}

value read_file(std::string const &path, options const &how, std::vector<cat::ReadError> &errors) {
    return result_of(how, errors, [&](objref &object, cat::ReadReport &report) {
        cat::read_file(path, object, report, options_of(how, path));
    });
}

// An error that follows from another one is left out of the message.
void throw_errors(std::vector<cat::ReadError> const &errors) {
    if (errors.empty()) return;
    std::string list;
    for (cat::ReadError const &error : errors)
        if (error.follows == cat::ReadError::none) {
            if (!list.empty()) list += '\n';
            list += cat::format(error);
        }
    throw parse_error(list, errors);
}

} // namespace qrv::detail
