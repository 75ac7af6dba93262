#pragma once
// The exceptions of qrv::value and of the functions that work with it. These functions print
// nothing: what() has the whole message.
//
//   std::runtime_error
//     error            any other failure
//       path_error     a path leads to no value, or its text is faulty
//       type_error     a value is not what the program expects, or a declared type refuses it
//       parse_error    the text has errors
//       save_conflict  another program has changed a file
//   std::out_of_range
//     range_error      a number does not fit

#include "qrv/text/read/creadreport.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace qrv {

// The base of the exceptions below, except range_error, and itself the exception of other failures.
// what() is "path: reason", or only the reason if the path is empty.
class QRV_API error : public std::runtime_error {
  public:
    explicit error(std::string reason, unsigned int code = 0);
    error(std::string path, std::string reason, unsigned int code);
    error(error const &) = default;
    error &operator=(error const &) = default;
    ~error() override;

    // The code of the library's error (docs/errors.md); 0 for an error of this layer.
    unsigned int code() const noexcept { return code_; }
    // The path of the place that the error is about, starting at the value whose function was
    // called.
    std::string const &path() const noexcept { return path_; }
    // Prepends the path of a container, for code that reads or writes the container's parts. Throws
    // only std::bad_alloc.   O(length)
    void within(std::string_view path);

  private:
    std::string path_;
    std::string reason_;
    unsigned int code_;
};

// what(): "bus/baud: nothing is there".
class QRV_API path_error : public error {
  public:
    path_error(std::string path, std::string reason, unsigned int code = 0);
    path_error(path_error const &) = default;
    path_error &operator=(path_error const &) = default;
    ~path_error() override;
};

// what(): "bus/baud: expected int, but it is a string: "fast"".
class QRV_API type_error : public error {
  public:
    // `actual` is a noun with its article and may continue with the value.
    type_error(std::string path, std::string expected, std::string actual);
    // For a value that a type refuses. `reason` is the text of the library's error.
    explicit type_error(std::string const &reason, unsigned int code);
    type_error(type_error const &) = default;
    type_error &operator=(type_error const &) = default;
    ~type_error() override;

    std::string const &expected() const noexcept { return expected_; } // a type; may be empty
    std::string const &actual() const noexcept { return actual_; }     // may be empty

  private:
    std::string expected_;
    std::string actual_;
};

// what(): "bus/baud: 70000 does not fit: the range is 0 to 65535".
class QRV_API range_error : public std::out_of_range {
  public:
    // what() is "path: reason", or only the reason if the path is empty.
    range_error(std::string path, std::string reason);
    range_error(range_error const &) = default;
    range_error &operator=(range_error const &) = default;
    ~range_error() override;

    std::string const &path() const noexcept { return path_; }
    // Prepends the path of a container, for conversions of its parts. Throws only std::bad_alloc.
    //   O(length)
    void within(std::string_view path);

  private:
    std::string path_;
    std::string reason_;
};

// Text has errors. what() has a line for each, "file:line:col: error: text". Errors that follow
// from an earlier one are only counted, in a note after the earlier one. errors() has all of them;
// the field `follows` is the index of the earlier one.
class QRV_API parse_error : public error {
  public:
    parse_error(std::string const &list, std::vector<cat::ReadError> errors);
    parse_error(parse_error const &) = default;
    parse_error &operator=(parse_error const &) = default;
    ~parse_error() override;

    std::vector<cat::ReadError> const &errors() const noexcept { return errors_; } // in text order

  private:
    std::vector<cat::ReadError> errors_;
};

// Another program has changed or removed the file that is to be written. It stays as that program
// left it.
class QRV_API save_conflict : public error {
  public:
    using error::error;
    save_conflict(save_conflict const &) = default;
    save_conflict &operator=(save_conflict const &) = default;
    ~save_conflict() override;
};

} // namespace qrv
