#include "text/read/creader_hash.h"

#include "core/cbuiltin.h"
#include "core/cscalar.h"
#include "diagnostics/cerrline.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/ctypeobj_update.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"
#include "text/read/creader_errors.h"
#include "text/read/creader_value.h"
#include "text/scan/cmemory_stream.h"
#include "text/state/cchannels.h"

#include <fstream>
#include <sstream>
#include <typeinfo>

namespace {
bool is_mergeable(objref const &value) { return cObj::is_map(value) || cObj::is_set(value); }

// Whether reading a character runs no user code.
bool is_plain_source(std::istream &is) {
    std::streambuf const *const buffer = is.rdbuf();
    if (!buffer || is.tie()) return false;
    std::type_info const &type = typeid(*buffer);
    if (type == typeid(std::stringbuf) || type == typeid(cMemoryBuf)) return true;
    using cConversion = std::codecvt<char, char, std::mbstate_t>;
    auto const &conversion = std::use_facet<cConversion>(buffer->getloc());
    return type == typeid(std::filebuf) && typeid(conversion) == typeid(cConversion);
}

// Whether the type and the position of a container permit late entries. Entries of a program's
// container type are entered one by one.
bool may_be_late(cTypeObj const *type, cHashReader::cOpened opened) {
    bool const of_library = !type || type == &cat::type_map() || type == &cat::type_vector() ||
                            type == &cat::type_set();
    return of_library && (opened != cHashReader::cOpened::by_caller || text_state().depth() == 0);
}

bool are_late_possible(cAttrScan const &scan) {
    return !cat::is_on(cat::io_channel) && is_plain_source(scan.is()) && !scan.is_dumping() &&
           !cReadSession::current()->runs().is_open() && cLateEntries::are_possible();
}
} // namespace

cHashReader::cHashReader(cAttrHash &hash, cAttrScan &scan, cTypeObj const *type, cOpened opened)
    : hash_(hash), type_(type), scan_(scan), session_(*cReadSession::current()),
      state_(text_state()), source_(cat::cSourceRecorder::at(scan)),
      late_(&hash, &scan, may_be_late(type, opened), opened == cOpened::after_first ? 1 : 0),
      opened_{scan.current().outer_line, scan.current().outer_column},
      has_bracket_(cat::Brackets(scan.current().code).open != 0),
      seen_(type == &cat::type_set() ? std::make_unique<cValueIndex>(hash) : nullptr),
      listed_(type && type != &cat::type_map()), first_line_(scan_.lineno() - 1) {
    begin_late(opened);
}

void cHashReader::begin_late(cOpened opened) {
    if (!late_.can_be()) return state_.settle();
    if (opened == cOpened::after_first) {
        bool const known = hash_.first() && hash_.first() == hash_.last() &&
                           cLateEntries::is_key(hash_.first()->key());
        if (known && (state_.is_late() || are_late_possible(scan_)))
            late_.begin(hash_.first());
        else
            state_.settle();
    } else if (state_.is_late()) {
        late_.open();
        if (!stays_late()) state_.settle();
    } else {
        state_.settle();
        if (late_.is_outermost() && hash_.empty() && are_late_possible(scan_)) late_.begin(nullptr);
    }
}

// Called while entries are late: whether the next ones can be stored in this hash without running
// user code.
bool cHashReader::stays_late() const {
    return late_.can_be() && (late_.is_late() || (!seen_ && cAttrInsert::is_ready(hash_)));
}

[[gnu::noinline]] void cHashReader::resume_late() {
    if (stays_late() && are_late_possible(scan_)) late_.resume();
}

template <class... Parts> void cHashReader::fail(cErrText const &error, Parts const &...parts) {
    cReadSession::cPlace const place = session_.place_now();
    [[maybe_unused]] std::ostream &text = begin_error(scan_, error);
    ((text << parts), ...);
    scan_.about(place.line, place.column);
    scan_.fire();
}

// --- the fast path ---

