#include "qrv/value/errors.h"

#include "value/path.h"

namespace qrv {
namespace {

std::string message(std::string const &path, std::string const &reason) {
    return path.empty() ? reason : path + ": " + reason;
}

} // namespace

error::error(std::string reason, unsigned int code) : error({}, std::move(reason), code) {}
error::error(std::string path, std::string reason, unsigned int code)
    : std::runtime_error(message(path, reason)), path_(std::move(path)), reason_(std::move(reason)),
      code_(code) {}
error::~error() = default;

void error::within(std::string_view path) {
    path_ = detail::joined_path(path, path_);
    static_cast<std::runtime_error &>(*this) = std::runtime_error(message(path_, reason_));
}

path_error::path_error(std::string path, std::string reason, unsigned int code)
    : error(std::move(path), std::move(reason), code) {}
path_error::~path_error() = default;

type_error::type_error(std::string path, std::string expected, std::string actual)
    : error(std::move(path), "expected " + expected + ", but it is " + actual, 0),
      expected_(std::move(expected)), actual_(std::move(actual)) {}
type_error::type_error(std::string const &reason, unsigned int code) : error(reason, code) {}
type_error::~type_error() = default;

range_error::range_error(std::string path, std::string reason)
    : std::out_of_range(message(path, reason)), path_(std::move(path)), reason_(std::move(reason)) {
}
range_error::~range_error() = default;

void range_error::within(std::string_view path) {
    path_ = detail::joined_path(path, path_);
    static_cast<std::out_of_range &>(*this) = std::out_of_range(message(path_, reason_));
}

parse_error::parse_error(std::string const &list, std::vector<cat::ReadError> errors)
    : error(list), errors_(std::move(errors)) {}
parse_error::~parse_error() = default;

save_conflict::~save_conflict() = default;

} // namespace qrv
