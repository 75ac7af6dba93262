#pragma once
// The reader of the entries of one container, from after its opening bracket to its closing one or
// the end of input. An entry is processed in steps: key, value, name of a type, storing, entering
// in the table of paths. A failed entry is reported and reading continues with the next.
//
// A repeated key merges into the existing value or assigns to it in place. Text can make that cost
// much more than its length, and can try to store a value inside itself: the session's budget
// limits the former and rejects the latter.
//
// Most entries are a number, a word or a string under a new key. They use the fast path: while the
// entries are late (cLateEntries), it creates no cPathStep and no object except the key and the
// value. The general path handles everything else. It also reads containers that begin with a
// bracket, but these are then stored as on the fast path.

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
    // Who has opened the container: the scan, which is at its bracket; a caller of read_hash(),
    // which may not know the enclosing container; or read_first(), which has read the first entry.
    enum class cOpened { by_scan, by_caller, after_first };
    // Uses the scan, for which a cReading must exist.
    cHashReader(cAttrHash &hash, cAttrScan &scan, cTypeObj const *type, cOpened opened);
    cHashReader(cHashReader const &) = delete;
    cHashReader &operator=(cHashReader const &) = delete;
    ~cHashReader() = default;

    int read(); // like cAttrHash::read_hash
    // A list of entries without brackets, whose first key was read: read_first() reads its value,
    // read_others() reads the other entries into the hash that has the first.
    static int read_first(cAttrScan &scan, objref const &key, objref &value);
    static int read_others(cAttrScan &scan, cAttrHash &hash);

  private:
    struct cEntry {
        objref key; // null: the running index
        objref value;
        int key_result = 0;
        int result = 0;
        bool fresh = false; // the value was created for this entry, by the library alone
    };
    enum class cNext { value, store, stop };
    // What the fast path has read: nothing; an opening bracket; a literal and the token after it,
    // which does not end the value; a whole value; or, instead of a value, the closing bracket of
    // the container.
    enum class cFast { none, opened, unended, done, closed };

    void begin_late(cOpened opened);
    bool stays_late() const;
    void resume_late();
    bool read_entry(); // false at the end of the entries
    cFast read_fast(objref &value, bool as_key);
    cFast unread_word(objref &value, cToken word);
    bool closes(int code, bool as_key);
    void note(objref const &value, bool as_key);
    void note_now();
    bool is_late_key(objref const &key) const;
    int read_general(objref &value, cFast done);
    cNext read_key(cEntry &entry);
    cNext read_general_key(cEntry &entry, cFast done);
    bool store_alone(cEntry &entry);
    bool read_value(cEntry &entry, cFast done);
    bool read_keyed(cEntry &entry);
    bool read_rest(cEntry &entry, cFast done);
    bool is_plain_entry(cEntry const &entry);
    bool put_new(cEntry &entry);
    bool put_entered(cEntry &entry);
    bool put_container(cEntry &entry, std::optional<cAttrInsert::cKeyPlace> const &place);
    void register_type(cEntry &entry);
    // `before`: the number of errors that the reading had before the value. Returns the value that
    // the key has afterwards, or bad.
    objref store(cEntry const &entry, unsigned before);
    objref stored(objref const &key) const;
    void record(cEntry const &entry, objref const &held, cAttrNode const *before);
    bool insert(objref const &key, objref const &value, objref &held);
    cAttrNode const *find_in_set(cObj const &value);
    bool update(cObj &target, cObj const &value, bool merge);
    void next_index() noexcept { index_ = static_cast<int>(static_cast<unsigned>(index_) + 1); }
    void report_too_much();
    cErrText const *unclosed() const;
    void report_unclosed(bool counted);
    template <class... Parts> void fail(cErrText const &error, Parts const &...parts);

    cAttrHash &hash_;
    cTypeObj const *const type_;
    cAttrScan &scan_;
    cReadSession &session_;
    cTextState &state_;
    cat::cSourceRecorder *const source_; // null: nothing is recorded
    cLateEntries late_;
    cReadSession::cPlace const opened_; // the opening bracket, if it exists
    bool const has_bracket_;
    std::unique_ptr<cValueIndex> const seen_; // of a set
    bool const listed_;
    bool ok_ = true;
    int index_ = 0;
    int delim_ = 1;
    int fast_code_ = 0; // of the token at which read_fast() began last
    // The key or value that was read last and is not noted yet, since a comment after it is rare.
    cObj *noted_ = nullptr;
    unsigned const first_line_;
};