// Reads a literal or a word that is a whole value, or the opening bracket of a value. If the next
// tokens are not certainly one of these, reads nothing and returns `none`.
cHashReader::cFast cHashReader::read_fast(objref &value, bool as_key) {
    int code = scan_.next();
    if (cat::is_separator(code)) { // for example the one after a container
        scan_.separator_passed_ = true;
        session_.runs().delimited(true);
        if (source_) source_->after(scan_.current());
        code = scan_.next();
    }
    cToken const &first = scan_.current();
    cReadSession::cPlace const place{first.outer_line, first.outer_column};
    fast_code_ = code;
    if (code == tkIdent) {
        value = cat::make_value(std::string(first.text));
        cToken const word = first;
        int const end = scan_.next();
        if (!cValueReader::ends_value(end)) return unread_word(value, word);
        if (source_) source_->literal(word);
        note(value, as_key);
        delim_ = end;
    } else if (code >= tkInt && code <= tkString && literal_value(code, first.text, value)) {
        if (source_) source_->literal(first);
        note(value, as_key);
        delim_ = scan_.next();
    } else if (code == '{' || code == '[' || code == '<') {
        scan_.separator_passed_ = false;
        return cFast::opened;
    } else if (closes(code, as_key)) {
        return cFast::closed;
    } else {
        if (code != tkEof) scan_.ungettoken();
        return cFast::none;
    }
    scan_.separator_passed_ = false;
    session_.value_place(place);
    return cValueReader::ends_value(delim_) ? cFast::done : cFast::unended;
}

// The word may be the name of a type, so it is pushed back.
cHashReader::cFast cHashReader::unread_word(objref &value, cToken word) {
    scan_.ungettoken();
    word.text = *cat::value_in<std::string>(value.get()); // comments may follow the word
    scan_.ungettoken(cAttrLiteral(word));
    value = nullptr;
    return cFast::none;
}

// Notes a new key or value, since a comment after it may belong to it.
inline void cHashReader::note(objref const &value, bool as_key) {
    bool const has_comment = !state_.com_collected().empty();
    if (state_.is_late() && !has_comment) {
        noted_ = value.get();
        return;
    }
    note_now();
    cReadingKey const now(as_key);
    if (has_comment) scan_.note_new(nullptr); // RUNS USER CODE
    if (state_.is_late())
        noted_ = value.get();
    else
        scan_.note_new(value);
}

// Completes note() for a value of the fast path, before other code can read a comment for it. No
// comment was pending when the value was read.
void cHashReader::note_now() {
    cObj *const noted = std::exchange(noted_, nullptr);
    if (noted && scan_.return_com()) state_.last_noted() = objref::share(noted);
}

// Whether the code is the closing bracket of the container, in place of a key or an item. If so,
// ends the container.
bool cHashReader::closes(int code, bool as_key) {
    bool const may_close = cValueReader::ends_container(code) && code != tkEof;
    if (!may_close || !(listed_ || as_key)) return false;
    if (!state_.com_collected().empty()) return false;
    scan_.separator_passed_ = false;
    noted_ = nullptr;
    scan_.note_new(nullptr);
    session_.value_place({scan_.current().outer_line, scan_.current().outer_column});
    delim_ = code;
    return true;
}

// Reads the rest of a value.
int cHashReader::read_general(objref &value, cFast done) {
    if (done == cFast::done) return 0;
    if (done == cFast::none) return scan_.scan_obj(value, &delim_);
    int const code = done == cFast::opened ? cValueReader::finish_container(scan_, value, delim_)
                                           : cValueReader::finish_literal(scan_, value, delim_,
                                                                          session_.value_place());
    if (code != 0) value = cat::bad();
    return code;
}

// Stores a value under a new key. Only for a value that the library alone has created, and while
// entries are late. False if the general path is needed.
bool cHashReader::put_new(cEntry &entry) {
    if (seen_) return false;
    if (!late_.is_late()) return put_entered(entry);
    if (listed_) return cAttrInsert::append(hash_, entry.value);
    if (entry.key->has_ommap()) return false; // a comment, which a key in a map doesn't have
    return cAttrInsert::adopt(hash_, std::move(entry.key), std::move(entry.value)).is_new;
}

