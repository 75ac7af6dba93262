#pragma once
// Removes keys that occur more than once in an object. The new text has the last value of each key,
// at the position of the first.

#include <cstddef>
#include <map>
#include <string>

class cRepetitions {
  public:
    // Adds an entry that repeats the key at the offset `first`. `before` is the end of the entry
    // before it, `end` its own end. Repetitions of a key must be added in order.
    void add(size_t first, size_t before, size_t end);
    bool empty() const { return parts_.empty(); }
    std::string removed_from(std::string const &bytes) const; // O(size)

  private:
    // A key, which gets the value of the repetition at `other`; or a repetition, which ends at
    // `other`.
    struct cPart {
        bool is_key;
        size_t other;
    };

    void copy(std::string const &bytes, size_t from, size_t to, std::string &text) const;

    std::map<size_t, cPart> parts_; // by offset
};
