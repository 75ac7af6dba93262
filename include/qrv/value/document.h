#pragma once
// qrv::document, a value with the text that it was read from: for files that people edit, too.
//
//   auto device = qrv::document::load("device.attr");
//   device["bus"]["baud"] = 9600;
//   device.erase("bus/retries");
//   device.save(); // changes these two lines and leaves all other bytes as they are
//
// A document is the outermost value of its file, with all functions of qrv::value. Copies of values
// in it share its objects. Saving compares the values with those that were read, and changes only
// the differences in the text: comments, blank lines, alignment and the spelling of all other
// values stay. New entries are written like their neighbours, and removed entries are removed with
// their comments.
//
// A comment that the program sets for a value replaces the value's comment in the text, or is
// written after the value. The reader gives a comment above an entry to the value before it; if
// saving would replace such a comment, it fails. Layout that the program sets with one_line() is
// not saved: qrv::save() writes it, since it writes the whole file.
//
// The types that the text declares belong to the document. They are not registered, so two
// documents can declare different types with the same name. They are destroyed with the document,
// or with the last object that has such a type. read() creates values of these types.
//
// A document stores its text, and until its destruction also each value that was read from it, even
// if the program has removed that value.

#include "qrv/value/text.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qrv {

// A position in text. Line and column count from 1, the column in bytes. A byte order mark is not
// counted.
struct position {
    unsigned int line;
    unsigned int column;
    friend bool operator==(position, position) = default;
};

class QRV_API document : public value {
  public:
    // Reads a file, or text that has no file yet. The document owns the text. parse_error: the text
    // has errors. error: the file can't be read.   O(size)
    static document load(std::string const &path, options const &how = {});
    static document parse(std::string text, options const &how = {});
    // The same, but stores all errors in `errors` and in errors(). The document has what could be
    // read; if there are errors, it can't be saved. error: the file can't be read.
    static document load(std::string const &path, std::vector<cat::ReadError> &errors,
                         options const &how = {});
    static document parse(std::string text, std::vector<cat::ReadError> &errors,
                          options const &how = {});

    // A document that was moved from owns no text, has no path, and its value is #nil. Only assign
    // to it or destroy it.
    document(document &&) noexcept;
    document &operator=(document &&) noexcept(false);
    document(document const &) = delete; // each text has one document
    document &operator=(document const &) = delete;
    ~document();

    std::string const &path() const noexcept;                   // empty if there is no file
    std::vector<cat::ReadError> const &errors() const noexcept; // in text order

    // What save() would write. error: a part of the value has no text; or the text had errors when
    // it was read; or the change can't be made in the text, for instance because a type would be
    // declared after its first use, or a comment would belong to another value. Runs user code:
    // types of the program write their objects.   O(size)
    std::string text() const;

    // Writes the file if anything has changed. Before that, it reads the new text and compares the
    // value. If save() fails, the file is unchanged. Mode, owner and symbolic links are preserved.
    // Waits up to 30 seconds for other programs that lock the folder (cat::FileLock).
    // save_conflict, also if nothing has changed: another program has changed or removed the file
    // since this document read or wrote it. error: as for text(), or the file can't be written;
    // what() has the file's name and the reason.
    void save();
    // The same, but to another file, which becomes the file of this document. Replaces an existing
    // file without the test for save_conflict.
    void save_as(std::string const &path);

    // The position, in the text that was read, of the value that is at this path now; empty if the
    // value is not from that text, or if the path does not exist. path_error: the path is faulty.
    //   O(size)
    std::optional<position> position_of(std::string_view path) const;
    // The same for a value. A shared value has the position at which it is written in full.
    template <class T>
    requires(!std::convertible_to<T const &, std::string_view>) std::optional<position> position_of(
        T const &v)
    const { return position_of_object(static_cast<value>(v).object()); }

    // Reads a value from text that may name the types of this document. Types that it declares are
    // known only in that text. parse_error: the text has errors. The result may outlive the
    // document.
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
