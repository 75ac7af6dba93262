#include "qrv/value/text.h"

#include "value/reading.h"
#include "value/writing.h"
#include "value/written_file.h"

namespace qrv {

value parse(std::string_view text, options const &how) {
    std::vector<cat::ReadError> errors;
    value result = parse(text, errors, how);
    detail::throw_errors(errors);
    return result;
}

value load(std::string const &path, options const &how) {
    std::vector<cat::ReadError> errors;
    value result = load(path, errors, how);
    detail::throw_errors(errors);
    return result;
}

value parse(std::string_view text, std::vector<cat::ReadError> &errors, options const &how) {
    return detail::read_all_or_no_types(text, {}, how, errors);
}

value load(std::string const &path, std::vector<cat::ReadError> &errors, options const &how) {
    return detail::read_all_or_no_types(detail::bytes_of(path), path, how, errors);
}

std::string dump(value const &v, style const &how) { return detail::written(v, how, {}); }

void save(value const &v, std::string const &path, style const &how) {
    detail::replace_file(path, detail::written(v, how, path + ": ") + "\n");
}

} // namespace qrv
