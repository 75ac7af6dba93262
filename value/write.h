#pragma once
// Writes or removes the value at the end of several keys. `Keys` is a source of keys: next(step &)
// returns them one by one, path(n) is the path of the first n.

#include "value/guard.h"
#include "value/place.h"

#include <utility>

namespace qrv::detail {

// One key.
class one_key {
  public:
    explicit one_key(step const &key) : key_(key) {}
    bool next(step &to) {
        if (std::exchange(given_, true)) return false;
        to = key_;
        return true;
    }
    std::string path(std::size_t count) const { return path_of(one_key(key_), count); }

  private:
    step const &key_;
    bool given_ = false;
};

// A map with x at `first` and the remaining keys.
template <class Keys> value levels_for(step const &first, Keys &keys, value const &x) {
    refuse_depth();
    step next;
    value const below = keys.next(next) ? levels_for(next, keys, x) : x;
    objref const map = make<cMapObj>();
    write_entry(map, first, below);
    return value_access::share(map);
}

// Calls `write`, and adds the path of the first `count` keys to its exceptions.
template <class Keys, class Write>
auto named(Keys const &keys, std::size_t count, Write const &write) {
    try {
        return write();
    } catch (error &failure) {
        failure.within(keys.path(count));
        throw;
    }
}

// Does a single write, to the last existing container; missing levels below it are created first. A
// null root becomes a map; if there are no keys, the root becomes x.
template <class Keys> void write_at(objref &root, Keys keys, value const &x) {
    step key;
    if (!keys.next(key)) {
        root = value_access::object(x);
        return;
    }
    if (!root) {
        root = value_access::object(levels_for(key, keys, x));
        return;
    }
    objref owner = root;
    objref keep;
    for (std::size_t depth = 0;; ++depth) {
        if (!is_writable(*owner))
            throw type_error(keys.path(depth), "a container", description(value_of(owner)));
        cObj *const present = entry_of(*owner, key, keep);
        step next;
        bool const last = !keys.next(next);
        if (last || cObj::is_nil(present) || !present)
            return named(keys, depth + 1,
                         [&] { write_entry(owner, key, last ? x : levels_for(next, keys, x)); });
        owner = objref::share(present);
        key = next;
    }
}

// False if there is no such entry.
template <class Keys> bool remove_at(objref const &root, Keys keys) {
    step key;
    if (!keys.next(key)) throw path_error({}, "a value can't be removed from itself");
    objref owner = root;
    objref keep;
    for (std::size_t depth = 1; owner; ++depth) {
        step next;
        if (!keys.next(next)) return named(keys, depth, [&] { return remove_entry(owner, key); });
        owner = objref::share(entry_of(*owner, key, keep));
        key = next;
    }
    return absent(keys);
}

} // namespace qrv::detail
