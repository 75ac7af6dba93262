// cAttrHash::read_hash: the entries of one container, from behind its opening bracket to its
// closing one or the end of input. An entry is scanned in steps: key, value, name of a type,
// storing, entering in the table of paths. A failed one is reported and reading goes on with the
// next.
//
// Values that stand in the tree already are merged into or assigned to in place. A text can make
// that cost much more than its length, and can try to store a value inside itself: the session's
// budget bounds the one and refuses the other.

#include "containers/value_index.h"
#include "diagnostics/cerrline.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/ctypeobj_update.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"
#include "text/read/creader_errors.h"
#include "text/read/creader_session.h"
#include "text/state/cchannels.h"
#include "text/state/ctext_state.h"

#include <locale>
#include <sstream>

namespace {
bool is_closing(int t) { return t == '}' || t == ']' || t == '>' || t == tkEof; }

std::string shown_path() { return text_state().shown_path(cat::ReadReport::current() != nullptr); }

std::string written(cObj const &value) {
    std::ostringstream os;
    os.imbue(std::locale::classic());
    value.writeobj(os); // RUNS FOREIGN CODE
    return os.str();
}

bool is_mergeable(objref const &value) { return cObj::is_map(value) || cObj::is_set(value); }

class cHashReader {
  public:
    cHashReader(cAttrHash &hash, std::istream &is, cTypeObj *type);
    cHashReader(cHashReader const &) = delete;
    cHashReader &operator=(cHashReader const &) = delete;
    ~cHashReader() = default;

    int read();

  private:
    struct cEntry {
        objref index; // the key that an entry without one gets
        objref key;
        objref value;
        int key_result = 0;
        int result = 0;
    };
    enum class cNext { value, store, stop };

    bool read_entry(); // false at the end of the entries
    cNext read_key(cEntry &entry);
    bool read_value(cEntry &entry);
    void register_type(cEntry &entry);
    objref store(cEntry const &entry); // the value that the key has afterwards, bad if none
    objref stored(objref const &key) const;
    bool insert(objref const &key, objref const &value, objref &held);
    cAttrNode const *find_in_set(cObj const &value);
    bool update(cObj &target, cObj const &value, bool merge);
    void report_too_much();
    cErrText const *unclosed() const;
    void report_unclosed(bool counted);
    void fail(cErrText const &error, std::string const &what = {});

