#pragma once
// Test helpers for message output.

#include "qrv/base/platform/cplatform.h"
#include "qrv/diagnostics/ccout.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using Pieces = std::vector<std::string>;

// Stores each string that a signal emits.
class cPieces {
  public:
    // Listens to the global message buffer. Fires sig_idle first, so that no text waits.
    cPieces() : slot_(this, &cPieces::take) {
        cOutSigStreambuf.pubsync();
        sig_idle();
        cOutSigStreambuf.sig().connect(slot_);
    }
    explicit cPieces(cSignal1<char const *> const &signal) : slot_(this, &cPieces::take, signal) {}
    cPieces(cPieces const &) = delete;
    cPieces &operator=(cPieces const &) = delete;
    ~cPieces() = default;

    Pieces const &pieces() const { return pieces_; }
    std::string text() const {
        std::string all;
        for (auto const &piece : pieces_) all += piece;
        return all;
    }

  private:
    void take(char const *text) { pieces_.emplace_back(text); }

    Pieces pieces_;
    cSlot1<cPieces, char const *> slot_;
};

inline std::string file_text(std::string const &path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// The path of a temporary file. The file is removed at both ends of the scope.
class cTempFile {
  public:
    explicit cTempFile(std::string const &name) : path_(testing::TempDir() + "qrv_ccout_" + name) {
        std::filesystem::remove(path_);
    }
    cTempFile(cTempFile const &) = delete;
    cTempFile &operator=(cTempFile const &) = delete;
    ~cTempFile() { std::filesystem::remove(path_); }

    char const *name() const { return path_.c_str(); }
    std::string text() const { return file_text(path_); }

  private:
    std::string path_;
};

// Runs a function for each string that a signal emits.
class cOnText {
  public:
    cOnText(cSignal1<char const *> const &signal, std::function<void(char const *)> function)
        : function_(std::move(function)), slot_(this, &cOnText::call, signal) {}
    cOnText(cOnText const &) = delete;
    cOnText &operator=(cOnText const &) = delete;
    ~cOnText() = default;

  private:
    void call(char const *text) { function_(text); }

    std::function<void(char const *)> function_;
    cSlot1<cOnText, char const *> slot_;
};

inline Pieces *debug_calls = nullptr;

// Redirects the debug output until the end of the scope.
class cDebugCalls {
  public:
    cDebugCalls() {
        debug_calls = &calls;
        qrv_set_debug_output([](char const *text) { debug_calls->emplace_back(text); });
    }
    cDebugCalls(cDebugCalls const &) = delete;
    cDebugCalls &operator=(cDebugCalls const &) = delete;
    ~cDebugCalls() { qrv_set_debug_output(nullptr); }

    Pieces calls;
};

// The text with its start line replaced by "[start]".
inline std::string without_start_line(std::string const &text) {
    constexpr std::string_view form = "Start  dddd:dd:dd dd:dd\n";
    if (text.size() < form.size()) return text;
    for (std::size_t i = 0; i < form.size(); ++i) {
        bool const digit = text[i] >= '0' && text[i] <= '9';
        if (form[i] == 'd' ? !digit : text[i] != form[i]) return text;
    }
    return "[start]" + text.substr(form.size());
}

// Begins after the first idle moment, and closes the message file at the end.
class Output : public testing::Test {
  protected:
    ~Output() override { cprintfclose(); }
    cPieces messages;
};
using OutputEdge = Output;
