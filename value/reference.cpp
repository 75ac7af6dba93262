#include "qrv/value/reference.h"

#include "value/write.h"

#include "qrv/text/write/cwriter.h"
#include "qrv/value/items.h"

#include <cstring>
#include <ostream>

namespace qrv {
namespace {

// Each key begins with a byte: the length of a string that follows, or one of these.
constexpr unsigned char long_text_mark = 254; // its length follows
constexpr unsigned char number_mark = 255;

template <class T> void append_bytes(std::string &bytes, T const &x) {
    char raw[sizeof x];
    std::memcpy(raw, &x, sizeof x);
    bytes.append(raw, sizeof x);
}

template <class T> T take_bytes(std::string_view &bytes) {
    T x;
    std::memcpy(&x, bytes.data(), sizeof x);
    bytes.remove_prefix(sizeof x);
    return x;
}

} // namespace

namespace detail {

void key_list::add(step const &key) {
    if (key.is == step::form::object)
        throw type_error({}, "a key that is a string or an int", cat::as_text(key.key));
    if (key.is == step::form::number) {
        append_bytes(bytes_, number_mark);
        append_bytes(bytes_, key.number);
        return;
    }
    bool const is_long = key.text.size() >= long_text_mark;
    append_bytes(bytes_, is_long ? long_text_mark : static_cast<unsigned char>(key.text.size()));
    if (is_long) append_bytes(bytes_, key.text.size());
    bytes_ += key.text;
}

// The keys one by one.
class key_reader {
  public:
    explicit key_reader(key_list const &keys) noexcept : all_(keys.bytes_), rest_(all_) {}
    bool next(step &to) noexcept {
        if (rest_.empty()) return false;
        auto const mark = take_bytes<unsigned char>(rest_);
        if (mark == number_mark) {
            to.is = step::form::number;
            to.number = take_bytes<int>(rest_);
            return true;
        }
        auto const size = mark == long_text_mark ? take_bytes<std::size_t>(rest_) : mark;
        to.is = step::form::text;
        to.text = rest_.substr(0, size);
        rest_.remove_prefix(size);
        return true;
    }
    std::string path(std::size_t count) const {
        key_reader again = *this;
        again.rest_ = all_;
        return path_of(again, count);
    }

  private:
    std::string_view all_;
    std::string_view rest_;
};

std::string key_list::path() const { return key_reader(*this).path(std::string::npos); }

} // namespace detail

reference value::place_of(detail::step const &key, bool variable) {
    reference result(variable && is_nil() ? this : nullptr, *this);
    result.keys_.add(key);
    return result;
}

reference reference::below(detail::step const &key) const {
    reference result = *this;
    result.keys_.add(key);
    return result;
}

void reference::operator=(value x) && {
    objref &root = detail::value_access::object(variable_ ? *variable_ : root_);
    if (!root && !variable_)
        throw path_error(keys_.path(), "a value that is nil, and not a variable, has no entries");
    detail::write_at(root, detail::key_reader(keys_), x);
}

void reference::operator=(reference const &other) && { std::move(*this) = other.read(); }

void reference::set(std::string_view path, value const &x) const {
    reference place = *this;
    named([&] {
        detail::path_reader keys(path);
        for (detail::step key; keys.next(key);) place.keys_.add(key);
    });
    std::move(place) = x;
}

bool reference::push_back(value const &x) const {
    value place = read();
    bool const is_new = place.is_nil();
    bool const added = named([&] { return place.push_back(x); });
    if (is_new) reference(*this) = place;
    return added;
}

void reference::merge(value const &other) const {
    value place = read();
    bool const is_new = place.is_nil();
    named([&] { place.merge(other); });
    if (is_new) reference(*this) = place;
}

bool reference::locate(detail::spot &to) const {
    detail::key_reader keys(keys_);
    return detail::walk(detail::value_access::object(root_), keys, to);
}

value reference::peek() const {
    detail::spot place;
    if (!locate(place)) return {};
    return detail::value_of(objref::share(place.object));
}

value reference::read() const {
    detail::spot place;
    if (!locate(place)) throw path_error(keys_.path(), "nothing is there");
    return detail::value_of(objref::share(place.object));
}

bool reference::exists() const {
    detail::spot place;
    return locate(place);
}

item_range reference::items() const {
    static_cast<void>(size()); // throws for a scalar
    return read().items();
}
key_range reference::keys() const {
    static_cast<void>(size());
    return read().keys();
}
element_range reference::values() const {
    static_cast<void>(size());
    return read().values();
}
element_iterator reference::begin() const {
    return use([](value const &v) { return v.begin(); });
}
element_iterator reference::end() const { return {}; }

std::ostream &operator<<(std::ostream &os, reference const &place) { return os << place.read(); }

} // namespace qrv
