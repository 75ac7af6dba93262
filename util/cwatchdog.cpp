// The link to a watchdog: the id and its three states, the queue of messages before the id is
// known, and the signs of life.

#include "qrv/util/cwatchdog.h"

#include "base/platform/clink.h"
#include "util/cwatchdog_state.h"

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string_view>

constinit std::uint32_t idWatchDog = watchdog_not_known;

namespace {

constinit bool queue_ended = false; // the process ends: messages are not stored any more

// Delivers the messages that are stored when the id arrives. Messages that are posted during the
// delivery do not enter the queue, since the id is known then. But if a post resets idWatchDog to
// watchdog_not_known, later messages enter the queue and wait for the next id.
class cDelivery {
  public:
    explicit cDelivery(std::uint32_t id) : id_(id), end_(cat::watchdog_queue.count()) {}
    cDelivery(cDelivery const &) = delete;
    cDelivery &operator=(cDelivery const &) = delete;
    ~cDelivery() = default;

    void run();

  private:
    void post_next() noexcept;

    std::uint32_t const id_;
    std::size_t const end_;
    std::exception_ptr first_;
};

void post(std::uint32_t id, cMSG const &message) {
    if (id == watchdog_none) return;
    cat::post_message(watchdog_socket_prefix, id, message.message, message.wParam, message.lParam);
}

// Takes the message before posting it, so a nested post never sends it again.
void cDelivery::post_next() noexcept {
    try {
        post(id_, cat::watchdog_queue.take()); // RE-ENTERS
    } catch (...) {
        if (!first_) first_ = std::current_exception();
    }
}

void cDelivery::run() {
    while (cat::watchdog_queue.taken() < end_) post_next();
    if (first_) std::rethrow_exception(first_);
}

// A watchdog is recognised by the exact title.
bool started_by_watchdog() {
    char const *const title = cat::start_value(watchdog_title_variable);
    return title && std::strcmp(title, watchdog_title) == 0;
}

// The number in a string of decimal digits only; watchdog_not_known for every other string.
std::uint32_t id_in(std::string_view text) {
    std::uint32_t id = watchdog_not_known;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
    bool const whole = error == std::errc() && end == text.data() + text.size();
    return whole && id != watchdog_none ? id : watchdog_not_known;
}

} // namespace

// ---- the queue ----

cWatchDogQueue::~cWatchDogQueue() {
    if (this == &cat::watchdog_queue) queue_ended = true;
    std::free(messages_);
}

bool cWatchDogQueue::grow() noexcept {
    std::size_t const more = growth(count_);
    if (capacity_ > SIZE_MAX / sizeof(cMSG) - more) return false;
    void *const grown = resize(messages_, (capacity_ + more) * sizeof(cMSG));
    if (!grown) return false;
    messages_ = static_cast<cMSG *>(grown);
    std::fill_n(messages_ + capacity_, more, cMSG{0, 0, 0});
    capacity_ += more;
    return true;
}

bool cWatchDogQueue::append(cMSG const &message) noexcept {
    if (count_ == capacity_ && !grow()) return false;
    messages_[count_++] = message;
    return true;
}

std::size_t qrv_watchdog_queue_capacity() {
    return queue_ended ? 0 : cat::watchdog_queue.capacity();
}

// ---- the id ----

void PostWatchDog(std::uint32_t message, std::uint32_t wParam, std::int32_t lParam) {
    cat::cKeepErrno const keep;
    cMSG const all{message, wParam, lParam};
    if (idWatchDog != watchdog_not_known) return post(idWatchDog, all);
    if (!queue_ended) cat::watchdog_queue.append(all);
}

// With 0 the id would stay unknown, so 0 must not start a delivery.
void SetWatchDogID(std::uint32_t id) {
    if (idWatchDog != watchdog_not_known || id == watchdog_not_known) return;
    idWatchDog = id;
    cat::cKeepErrno const keep;
    if (!queue_ended) cDelivery(id).run();
}

bool qrv_take_watchdog_id() {
    char const *const number = cat::start_value(watchdog_id_variable);
    std::uint32_t const id = number ? id_in(number) : watchdog_not_known;
    if (id == watchdog_not_known || !started_by_watchdog()) return false;
    SetWatchDogID(id);
    return true;
}

void cat::watchdog_startup_test() {
    if (!started_by_watchdog()) idWatchDog = watchdog_none;
}

// ---- the signs of life ----

cWatchDogSend::cWatchDogSend() : event_(nullptr), slot_(this, &cWatchDogSend::send) {
    sig.connect(slot_);
    event_ = cat::open_event(watchdog_event_name);
}

cWatchDogSend::~cWatchDogSend() { cat::close_event(event_); }

void cWatchDogSend::send() {
    PostWatchDog(watchdog_alive_message, 0, 0);
    cat::set_event(event_);
}
