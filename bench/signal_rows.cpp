// Signals: firing one with n slots, and connecting and disconnecting n slots, compared with
// libsigc++.
#include "bench/row.h"
#include "qrv/base/csignal.h"

#include <sigc++/sigc++.h>

#include <deque>
#include <memory>

namespace {

struct cCounter {
    void take(int by) { sum += by; }
    int sum = 0;
};

class cOurs {
  public:
    explicit cOurs(int n) {
        for (int i = 0; i < n; ++i) slots_.emplace_back(&counter, &cCounter::take);
    }
    void connect() {
        for (auto const &slot : slots_) signal_.connect(slot);
    }
    void fire() { signal_(1); }
    void disconnect() { signal_.disconnect(); }

    cCounter counter;

  private:
    cSignal1<int> signal_;
    std::deque<cSlot1<cCounter, int>> slots_;
};

class cTheirs {
  public:
    explicit cTheirs(int n) : n_(n) {}
    void connect() {
        for (int i = 0; i < n_; ++i) signal_.connect(sigc::mem_fun(counter, &cCounter::take));
    }
    void fire() { signal_.emit(1); }
    void disconnect() { signal_.clear(); }

    cCounter counter;

  private:
    int n_;
    sigc::signal<void(int)> signal_;
};

constexpr int calls = 10000; // one takes too little time to be measured

template <class Signal> cRounds emit(int n) {
    auto const signal = std::make_shared<Signal>(n);
    signal->connect();
    return [signal](cRound &round) {
        signal->counter.sum = 0;
        round.measure([&] {
            for (int i = 0; i < calls; ++i) signal->fire();
        });
        round.answer = [signal] { return std::to_string(signal->counter.sum / calls); };
    };
}

template <class Signal> cRounds connect(int n) {
    auto const signal = std::make_shared<Signal>(n);
    return [signal](cRound &round) {
        round.measure([&] {
            signal->connect();
            signal->disconnect();
        });
        round.answer = [signal] {
            signal->connect();
            signal->fire();
            signal->disconnect();
            return std::to_string(signal->counter.sum);
        };
    };
}

cSide side(char const *library, int times, cRounds (*rounds)(int)) {
    return {library, [times, rounds](std::string const &size) {
                int const n = std::stoi(size);
                int const entries = n == 0 ? times : n * times; // without slots, counts the calls
                return cPrepared{static_cast<std::size_t>(entries), size, rounds(n)};
            }};
}

} // namespace

std::vector<cWork> signal_works() {
    std::vector<std::string> const sizes = {"10", "100", "1000"};
    return {
        {"emit",
         sizes,
         {"0", "1", "10", "100"},
         {side("qrv", calls, emit<cOurs>), side("libsigc++", calls, emit<cTheirs>)}},
        {"connect",
         sizes,
         {"10", "100", "1000"},
         {side("qrv", 1, connect<cOurs>), side("libsigc++", 1, connect<cTheirs>)}},
    };
}
