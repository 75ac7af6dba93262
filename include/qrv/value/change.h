#pragma once
// Callbacks for changes of a value:
//
//     qrv::connection const watch = limits.on_change([](qrv::change const &change) {
//         if (change.key) std::cout << *change.key << '\n';
//     });
//     limits.set("high", 90.0); // prints high
//
// A callback listens to the object, so a change by any copy of the value is reported. Assigning to
// a variable replaces the object there, and the old object does not change.
//
// Each operation of qrv::value that changes the object calls each callback once, after the change:
// also if the new value equals the old one, not if the change is refused. merge() is a series of
// such operations, one for each entry. A change of a part is a change of that part alone, so listen
// to the parts that matter, too. assign() of a container reports that, and not the parts that it
// changes. Programs of the layer below report a change by cObj::changed(), or not at all.
//
// From inside a callback everything may be changed, disconnected or destroyed:
//   - a change of the same value calls the callbacks again, inside, and this one as well
//   - what a callback throws reaches the program that changes the value. The change stays, and the
//     callbacks connected later are not called for it; merge() ends there
//   - a callback that is connected there is called last, for this change too
//   - after disconnect() a callback is not called again; one that is running continues to its end
//
// While nobody has ever listened to a value, a change of it costs the test of one pointer for this.

#include "qrv/value/value.h"

#include <concepts>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

class cSSBase0;

namespace qrv {

// The argument of a callback. It shares the values that are stored, and does not copy them.
struct change {
    value source; // the value that has changed
    // The changed entry. These are empty if several entries or the value as a whole changed, as by
    // clear(), rename(), assign() or a new comment, and after a change in the layer below. An
    // insertion or removal in a vector moves the entries after it, without separate reports.
    std::optional<value> key;       // a string or an int
    std::optional<value> old_value; // empty: no key, or there was no such entry
    std::optional<value> new_value; // empty: no key, or there is no such entry any more
};

// Ends the calls of a callback at its own end. It keeps the callback alive but not the value; may
// outlive it.
class QRV_API connection {
  public:
    connection() noexcept; // connected to nothing
    connection(connection &&other) noexcept;
    connection &operator=(connection &&other) noexcept; // disconnects what was connected here
    ~connection();

    void disconnect() noexcept;
    // False after disconnect() and when the value has been destroyed.
    bool is_connected() const noexcept;

  private:
    friend class value;
    connection(objref const &watched, std::function<void(change const &)> callback);

    std::unique_ptr<cSSBase0> slot_;
};

// type_error for #nil, which has no object. Of scalars only assign() is heard: everything else
// replaces them.
template <class F> connection value::on_change(F callback) const {
    static_assert(std::invocable<F &, change const &>, "the callback gets a qrv::change const &");
    auto const held = std::make_shared<F>(std::move(callback)); // it need not be copyable
    return {object_, [held](change const &now) { static_cast<void>((*held)(now)); }};
}

} // namespace qrv