// The same in a container whose earlier entries are in the table of paths.
[[gnu::noinline]] bool cHashReader::put_entered(cEntry &entry) {
    if (!listed_ && entry.key->has_ommap()) return false;
    if (!(listed_ ? late_.has_room(index_) : late_.has_room(entry.key))) return false;
    objref const value = entry.value;
    bool const done =
        listed_ ? cAttrInsert::append(hash_, value)
                : cAttrInsert::adopt(hash_, std::move(entry.key), std::move(entry.value)).is_new;
    if (done) late_.stored(value);
    return done;
}

// Stores a container that was created by its bracket, if its key is new.
bool cHashReader::put_container(cEntry &entry, std::optional<cAttrInsert::cKeyPlace> const &place) {
    bool const plain = entry.fresh && entry.result == 0 && !entry.value->is_exe();
    if (!plain || seen_ || !state_.is_late()) return false;
    if (!listed_ && (!place || entry.key->has_ommap())) return false;
    if (!late_.has_room(entry.key)) return false;
    objref const entered = late_.is_late() ? objref() : entry.value;
    if (listed_ && !cAttrInsert::append(hash_, entry.value)) return false;
    if (!listed_) cAttrInsert::adopt(hash_, *place, std::move(entry.key), std::move(entry.value));
    late_.stored(entered);
    return true;
}

// Whether the key permits a late entry. The scanner still has the key's token.
bool cHashReader::is_late_key(objref const &key) const {
    return fast_code_ == tkIdent || fast_code_ == tkInt ||
           (fast_code_ == tkString && cLateEntries::is_key(key));
}

// --- one entry ---

// Reads the key of an entry of a map. If a map is read there, it is a value without a key.
cHashReader::cNext cHashReader::read_key(cEntry &entry) {
    cFast const done = read_fast(entry.key, true);
    if (done == cFast::closed) return cNext::stop;
    if (done == cFast::done && delim_ == '=' &&
        (fast_code_ == tkIdent || fast_code_ == tkInt || fast_code_ == tkString)) {
        if (source_) source_->key(source_->begin_of(scan_.current()));
        return cNext::value;
    }
    note_now();
    return read_general_key(entry, done);
}

[[gnu::noinline]] cHashReader::cNext cHashReader::read_general_key(cEntry &entry, cFast done) {
    objref key = std::move(entry.key);
    int result = 0;
    if (done == cFast::none)
        session_.runs().expect_entry(true);
    else
        session_.runs().begin_entry();
    {
        cReadingKey const key_now(true);
        if (done != cFast::done && fast_code_ != tkEof) state_.settle();
        result = read_general(key, done);
        session_.runs().delimited(false);
    }
    if (result == -1) return cNext::stop;
    if (delim_ == ')') {
        cAttrLiteral token;
        if (scan_.gettok(token) == '=')
            delim_ = '=';
        else if (token.code != tkEof)
            scan_.ungettoken(token);
    }
    if (source_ && delim_ == '=') source_->key(source_->begin_of(scan_.current()));
    if (source_ && done == cFast::done) source_->after(scan_.current());
    if (result == 0 && !key->type().is_keytype()) {
        if (key->is_map()) {
            entry.value = key;
            return cNext::store;
        }
        cAboutValue const about_key(session_);
        std::string const text =
            key->is_container() ? "" : "Key value: " + cat::as_text(key); // RUNS USER CODE
        fail(err_read_key_type, cNamed::found(key->type().name()), "' is not defined", text);
        result = cAttrScan::asrSyntax;
    }
    if (delim_ != '=') {
        fail(err_read_no_key);
        result = cAttrScan::asrSyntax;
    }
    entry.key_result = result;
    if (result == 0) entry.key = key;
    return cValueReader::ends_container(delim_) ? cNext::store : cNext::value;
}