    cWriteLevel const level_; // first: the depth goes down when all else is done
    cAttrHash &hash_;
    cTypeObj const *const type_;
    cAttrScan scan_;
    cReading const reading_;
    cAttrLiteral const opened_;               // the opening bracket, or whatever came last
    std::unique_ptr<cValueIndex> const seen_; // of a set
    bool const listed_;
    bool ok_ = true;
    int index_ = 0;
    int delim_ = 1;
    unsigned const first_line_;
};

cHashReader::cHashReader(cAttrHash &hash, std::istream &is, cTypeObj *type)
    : hash_(hash), type_(type), scan_(is, false), reading_(scan_), opened_(scan_.token()),
      seen_(type == &cat::type_set() ? std::make_unique<cValueIndex>(hash) : nullptr),
      listed_(type && type != &cat::type_map()), first_line_(scan_.lineno() - 1) {}

void cHashReader::fail(cErrText const &error, std::string const &what) {
    cReadSession::cPlace const place = cReadSession::current()->place_now();
    begin_error(scan_, error) << what;
    scan_.about(place.line, place.column);
    scan_.fire();
}

// --- one entry ---

// The key of an entry of a map. A map alone is a value without a key.
cHashReader::cNext cHashReader::read_key(cEntry &entry) {
    objref key;
    int result = 0;
    {
        cReadingKey const key_now(true);
        result = scan_.scan_obj(key, &delim_);
    }
    if (result == -1) return cNext::stop;
    if (delim_ == ')') {
        cAttrLiteral token;
        if (scan_.gettok(token) == '=')
            delim_ = '=';
        else if (token.code != tkEof)
            scan_.ungettoken(token);
    }
    if (result == 0 && !key->type().is_keytype()) {
        if (key->is_map()) {
            entry.value = key;
            return cNext::store;
        }
        cAboutValue const about_key(*cReadSession::current());
        std::string const text = key->is_container() ? "" : "Key value: " + written(*key);
        fail(err_read_key_type, key->type().name() + "' is not defined" + text);
        result = cAttrScan::asrSyntax;
    }
    if (delim_ != '=') {
        fail(err_read_no_key);
        result = cAttrScan::asrSyntax;
    }
    entry.key_result = result;
    if (result == 0) entry.key = key;
    return is_closing(delim_) ? cNext::store : cNext::value;
}

// False when a list has ended.
bool cHashReader::read_value(cEntry &entry) {
    int result = 0;
    {
        cReadingKey const value_now(false);
        result = scan_.scan_obj(entry.value, &delim_);
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

// A value that is a type gets its key as its name: a declaration.
void cHashReader::register_type(cEntry &entry) {
    auto *const type =
        entry.value->is_type() ? dynamic_cast<cTypeObj *>(entry.value.get()) : nullptr;
    if (!type) return;
    type->set_name(cat::as_string(entry.key));
    cReadSession *const session = cReadSession::current();
    session->refresh_limit();
    bool const again = &cat::find_type(type->name()) != &cat::type_nil();
    bool done = false;
    try {
        done = cat::set_type(*type, false);
    } catch (cErr const &error) {
        if (error.code() != err_type_name_taken.code) throw;
    }
    if (done && again && session->exhausted()) report_too_much();
    if (done) return;
    fail(err_read_type_name);
    entry.result = cAttrScan::asrType;
}

bool cHashReader::read_entry() {
    cEntry entry;
    entry.index = entry.key = cat::of(index_);
    entry.value = cat::bad();
    cNext const next = listed_ ? cNext::value : read_key(entry);
    if (next == cNext::stop) return false;
    if (next == cNext::store) { // without a key of its own it is in no path
        cAboutValue const about_key(*cReadSession::current());
        store(entry);
    } else {
        cPathStep const step(entry.key);
        if (cat::is_on(cat::io_channel)) *cat::io_channel << text_state().path() << std::endl;
        if (!read_value(entry)) return false;
        cAboutValue const about_value(*cReadSession::current());
        bool const keyed = entry.key_result == 0;
        if (keyed && entry.result == 0) register_type(entry);
        objref const held = store(entry);
        if (keyed) text_state().enter_value(entry.result == 0 ? held : cat::bad());
    }
    if (entry.key == entry.index) index_ = static_cast<int>(static_cast<unsigned>(index_) + 1);
    return true;
}

// --- storing ---

void cHashReader::report_too_much() { fail(err_read_too_much, shown_path()); }

// Changes a value that stands in the tree. False if it refused by an exception.
bool cHashReader::update(cObj &target, cObj const &value, bool merge) {
    cReadSession *const session = cReadSession::current();
    bool const costly = dynamic_cast<cMapObj *>(&target) || target.is_container();
    session->refresh_limit();
    if (costly && session->exhausted()) {
        report_too_much();
        return true;
    }
    bool done = true;
    if (merge) {
        target.attrcopy(value, "-xx"); // RUNS FOREIGN CODE
    } else {
        try {
            target.assign(value); // RUNS FOREIGN CODE
        } catch (cErr const &) {
            done = false;
        }
    }
    if (costly && session->exhausted()) report_too_much();
    return done;
}

// A plain value of the set may have been assigned to since the index took it in.
cAttrNode const *cHashReader::find_in_set(cObj const &value) {
    cAttrNode const *const node = seen_->find(value);
    if (!node || !cValueIndex::is_plain(value) || value.equal(node->value())) return node;
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

objref cHashReader::store(cEntry const &entry) {
    cAttrNode const *const node = hash_.find(entry.key);
    objref const present = node ? node->valref() : objref();
    if (is_mergeable(present) && is_mergeable(entry.value)) {
        update(*present, *entry.value, true);
        return present;
    }
    objref held = entry.value;
    if (insert(entry.key, entry.value, held)) return held;
    ok_ = false;
    cat::error_line("Cannot insert key =" + cat::as_text(entry.key));
    return listed_ ? cat::bad() : stored(entry.key);
}

// A refused repeat leaves the first value.
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
    err << error->text;
    if (cat::Brackets(opened_.code).open) scan_.unclosed(opened_);
    scan_.fire();
}

int cHashReader::read() {
    while (!is_closing(delim_) && read_entry()) continue;
    if (delim_ == tkEof && hash_.empty()) {
        // A bracket alone is no error here: a vector's is told by the reader of values, a map's
        // and a set's only to people.
        if (type_ != &cat::type_vector() && cat::ReadReport::current()) report_unclosed(false);
        return -1;
    }
    report_unclosed(true);
    return ok_ ? static_cast<int>(scan_.lineno() - first_line_) : 0;
}
} // namespace

int cAttrHash::read_hash(std::istream &is, cTypeObj *type) {
    return cHashReader(*this, is, type).read();
}
