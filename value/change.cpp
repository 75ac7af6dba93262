#include "qrv/value/change.h"

#include "qrv/base/csignal.h"
#include "value/notify.h"

namespace qrv {

namespace {

std::optional<value> good(objref const &ref) {
    return cObj::is_good(ref) ? std::optional(value(ref)) : std::nullopt;
}

struct Listener {
    void operator()() const {
        change now{value(objref::share(watched)), {}, {}, {}};
        if (detail::change_report const *const report = detail::change_report::of(*watched)) {
            now.key = good(report->key());
            now.old_value = good(report->old_value());
            now.new_value = good(report->new_value());
        }
        detail::fired_report const none(nullptr);
        callback(now); // RE-ENTERS: may destroy the connection
    }

    cObj *watched; // the owner of the signal
    std::function<void(change const &)> callback;
};

} // namespace

connection::connection() noexcept = default;
connection::connection(connection &&other) noexcept = default;
connection &connection::operator=(connection &&other) noexcept = default;
connection::~connection() = default;

connection::connection(objref const &watched, std::function<void(change const &)> callback) {
    if (!watched) throw type_error("#nil has no object to listen to", 0);
    slot_ = std::make_unique<cFunctionSlot<Listener>>(Listener{watched.get(), std::move(callback)},
                                                      watched->force_changed_signal());
}

void connection::disconnect() noexcept { slot_ = nullptr; }

bool connection::is_connected() const noexcept { return slot_ && slot_->isconnected(); }

} // namespace qrv