// False at the end of a list.
bool cHashReader::read_value(cEntry &entry, cFast done) {
    int result = 0;
    {
        cReadingKey const value_now(false);
        result = read_general(entry.value, done);
        if (source_) source_->no_value();
        entry.fresh = done == cFast::done || scan_.made_container(entry.value);
    }
    if (result == -1) {
        if (listed_) return false;
        fail(err_read_no_value, shown_path());
        result = cAttrScan::asrSyntax;
    }
    if (delim_ == '=') {
        fail(err_read_equals, shown_path());
        result = cAttrScan::asrSyntax;
    }
    entry.result = result;
    return true;
}

// A value that is a type is a declaration: its key becomes its name.
void cHashReader::register_type(cEntry &entry) {
    auto *const type =
        entry.value->is_type() ? dynamic_cast<cTypeObj *>(entry.value.get()) : nullptr;
    if (!type) return;
    std::string const former = type->name();
    type->set_name(cat::as_string(entry.key));
    session_.refresh_limit();
    bool const again = &cat::find_type(type->name()) != &cat::type_nil();
    bool done = false;
    try {
        done = cat::declare_type(*type, former);
    } catch (cErr const &error) {
        if (error.code() != err_type_name_taken.code) throw;
    }
    if (done && again && session_.exhausted()) report_too_much();
    if (done) return;
    cTypeObj const &present = cat::find_type(type->name());
    fail(err_read_type_name, cNamed::name(type->name()).unsaid(),
         cNamed::type(present.type().name()).unsaid(), cNamed::found(type->type().name()).unsaid());
    entry.result = cAttrScan::asrType;
}

// Stores a key without a value, or a value without a key. Such an entry has no path.
[[gnu::noinline]] bool cHashReader::store_alone(cEntry &entry) {
    state_.settle();
    cAboutValue const about_key(session_);
    bool const by_index = !entry.key;
    if (by_index) entry.key = cat::of(index_);
    if (!entry.value) entry.value = cat::bad();
    store(entry, session_.runs().errors());
    if (by_index) next_index();
    session_.runs().delimited(cat::is_separator(delim_));
    return true;
}

bool cHashReader::read_entry() {
    if (!state_.is_late()) resume_late();
    cEntry entry;
    if (!listed_) {
        cNext const next = read_key(entry);
        if (next == cNext::stop) return false;
        if (next == cNext::store) return store_alone(entry);
        if (!state_.is_late())
            session_.runs().begin_entry();
        else if (!is_late_key(entry.key))
            state_.settle();
    }
    return read_keyed(entry);
}

// Reads the value of an entry and stores it.
bool cHashReader::read_keyed(cEntry &entry) {
    bool const by_index = !entry.key;
    cFast done = cFast::none;
    if (state_.is_late() && !cat::is_on(cat::io_channel)) {
        done = read_fast(entry.value, false);
        if (done == cFast::closed) return false;
        if (done == cFast::done && delim_ != '=' && put_new(entry)) {
            if (source_) source_->stored(hash_.last(), scan_.current());
            if (by_index) next_index();
            return true;
        }
    }
    note_now();
    if (!read_rest(entry, done)) return false;
    if (by_index) next_index();
    return true;
}

