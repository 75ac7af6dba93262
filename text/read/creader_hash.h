#pragma once
// The reader of the entries of one container, from after its opening bracket to its closing one or
// the end of input. An entry is scanned in steps: key, value, name of a type, storing, entering in
// the table of paths. A failed one is reported and reading continues with the next.
//
// Values that stand in the tree already are merged into or assigned to in place. A text can make
// that cost much more than its length, and can try to store a value inside itself: the session's
// budget bounds the one and refuses the other.
//
// Most entries are a number, a word or a string under a key that is new. They take the short way:
// while the entries are late (cLateEntries), no step of the path, and no object but the key and the
// value, is made for them. What it can't finish is handed to the general way; a container made by
// its bracket comes back from there to be put as they are.

#include "containers/value_index.h"
#include "core/cattrhash_insert.h"
#include "qrv/text/read/cattrscan.h"
#include "text/read/creader_errors.h"
#include "text/read/creader_session.h"
#include "text/read/csource_recorder.h"
#include "text/state/ctext_state.h"

#include <memory>
#include <optional>

class cHashReader {
  public:
    // Works with the scan, for which a cReading is there. `inner`: the reader of the container
    // around has opened it.
    cHashReader(cAttrHash &hash, cAttrScan &scan, cTypeObj const *type, bool inner);
    cHashReader(cHashReader const &) = delete;
    cHashReader &operator=(cHashReader const &) = delete;
    ~cHashReader() = default;

    int read(); // as cAttrHash::read_hash

  private:
    struct cEntry {
        objref key; // null: the running index
        objref value;
        int key_result = 0;
        int result = 0;
        bool fresh = false; // the value was made for this entry, by the library alone
    };
    enum class cNext { value, store, stop };
    // How far the short way came: nowhere, past an opening bracket, to the token after a literal,
    // which doesn't end it, to the end of the value, or to the container's closing bracket, where
    // no value is.
    enum class cShort { none, opened, unended, done, closed };

    bool read_entry(); // false at the end of the entries
    cShort read_short(objref &value, bool as_key);
    cShort unread_word(objref &value, cToken word);
    bool closes(int code, bool as_key);
    void note(objref const &value, bool as_key);
    void note_now();
    bool is_late_key(objref const &key) const;
    int read_long(objref &value, cShort done);
    cNext read_key(cEntry &entry);
    cNext read_long_key(cEntry &entry, cShort done);
    bool store_alone(cEntry &entry);
    bool read_value(cEntry &entry, cShort done);
    bool read_keyed(cEntry &entry);
    bool read_rest(cEntry &entry, cShort done);
    bool is_plain_entry(cEntry const &entry);
    bool put_new(cEntry &entry);
    bool put_container(cEntry &entry, std::optional<cAttrInsert::cKeyPlace> const &place);
    void register_type(cEntry &entry);
    objref store(cEntry const &entry); // the value that the key has afterwards, bad if none
    objref stored(objref const &key) const;
    void record(cEntry const &entry, objref const &held, cAttrNode const *before);
    bool insert(objref const &key, objref const &value, objref &held);
    cAttrNode const *find_in_set(cObj const &value);
    bool update(cObj &target, cObj const &value, bool merge);
    void next_index() noexcept { index_ = static_cast<int>(static_cast<unsigned>(index_) + 1); }
    void report_too_much();
    cErrText const *unclosed() const;
    void report_unclosed(bool counted);
    void fail(cErrText const &error, std::string const &what = {});

    cAttrHash &hash_;
    cTypeObj const *const type_;
    cAttrScan &scan_;
    cReadSession &session_;
    cTextState &state_;
    cat::cSourceRecorder *const source_; // null: nothing is recorded
    cLateEntries const late_;
    cReadSession::cPlace const opened_; // the opening bracket, if there is one
    bool const has_bracket_;
    std::unique_ptr<cValueIndex> const seen_; // of a set
    bool const listed_;
    bool ok_ = true;
    int index_ = 0;
    int delim_ = 1;
    int short_code_ = 0; // the first token of what the short way read last
    // The key or value read last, which is not noted yet: a comment after it is rare.
    cObj *noted_ = nullptr;
    unsigned const first_line_;
};
