#pragma once
// qrv::document, a value with the text that it was read from: for files that a person writes too.
//
//   auto device = qrv::document::load("device.attr");
//   device["bus"]["baud"] = 9600;
//   device.erase("bus/retries");
//   device.save(); // changes these two lines and leaves all other bytes as they are
//
// A document is the outermost value of its file, so it has all that a value has; copies of values
// in it share its objects. Saving takes what differs between the values now and those that were
// read, and changes only that in the text: comments, blank lines, alignment and the spelling of all
// other values stay. New entries are written like their neighbours, and removed ones take their
// comments with them. A comment that the program sets replaces the one in the text, or is written
// after its value; saving is an error where that would replace a comment above the next entry,
// which reading gives to the value before it, too. Layout that the program sets, by one_line(), is
// not saved so: qrv::save() writes a file anew.
//
// The types that the text declares belong to the document. They are not registered, so each of two
// documents can declare one name in its own way; they are destroyed with the document or the last
// object that has them. read() makes values of these types.
//
// A document stores its text, and each value that it was read with until it ends.

#include "qrv/value/text.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qrv {

// A position in text: both from 1, the column in bytes. A byte order mark isn't counted.
struct position {
    unsigned int line;
    unsigned int column;
    friend bool operator==(position, position) = default;
};

class QRV_API document : public value {
  public:
    // Reads a file, or text that has no file yet. The document owns the text. parse_error: it has
    // errors. error: the file can't be read.   O(size)
    static document load(std::string const &path, options const &how = {});
    static document parse(std::string text, options const &how = {});
    // The same, and all errors are stored in `errors` and in errors(). What could be read is there,
    // but can't be saved. error: the file can't be read.
    static document load(std::string const &path, std::vector<cat::ReadError> &errors,
                         options const &how = {});
    static document parse(std::string text, std::vector<cat::ReadError> &errors,
                          options const &how = {});

    // A document that was moved from owns no text, is #nil and has no path; assign to it or destroy
    // it.
    document(document &&) noexcept;
    document &operator=(document &&) noexcept(false);
    document(document const &) = delete; // of one text there is one document
    document &operator=(document const &) = delete;
    ~document();

    std::string const &path() const noexcept;                   // empty without a file
    std::vector<cat::ReadError> const &errors() const noexcept; // in text order

    // What save() would write. error: part of the value has no text, or the change can't be made in
    // the text as it is, for instance if a type would be declared after its first use, or a comment
    // would belong to another value; or the text has errors. Runs user code: types of the program
    // write their objects.   O(size)
    std::string text() const;

    // Writes the file, if anything has changed. The new text is read again before, and must have
    // the same value. If it fails, the file stays as it is. Mode, owner and symbolic links stay.
    // Waits up to 30 seconds for other programs that lock the folder (cat::FileLock).
    // save_conflict: another program has changed or removed the file since this document read or
    // wrote it. error: as for text(), or the file can't be written; what() has its name and why.
    void save();
    // The same to another file, which becomes that of this document. An old one is replaced.
    void save_as(std::string const &path);

    // Where the value at a path, as it is now, begins in the text that was read; empty if it is not
    // from there. path_error: faulty text of a path.   O(size)
    std::optional<position> position_of(std::string_view path) const;
    // The same for a value; one that is shared is where it is written in full.
    template <class T>
    requires(!std::convertible_to<T const &, std::string_view>) std::optional<position> position_of(
        T const &v)
    const { return position_of_object(static_cast<value>(v).object()); }

    // Reads a value whose text may name the types of this document. What it declares is known to
    // its own text only. parse_error: it has errors. The value lives as long as anybody shares it.
    //   O(size)
    value read(std::string_view text, options const &how = {}) const;

  private:
    struct source;

    explicit document(std::unique_ptr<source> from);
    std::optional<position> position_of_object(objref const &object) const;
    std::string changed_text() const;
    std::string text_with_comments(std::string text) const;
    std::string text_with_new_root() const;
    source &own() const;

    std::unique_ptr<source> source_;
};

} // namespace qrv