// Does the same for entries that the fast path can't read or store completely. This is a separate
// function, since most entries need only the fast path.
[[gnu::noinline]] bool cHashReader::read_rest(cEntry &entry, cFast done) {
    bool const by_index = !entry.key;
    unsigned const errors = session_.runs().errors();
    if (source_ && done == cFast::done) source_->after(scan_.current());
    std::optional<cAttrInsert::cKeyPlace> place;
    unsigned const round = state_.late_round();
    if (state_.is_late() && (done == cFast::none || done == cFast::opened) && entry.key) {
        place.emplace(hash_, entry.key);
        if (!place->is_new()) state_.settle();
    }
    if (by_index) entry.key = cat::of(index_);
    std::optional<cPathStep> step(std::in_place, entry.key, cPathStep::on_demand);
    if (cat::is_on(cat::io_channel)) {
        state_.settle();
        *cat::io_channel << state_.path() << std::endl;
    }
    if (!entry.value) entry.value = cat::bad();
    session_.runs().expect_entry(listed_ && done == cFast::none);
    if (!read_value(entry, done)) return false;
    if (state_.late_round() != round) place.reset(); // user code has run
    if (!late_.is_late() && state_.is_late() && !stays_late()) state_.settle();
    if (done == cFast::opened && state_.is_late()) {
        step.reset();
        if (put_container(entry, place)) {
            if (source_) source_->stored(hash_.last());
            return true;
        }
        step.emplace(entry.key, cPathStep::on_demand);
    }
    cAboutValue const about_value(session_);
    bool const keyed = entry.key_result == 0;
    if (!is_plain_entry(entry)) state_.settle();
    if (keyed && entry.result == 0) register_type(entry);
    objref const held = store(entry, errors);
    session_.runs().delimited(cat::is_separator(delim_));
    if (state_.is_late())
        late_.stored(held);
    else if (keyed)
        state_.enter_value(entry.result == 0 ? held : cat::bad());
    return true;
}

// Whether the entry can be late: whether storing it appends a node, and that node alone determines
// the values at its path and below.
bool cHashReader::is_plain_entry(cEntry const &entry) {
    if (!state_.is_late()) return true;
    if (!late_.is_late() && !cLateEntries::is_key(entry.key)) return false;
    cObj const &value = *entry.value;
    if (entry.result != 0 || entry.key_result != 0 || value.is_bad() || value.is_exe() ||
        value.is_type())
        return false;
    bool const met = !entry.fresh && (value.is_map() || value.is_vector() || value.is_set());
    if (seen_) return !met && cat::is_plain(value) && !find_in_set(value);
    if (hash_.find(entry.key)) return false;
    if (met) cLateEntries::enter_open(); // its paths are in the table, so no walk may look for them
    return late_.has_room(entry.key);
}

// --- storing ---

void cHashReader::report_too_much() { fail(err_read_too_much, shown_path()); }

// Changes a value in the tree. False if the value rejected it by an exception.
bool cHashReader::update(cObj &target, cObj const &value, bool merge) {
    bool const costly = target.object_class() == cObjClass::map || target.is_container();
    session_.refresh_limit();
    if (costly && session_.exhausted()) {
        report_too_much();
        return true;
    }
    bool done = true;
    if (merge) {
        target.attrcopy(value, "-xx"); // RUNS USER CODE
    } else {
        try {
            target.assign(value); // RUNS USER CODE
        } catch (cErr const &) {
            done = false;
        }
    }
    if (costly && session_.exhausted()) report_too_much();
    return done;
}

// The node of an equal value of the set. A plain value may have changed since it was added to the
// index; then the index is discarded and built again.
cAttrNode const *cHashReader::find_in_set(cObj const &value) {
    cAttrNode const *const node = seen_->find(value);
    if (!node || !cat::is_plain(value) || value.equal(node->value())) return node;
    seen_->forget();
    return seen_->find(value);
}

bool cHashReader::insert(objref const &key, objref const &value, objref &held) {
    if (cAttrNode const *const present = seen_ ? find_in_set(*value) : nullptr) {
        held = present->valref();
        return true;
    }
    if (listed_) return hash_.mapitem(cat::of(hash_.after_last_index()), value);
    cAttrNode const *const node = hash_.find(key);
    objref const target = node ? node->valref() : objref();
    if (target && &target->type() == &value->type() && update(*target, *value, false)) {
        held = target;
        return true;
    }
    return hash_.mapitem(key, value);
}

objref cHashReader::store(cEntry const &entry, unsigned before) {
    cAttrNode const *const node = hash_.find(entry.key);
    objref const present = node ? node->valref() : objref();
    if (is_mergeable(present) && is_mergeable(entry.value)) {
        update(*present, *entry.value, true);
        if (source_) record(entry, present, node);
        return present;
    }
    objref held = entry.value;
    if (insert(entry.key, entry.value, held)) {
        if (source_) record(entry, held, node);
        return held;
    }
    ok_ = false;
    std::string const text = cat::as_text(entry.key); // RUNS USER CODE
    cErrorRuns::cSameRun const same(session_.runs(), before);
    cat::error_line(whole_error(err_cannot_insert, cNamed::key(text)));
    return listed_ ? cat::bad() : stored(entry.key);
}

