#pragma once
// Cuts the text of a path such as a/b/0 into keys. Keys have the lexical rules of the text format,
// as in cObj::getattrp: foo and "foo" are the same key, 0 is an int, #name a constant. Unlike in
// getattrp, only a slash separates keys, true and false are keys, and comments are refused:
// otherwise // would silently cut a path at an empty part.
//
// Identifiers and short numbers are cut out directly; a path with anything else is read by the
// scanner of the text format.

#include "qrv/value/value.h"

#include <string>
#include <string_view>
#include <vector>

namespace qrv::detail {

class path_reader {
  public:
    // Borrows the text.
    explicit path_reader(std::string_view path)
        : path_(path), at_(!path.empty() && path[0] == '/' ? 1 : 0) {}
    // The next key; false at the end. path_error: faulty text.
    bool next(step &to) {
        if (at_ == path_.size() && slow_.empty()) return false;
        return read_plain(to) || read_slowly(to);
    }
    // The path of the first `count` keys.
    std::string path(std::size_t count) const;

  private:
    bool read_plain(step &to);
    bool read_slowly(step &to);

    std::string_view path_;
    std::size_t at_;         // the offset of the next part, while read_plain() is used
    std::size_t count_ = 0;  // the number of keys that next() has returned
    std::vector<step> slow_; // all keys, once the scanner has read them
};

// The object for a key.
objref key_object(step const &key);
// "a/b/c" for "a" and "b/c"; an empty path adds nothing.
std::string joined_path(std::string_view outer, std::string_view inner);
// The path of the next `count` keys.
template <class Keys> std::string path_of(Keys keys, std::size_t count) {
    std::string result;
    step key;
    for (std::size_t i = 0; i < count && keys.next(key); ++i) append_key(result, key);
    return result;
}

} // namespace qrv::detail
