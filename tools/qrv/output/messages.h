#pragma once
// The messages about one file. They are collected, and printed after the work on the file. Beyond a
// limit they are only counted, errors and warnings separately; a last line reports the counts.

#include "tools/qrv/output/diagnostic.h"
#include "tools/qrv/output/lines.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

// The position after the first `count` characters of `text`, which begins at `place`.
cPlace place_after(cPlace place, std::string const &text, size_t count);

constexpr size_t longest_path = 120; // in characters, in messages

// Cuts text that is longer than `longest` in the middle, between characters.
std::string shortened(std::string const &text, size_t longest = longest_path);
std::string quoted(std::string const &text); // shortened, in single quotes

// Shortens the path inside the text.
std::string with_short_path(std::string text, std::string const &path);

constexpr int default_max_errors = 100; // messages about one file

class cMessages {
  public:
    cMessages(std::string name, int limit) : limit_(limit) { findings_.file = std::move(name); }

    // Sets the text that the messages are about. Borrowed until the last message is added.
    void source(std::string const &bytes);
    // Adds a message; sets its file, bytes and line. An error counts as one, without those that
    // follow from it.
    void add(cDiagnostic diagnostic);
    void error(std::string const &text, unsigned code = 0); // about the file
    void error(cPlace place, std::string const &text, unsigned code = 0);
    void warning(std::string const &text);
    void warning(cPlace place, std::string const &text);
    void note(cPlace place, std::string const &text); // belongs to the error before
    // Adds errors that are only counted.
    void more(size_t count) { findings_.more_errors += count; }
    size_t count() const { return errors_ + findings_.more_errors; } // the number of errors
    size_t warnings() const { return warnings_ + findings_.more_warnings; }
    void warnings_are_errors() { findings_.strict = true; } // they still count as warnings
    bool shows_errors() const { return has_room(errors_, findings_.more_errors); }
    bool shows_warnings() const { return has_room(warnings_, findings_.more_warnings); }
    // Adds the errors of another reading of the file.
    void take(cFindings const &findings);
    void sort(); // by position; messages without one come last
    cFindings const &findings() const { return findings_; }
    // Counts an error that follows from the last one.
    void following() { ++findings_.diagnostics.back().following; }
    // Shows each error as the library reports it, also those that follow from others, without
    // hints.
    void show_all() { shows_all_ = true; }
    bool shows_all() const { return shows_all_; }
    int limit() const { return limit_; }
    std::string const &name() const { return findings_.file; }
    std::string text() const { return text_of(findings_); }

  private:
    bool has_room(size_t shown, size_t more) const;

    int limit_;
    std::string const *bytes_ = nullptr;
    std::optional<cLines> lines_; // of these bytes
    bool shows_all_ = false;
    size_t errors_ = 0, warnings_ = 0; // shown
    cFindings findings_;
};