// Records the current node of the entry. Finds the node without comparing keys of a program's
// types.
[[gnu::noinline]] void cHashReader::record(cEntry const &entry, objref const &held,
                                           cAttrNode const *before) {
    cAttrNode const *node = hash_.last();
    if (!listed_ && !hash_.has_foreign_keys()) {
        node = hash_.find(entry.key);
    } else if (!listed_ && before) {
        while (node && node != before) node = hash_.prev(node);
    } else if (seen_ && cat::is_plain(*held)) {
        node = seen_->find(*held);
    } else if (node && node->valref() != held) {
        node = hash_.findvalref(held);
    }
    source_->stored(node);
    if (held != entry.value) source_->moved(*entry.value, *held);
}

// The value that the key has now. If a repeated key was rejected, this is its first value.
objref cHashReader::stored(objref const &key) const {
    cAttrNode const *const node = hash_.find(key);
    return node && node->valref() ? node->valref() : cat::bad();
}

// --- the container ---

cErrText const *cHashReader::unclosed() const {
    if (type_ == &cat::type_map() && delim_ != '}') return &err_read_unclosed_map;
    if (type_ == &cat::type_vector() && delim_ != ']') return &err_read_unclosed_vector;
    if (type_ == &cat::type_set() && delim_ != '>') return &err_read_unclosed_set;
    return nullptr;
}

void cHashReader::report_unclosed(bool counted) {
    cErrText const *const error = unclosed();
    if (!error) return;
    cErrStream &err = counted ? scan_.errs(asr_of(*error)) : scan_.errs();
    err.set_code(error->code);
    err.set_kind(error->kind);
    err << error->text;
    if (has_bracket_) scan_.unclosed(opened_.line, opened_.column);
    scan_.fire();
}

int cHashReader::read() {
    while (!cValueReader::ends_container(delim_) && read_entry()) continue;
    note_now();
    if (delim_ == tkEof && hash_.empty()) {
        // An opening bracket without anything after it. For a vector, the reader of values reports
        // it; for a map and a set it is an error only if there is a cat::ReadReport.
        if (type_ != &cat::type_vector() && cat::ReadReport::current()) report_unclosed(false);
        return -1;
    }
    report_unclosed(true);
    return ok_ ? static_cast<int>(scan_.lineno() - first_line_) : 0;
}

int cAttrHash::read_hash(std::istream &is, cTypeObj *type) {
    cWriteLevel const level; // the depth decreases after all other work
    cAttrScan scan(is, false);
    cReading const reading(scan);
    cat::cSourceList const list(scan, father());
    return cHashReader(*this, scan, type, cHashReader::cOpened::by_caller).read();
}

int cHashReader::read_first(cAttrScan &scan, objref const &key, objref &value) {
    bool const can_be = cLateEntries::is_key(key);
    cLateEntries late(nullptr, &scan, can_be, 0);
    if (late.can_be() && are_late_possible(scan)) late.resume();
    cPathStep const step(key);          // RUNS USER CODE, unless the key is plain
    cReadingKey const value_now(false); // the list may be the text of a key
    int delim = 0;
    int const code = scan.scan_obj(value, &delim);
    cReadSession::current()->runs().delimited(cat::is_separator(delim));
    cLateEntries::pass();
    return code;
}

int cHashReader::read_others(cAttrScan &scan, cAttrHash &hash) {
    cWriteLevel const level; // the depth decreases after all other work
    cAttrScan others(scan.is(), false);
    cReading const reading(others);
    cat::cSourceList const list(others, hash.father());
    return cHashReader(hash, others, nullptr, cOpened::after_first).read();
}
