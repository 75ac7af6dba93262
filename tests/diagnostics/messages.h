#pragma once
// Test helpers of the message route. One thread at a time.

#include "qrv/diagnostics/ccout.h"

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

// Keeps what a signal is fired with, piece by piece.
class cPieces {
  public:
    // Of the global route, which is past its first idle moment from here on.
    cPieces() : slot_(this, &cPieces::take) {
        cOutSigStreambuf.pubsync();
        sig_idle();
        cOutSigStreambuf.sig().connect(slot_);
    }
    explicit cPieces(cSignal1<char const *> const &signal) : slot_(this, &cPieces::take, signal) {}
    cPieces(cPieces const &) = delete;
    cPieces &operator=(cPieces const &) = delete;
    ~cPieces() = default;

    std::vector<std::string> const &pieces() const { return pieces_; }
    std::string text() const {
        std::string all;
        for (auto const &piece : pieces_) all += piece;
        return all;
    }

  private:
    void take(char const *text) { pieces_.emplace_back(text); }

    std::vector<std::string> pieces_;
    cSlot1<cPieces, char const *> slot_;
};

inline std::string file_text(std::string const &path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}
