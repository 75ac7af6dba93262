#include "value/path.h"

#include "base/platform/cchars.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"
#include "qrv/value/errors.h"
#include "value/place.h"

#include <algorithm>
#include <charconv>
#include <locale>
#include <sstream>

namespace qrv::detail {
namespace {

// Ends a part at `end`? Does not decide about // and /*, which scanned() refuses.
bool part_ends(std::string_view path, std::size_t end) {
    if (end == path.size()) return true;
    if (path[end] != '/' || end + 1 == path.size()) return false;
    return path[end + 1] != '/' && path[end + 1] != '*';
}

// The end of a short number without leading zeros, so that its text is the key's only form.
std::size_t end_of_number(std::string_view path, std::size_t begin) {
    std::size_t end = begin;
    while (end < path.size() && is_digit(path[end])) ++end;
    bool const plain = end - begin < 10 && (path[begin] != '0' || end == begin + 1);
    return plain ? end : begin;
}

std::size_t end_of_identifier(std::string_view path, std::size_t begin) {
    std::size_t end = begin;
    while (end < path.size() && (is_letter(path[end]) || is_digit(path[end]))) ++end;
    return end;
}

[[noreturn]] void refuse(std::string_view path, std::string const &reason) {
    throw path_error(std::string(path), reason);
}

// read_stdtype() would cut the string at a zero byte.
objref key_with_zero(std::string text) {
    text = text.substr(1, text.size() - 2); // the quotes
    cat::unescape(text);
    return own_key(text);
}

objref key_of(cAttrLiteral const &token, std::string_view path) {
    if (token.code == tkString && token.text.find('\0') != token.text.npos)
        return key_with_zero(token.text);
    objref key;
    cat::ReadReport const ignored; // refuse() throws its own message
    bool const read = cat::read_stdtype(token.code, token.text.c_str(), key);
    if (read && key && key->type().is_keytype()) return key;
    if (token.code == tkEof) refuse(path, "a key is missing at the end of the path");
    refuse(path, "'" + token.text + "' is not a key; keys that are not identifiers go in quotes");
}

// Refuses text outside of quotes that the scanner would skip, or at which it would end: comments,
// and bytes from 128 on.
void refuse_skipped_text(std::string_view path) {
    char quote = 0;
    for (std::size_t i = 0; i < path.size(); ++i) {
        char const c = path[i];
        std::string_view const two = path.substr(i, 2);
        if (c == '\\')
            ++i;
        else if (quote == 0 && (c == '"' || c == '\''))
            quote = c;
        else if (c == quote)
            quote = 0;
        else if (quote == 0 && two == "//")
            refuse(path, "a key is missing between two slashes; the empty key is \"\"");
        else if (quote == 0 && (two == "/*" || static_cast<unsigned char>(c) >= 128))
            refuse(path, "keys that are not identifiers go in quotes");
    }
}

std::vector<step> scanned(std::string_view path) {
    refuse_skipped_text(path);
    std::vector<step> result;
    cat::ReadReport const report;
    std::istringstream in{std::string(path)};
    in.imbue(std::locale::classic());
    cAttrScan scan(in, false);
    cAttrLiteral token;
    scan.gettok(token);
    if (token.code == '/') scan.gettok(token);
    if (token.code == tkEof && report.empty()) return result;
    for (;;) {
        result.push_back(step(key_of(token, path)));
        scan.gettok(token);
        if (token.code == tkEof) break;
        if (token.code != '/')
            refuse(path, "a slash is missing before '" + token.text +
                             "'; keys that are not identifiers go in quotes");
        scan.gettok(token);
    }
    return result;
}

} // namespace

step::step(objref const &object) : is(form::object), key(object) {
    if (auto const *const string = dynamic_cast<cObjD<std::string> const *>(object.get())) {
        is = form::text;
        text = string->val();
    } else if (int const index = cat::as_index(object); index != cat::no_index) {
        is = form::number;
        number = index;
    }
}

bool path_reader::read_plain(step &to) {
    if (!slow_.empty() || at_ == path_.size()) return false;
    char const first = path_[at_];
    std::size_t end = at_;
    if (is_letter(first)) {
        end = end_of_identifier(path_, at_);
        std::string_view const text = path_.substr(at_, end - at_);
        if (!part_ends(path_, end)) return false;
        to.is = step::form::text;
        to.text = text;
    } else {
        end = end_of_number(path_, at_);
        if (end == at_ || !part_ends(path_, end)) return false;
        to.is = step::form::number;
        std::from_chars(path_.data() + at_, path_.data() + end, to.number);
    }
    at_ = std::min(end + 1, path_.size());
    ++count_;
    return true;
}

bool path_reader::read_slowly(step &to) {
    if (slow_.empty()) slow_ = scanned(path_);
    at_ = path_.size();
    if (count_ == slow_.size()) return false;
    to = slow_[count_++];
    return true;
}

std::string path_reader::path(std::size_t count) const {
    return path_of(path_reader(path_), count);
}

std::string joined_path(std::string_view outer, std::string_view inner) {
    std::string path(outer);
    if (!path.empty() && !inner.empty()) path += '/';
    return path.append(inner);
}

objref key_object(step const &key) {
    if (key.key) return key.key;
    return key.is == step::form::number ? own_key(key.number) : own_key(std::string(key.text));
}

void append_checked(std::string &path, step const &key) {
    if (key.is == step::form::object && !(key.key && key.key->type().is_keytype()))
        throw type_error({}, "a key", description(value_of(key.key)));
    append_key(path, key);
}

void append_key(std::string &path, step const &key) {
    if (!path.empty()) path += '/';
    switch (key.is) {
    case step::form::number:
        path += std::to_string(key.number);
        return;
    case step::form::object:
        path += shown_text(key.key);
        return;
    case step::form::text:
        break;
    }
    std::string text(key.text);
    bool const bare = cat::escape(text);
    for (std::size_t i = text.find('\n'); i != text.npos; i = text.find('\n', i + 2))
        text.insert(i, 1, '\\');
    path += bare ? text : '"' + text + '"';
}

} // namespace qrv::detail
